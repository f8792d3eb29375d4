#include "tests/scripted/scripted_query_def.h"

#include <utility>

#include "tests/scripted/scripted_core.h"

ScriptedQueryDef::ScriptedQueryDef(ScriptedCore& core, Obx_String recordType)
    : m_core(core), m_recordType(std::move(recordType)) {
    m_core.HandleMade();
}

ScriptedQueryDef::~ScriptedQueryDef() {
    m_core.HandleReleased("query of " + Label());
}

std::string ScriptedQueryDef::Label() const {
    return (m_field + u" = " + m_value).ToUtf8();
}

const ScriptedMatches& ScriptedQueryDef::Found() const {
    return m_core.Matches(m_recordType, m_field, m_value);
}

void ScriptedQueryDef::SelectField(int column, const Obx_String& fieldPath) {
    m_core.Called(CallLog::Kind::kCall, "", "SelectField", {column, fieldPath});
}

void ScriptedQueryDef::SelectDbId(int column) {
    m_core.Called(CallLog::Kind::kCall, "", "SelectDbId", {column});
}

AdFilterNode* ScriptedQueryDef::BuildFilter(AdFilterNode* parent, const Obx_String& fieldName,
                                            AdCompOp_t operation, const Obx_String& value,
                                            int reserved) {
    const std::string shownParent = parent == nullptr ? "null" : "a node";
    m_core.Called(CallLog::Kind::kCall, "", "BuildFilter",
                  {shownParent, fieldName, static_cast<int>(operation), value, reserved});
    m_field = fieldName;
    m_value = value;
    return &m_node;
}
