#include "tests/scripted/scripted_field_info.h"

#include <utility>

#include "tests/scripted/scripted_core.h"

ScriptedFieldInfo::ScriptedFieldInfo(ScriptedCore& core, Obx_String field,
                                     std::vector<Obx_String> values)
    : m_core(core), m_field(std::move(field)), m_values(std::move(values)) {
    m_core.HandleMade();
}

ScriptedFieldInfo::~ScriptedFieldInfo() {
    m_core.HandleReleased("value of " + m_field.ToUtf8());
}

Obx_String ScriptedFieldInfo::GetValue() const {
    const ScriptedAnswer answer =
        m_core.Called(CallLog::Kind::kCall, m_field.ToUtf8() + ".", "GetValue", {});
    Obx_String joined;
    for (const Obx_String& value : m_values) {
        joined += joined.IsEmpty() ? value : u"\n" + value;
    }
    return AnswerOr(answer, joined);
}

void ScriptedFieldInfo::GetValue(CStringArray& values) const {
    m_core.Called(CallLog::Kind::kCall, m_field.ToUtf8() + ".", "GetValues", {});
    values.RemoveAll();
    for (const Obx_String& value : m_values) {
        values.Add(value);
    }
}

int ScriptedFieldInfo::GetValueStatus() const {
    const long own = m_values.empty() ? ad_value_status::kHasNoValue : ad_value_status::kHasValue;
    return static_cast<int>(AnswerOr(
        m_core.Called(CallLog::Kind::kCall, m_field.ToUtf8() + ".", "GetValueStatus", {}), own));
}
