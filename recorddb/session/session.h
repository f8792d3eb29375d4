#ifndef RECORDDB_SESSION_SESSION_H
#define RECORDDB_SESSION_SESSION_H

#include <memory>
#include <optional>
#include <utility>

#include "platform/core/adsession.h"
#include "recorddb/session/session_options.h"
#include "recorddb/session/session_parts.h"
#include "recorddb/session/session_transaction.h"
#include "recorddb/session/statistics.h"
#include "recorddb/sql/error.h"

namespace recorddb {

// A session with a record database: the core's operations, and what a program that knows the
// database needs besides. Made by Database::OpenSession; the database outlives it and everything
// that it hands out. For one thread.
class Session final : public AdSession {
  public:
    Session(Database& database, const SessionOptions& options);

    AdEntityDef* GetEntityDef(const Obx_String& recordTypeName) override;
    AdEntityPtr GetEntity(AdEntityDef* recordType, const Obx_String& identifier) override;
    AdEntityPtr ImportEntity(AdEntityDef* recordType, const unsigned short* state,
                             const unsigned short* existingId) override;
    void MarkEntityAsDuplicate(const AdEntityPtr& duplicate, const AdEntityPtr& original,
                               AdActionDef* action, int import) override;
    AdQueryDefPtr BuildQueryDef(AdEntityDef* recordType, int reserved) override;
    void UnbuildQueryDef(AdQueryDefPtr& query) override;
    AdResultSetPtr BuildResultSet(const AdQueryDefPtr& query) override;
    void UnbuildResultSet(AdResultSetPtr& resultSet) override;
    void ImportHistoryData(const AdHistory* entries, long count, long options,
                           CEnumArray<int, int>& problemEntries, Obx_String& problems,
                           AdHistoryCallback callback, void* context) override;
    void CommitImportHistory() override;
    void RevertImportHistory() override;
    void UpdateImportHistoryExpiredTimestamp(AdEntityDef* recordType, long recordId) override;

    // What the session has done so far.
    const Statistics& GetStatistics() const { return m_parts->statistics; }

    // The text with which an attachment or a duplicate mark was refused last, empty when none was
    // since the last call. The importer's own messages for these two leave the cause out.
    Obx_String TakeLastRefusal() { return std::exchange(m_parts->lastRefusal, Obx_String()); }

    // Begins a transaction around many commits, which otherwise are one transaction each. One at a
    // time. Throws sql::Error; std::logic_error when one is open already.
    std::unique_ptr<SessionTransaction> BeginTransaction();

    // The latest failure of the database itself (disk full, locked, damaged ...), as opposed to a
    // record that was refused. Callers of the core got it as a PaMsgException*.
    const std::optional<sql::Error>& Failure() const { return m_parts->failures.Last(); }

  private:
    ~Session() override = default;

    AdPtr<SessionParts> m_parts;
};

}  // namespace recorddb

#endif
