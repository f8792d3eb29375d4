#ifndef TESTS_SCRIPTED_SCRIPTED_SESSION_H
#define TESTS_SCRIPTED_SCRIPTED_SESSION_H

#include <initializer_list>

#include "platform/core/adsession.h"
#include "tests/scripted/call_argument.h"
#include "tests/scripted/scripted_answers.h"

class ScriptedCore;

// The session of a scripted core. An unknown record type is answered with a PaMsgException*;
// everything else works unless the core was told otherwise.
class ScriptedSession : public AdSession {
  public:
    explicit ScriptedSession(ScriptedCore& core) : m_core(core) {}

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

  private:
    ScriptedAnswer Call(const char* name, std::initializer_list<CallArgument> arguments);

    ScriptedCore& m_core;
};

#endif
