#include "platform/core/adsession.h"

#include "platform/messages/pamsgexception.h"

namespace {

AdSession& Open(const AdSessionPtr& session, const char16_t* operation, int line) {
    if (!session) {
        AdThrowMsgExcept(AdGetBadValue0MsgID(),
                         Obx_String(operation) + u" was called without an open session",
                         u"platform/core/adsession", line);
    }
    return *session;
}

}  // namespace

AdEntityDef* GetEntityDef(const AdSessionPtr& session, const Obx_String& recordTypeName) {
    return Open(session, u"GetEntityDef", __LINE__).GetEntityDef(recordTypeName);
}

AdEntityPtr GetEntity(const AdSessionPtr& session, AdEntityDef* recordType,
                      const Obx_String& identifier) {
    return Open(session, u"GetEntity", __LINE__).GetEntity(recordType, identifier);
}

AdEntityPtr ImportEntity(const AdSessionPtr& session, AdEntityDef* recordType,
                         const unsigned short* state, const unsigned short* existingId) {
    return Open(session, u"ImportEntity", __LINE__).ImportEntity(recordType, state, existingId);
}

void MarkEntityAsDuplicate(const AdSessionPtr& session, const AdEntityPtr& duplicate,
                           const AdEntityPtr& original, AdActionDef* action, int import) {
    Open(session, u"MarkEntityAsDuplicate", __LINE__)
        .MarkEntityAsDuplicate(duplicate, original, action, import);
}

AdQueryDefPtr BuildQueryDef(const AdSessionPtr& session, AdEntityDef* recordType, int reserved) {
    return Open(session, u"BuildQueryDef", __LINE__).BuildQueryDef(recordType, reserved);
}

void UnbuildQueryDef(const AdSessionPtr& session, AdQueryDefPtr& query) {
    Open(session, u"UnbuildQueryDef", __LINE__).UnbuildQueryDef(query);
}

AdResultSetPtr BuildResultSet(const AdSessionPtr& session, const AdQueryDefPtr& query) {
    return Open(session, u"BuildResultSet", __LINE__).BuildResultSet(query);
}

void UnbuildResultSet(const AdSessionPtr& session, AdResultSetPtr& resultSet) {
    Open(session, u"UnbuildResultSet", __LINE__).UnbuildResultSet(resultSet);
}

void ImportHistoryData(const AdSessionPtr& session, const AdHistory* entries, long count,
                       long options, CEnumArray<int, int>& problemEntries, Obx_String& problems,
                       AdHistoryCallback callback, void* context) {
    Open(session, u"ImportHistoryData", __LINE__)
        .ImportHistoryData(entries, count, options, problemEntries, problems, callback, context);
}

void CommitImportHistory(const AdSessionPtr& session) {
    Open(session, u"CommitImportHistory", __LINE__).CommitImportHistory();
}

void RevertImportHistory(const AdSessionPtr& session) {
    Open(session, u"RevertImportHistory", __LINE__).RevertImportHistory();
}

void UpdateImportHistoryExpiredTimestamp(const AdSessionPtr& session, AdEntityDef* recordType,
                                         long recordId) {
    Open(session, u"UpdateImportHistoryExpiredTimestamp", __LINE__)
        .UpdateImportHistoryExpiredTimestamp(recordType, recordId);
}
