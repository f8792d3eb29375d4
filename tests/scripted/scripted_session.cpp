#include "tests/scripted/scripted_session.h"

#include <string>

#include "tests/scripted/scripted_core.h"
#include "tests/scripted/scripted_entity.h"
#include "tests/scripted/scripted_query_def.h"
#include "tests/scripted/scripted_result_set.h"

namespace {

template <typename Scripted, typename Handle>
std::string LabelOf(const Handle& handle) {
    const auto* object = dynamic_cast<const Scripted*>(handle.GetPtr());
    return object == nullptr ? "null" : object->Label();
}

Obx_String Digits(long number) {
    return Obx_String::FromUtf8(std::to_string(number));
}

}  // namespace

ScriptedAnswer ScriptedSession::Call(const char* name,
                                     std::initializer_list<CallArgument> arguments) {
    return m_core.Called(CallLog::Kind::kCall, "", name, arguments);
}

AdEntityDef* ScriptedSession::GetEntityDef(const Obx_String& recordTypeName) {
    if (IsNullAnswer(Call("GetEntityDef", {recordTypeName}))) {
        return nullptr;
    }
    ScriptedEntityDef* recordType = m_core.FindRecordType(recordTypeName);
    if (recordType == nullptr) {
        ThrowKind(ThrownKind::kMessage, u"no record type " + recordTypeName);
    }
    return recordType;
}

AdEntityPtr ScriptedSession::GetEntity(AdEntityDef* recordType, const Obx_String& identifier) {
    if (IsNullAnswer(Call("GetEntity", {recordType, identifier}))) {
        return nullptr;
    }
    auto* type = dynamic_cast<ScriptedEntityDef*>(recordType);
    const std::string before = CallArgument(recordType).Shown() + " " + identifier.ToUtf8() + ": ";
    return AdEntityPtr(new ScriptedEntity(m_core, type, identifier, before));
}

AdEntityPtr ScriptedSession::ImportEntity(AdEntityDef* recordType, const unsigned short* state,
                                          const unsigned short* existingId) {
    if (IsNullAnswer(Call("ImportEntity", {recordType, state, existingId}))) {
        return nullptr;
    }
    auto* type = dynamic_cast<ScriptedEntityDef*>(recordType);
    const Obx_String dbId =
        existingId == nullptr ? Digits(m_core.NextDbId()) : Obx_String(existingId);
    return AdEntityPtr(new ScriptedEntity(m_core, type, dbId, ""));
}

void ScriptedSession::MarkEntityAsDuplicate(const AdEntityPtr& duplicate,
                                            const AdEntityPtr& original, AdActionDef* action,
                                            int import) {
    Call("MarkEntityAsDuplicate",
         {LabelOf<ScriptedEntity>(duplicate), LabelOf<ScriptedEntity>(original), action, import});
}

AdQueryDefPtr ScriptedSession::BuildQueryDef(AdEntityDef* recordType, int reserved) {
    Call("BuildQueryDef", {recordType, reserved});
    const Obx_String name = Obx_String::FromUtf8(CallArgument(recordType).Shown());
    return AdQueryDefPtr(new ScriptedQueryDef(m_core, name));
}

void ScriptedSession::UnbuildQueryDef(AdQueryDefPtr& query) {
    Call("UnbuildQueryDef", {LabelOf<ScriptedQueryDef>(query)});
    query.SetPtr(nullptr);
}

AdResultSetPtr ScriptedSession::BuildResultSet(const AdQueryDefPtr& query) {
    const std::string label = LabelOf<ScriptedQueryDef>(query);
    if (IsNullAnswer(Call("BuildResultSet", {label}))) {
        return nullptr;
    }
    const auto& scripted = dynamic_cast<const ScriptedQueryDef&>(*query);
    return AdResultSetPtr(new ScriptedResultSet(m_core, label, scripted.Found()));
}

void ScriptedSession::UnbuildResultSet(AdResultSetPtr& resultSet) {
    Call("UnbuildResultSet", {LabelOf<ScriptedResultSet>(resultSet)});
    resultSet.SetPtr(nullptr);
}

void ScriptedSession::ImportHistoryData(const AdHistory* entries, long count, long options,
                                        CEnumArray<int, int>& problemEntries, Obx_String& problems,
                                        AdHistoryCallback callback, void* context) {
    const std::string shownCallback = callback == nullptr ? "null" : "a callback";
    const std::string shownContext = context == nullptr ? "null" : "a context";
    const ScriptedAnswer answer =
        Call("ImportHistoryData", {std::to_string(count) + " entries", options,
                                   std::to_string(problemEntries.GetSize()) + " problems", problems,
                                   shownCallback, shownContext});
    auto& imported = m_core.ImportedHistory();
    imported.insert(imported.end(), entries, entries + count);
    problems = AnswerOr(answer, problems);
}

void ScriptedSession::CommitImportHistory() {
    Call("CommitImportHistory", {});
}

void ScriptedSession::RevertImportHistory() {
    Call("RevertImportHistory", {});
}

void ScriptedSession::UpdateImportHistoryExpiredTimestamp(AdEntityDef* recordType, long recordId) {
    Call("UpdateImportHistoryExpiredTimestamp", {recordType, recordId});
}
