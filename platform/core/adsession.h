#ifndef PLATFORM_CORE_ADSESSION_H
#define PLATFORM_CORE_ADSESSION_H

#include "platform/core/adentity.h"
#include "platform/core/adentitydef.h"
#include "platform/core/adhistory.h"
#include "platform/core/adptr.h"
#include "platform/core/adquery.h"
#include "platform/foundation/cenumarray.h"
#include "platform/foundation/obx_string.h"

// An open session with a record database: what an implementation of the core provides. Callers use
// the free functions below, each of which hands its call to the session.
class AdSession : public AdRefCounted {
  public:
    virtual AdEntityDef* GetEntityDef(const Obx_String& recordTypeName) = 0;
    virtual AdEntityPtr GetEntity(AdEntityDef* recordType, const Obx_String& identifier) = 0;
    virtual AdEntityPtr ImportEntity(AdEntityDef* recordType, const unsigned short* state,
                                     const unsigned short* existingId) = 0;
    virtual void MarkEntityAsDuplicate(const AdEntityPtr& duplicate, const AdEntityPtr& original,
                                       AdActionDef* action, int import) = 0;

    virtual AdQueryDefPtr BuildQueryDef(AdEntityDef* recordType, int reserved) = 0;
    virtual void UnbuildQueryDef(AdQueryDefPtr& query) = 0;
    virtual AdResultSetPtr BuildResultSet(const AdQueryDefPtr& query) = 0;
    virtual void UnbuildResultSet(AdResultSetPtr& resultSet) = 0;

    virtual void ImportHistoryData(const AdHistory* entries, long count, long options,
                                   CEnumArray<int, int>& problemEntries, Obx_String& problems,
                                   AdHistoryCallback callback, void* context) = 0;
    virtual void CommitImportHistory() = 0;
    virtual void RevertImportHistory() = 0;
    virtual void UpdateImportHistoryExpiredTimestamp(AdEntityDef* recordType, long recordId) = 0;
};

using AdSessionPtr = AdPtr<AdSession>;

// All of the functions below need an open session: a null one throws a PaMsgException* (bad value).
// A failure of the database throws a PaMsgException* too.

// The definition of the record type of this name (without regard to case), owned by the session. An
// unknown name throws a PaMsgException* that names it.
AdEntityDef* GetEntityDef(const AdSessionPtr& session, const Obx_String& recordTypeName);

// The existing record with this identifier: its dbid in digits, or its display id. Throws a
// PaMsgException* that names it when there is none.
AdEntityPtr GetEntity(const AdSessionPtr& session, AdEntityDef* recordType,
                      const Obx_String& identifier);

// A record open for import. A null `existingId` asks for a new record, else for the existing one
// with that dbid. `state` is the state that the record shall have after Commit; null or empty
// leaves an existing record's state and gives a new one the initial state. A null record type, an
// unknown id or a state that the type does not have throws a PaMsgException*.
AdEntityPtr ImportEntity(const AdSessionPtr& session, AdEntityDef* recordType,
                         const unsigned short* state, const unsigned short* existingId);

// Runs the duplicate action: links `duplicate` to `original` and moves it to the state that the
// record type names for duplicates, if any. The change is left for Validate and Commit of
// `duplicate`. `import` is 1 when the mark comes from an import.
void MarkEntityAsDuplicate(const AdSessionPtr& session, const AdEntityPtr& duplicate,
                           const AdEntityPtr& original, AdActionDef* action, int import);

// A query on the record type. The flag is reserved and must be 0.
AdQueryDefPtr BuildQueryDef(const AdSessionPtr& session, AdEntityDef* recordType, int reserved);

// Gives the query back and sets the handle to null.
void UnbuildQueryDef(const AdSessionPtr& session, AdQueryDefPtr& query);

// The result set of the query, not yet run.
AdResultSetPtr BuildResultSet(const AdSessionPtr& session, const AdQueryDefPtr& query);

// Gives the result set back and sets the handle to null.
void UnbuildResultSet(const AdSessionPtr& session, AdResultSetPtr& resultSet);

// Imports `count` history entries. `options` is reserved and must be -1. Entries that the core
// cannot take (a text too long for its field, a record that does not exist) are left out;
// `problemEntries` gets their indexes and `problems` a text that names each of them and the cause.
// `callback` may be null. What was imported is permanent after CommitImportHistory and gone after
// RevertImportHistory.
void ImportHistoryData(const AdSessionPtr& session, const AdHistory* entries, long count,
                       long options, CEnumArray<int, int>& problemEntries, Obx_String& problems,
                       AdHistoryCallback callback, void* context);
void CommitImportHistory(const AdSessionPtr& session);
void RevertImportHistory(const AdSessionPtr& session);

// Brings the expiry times of the record's history up to date: an entry expires when the next one of
// the same record begins.
void UpdateImportHistoryExpiredTimestamp(const AdSessionPtr& session, AdEntityDef* recordType,
                                         long recordId);

#endif
