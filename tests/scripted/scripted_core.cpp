#include "tests/scripted/scripted_core.h"

ScriptedCore::~ScriptedCore() = default;

ScriptedEntityDef& ScriptedCore::AddRecordType(const Obx_String& name) {
    const long dbId = 1001 + static_cast<long>(m_recordTypes.size());
    m_recordTypes.push_back(std::make_unique<ScriptedEntityDef>(*this, name, dbId));
    return *m_recordTypes.back();
}

ScriptedEntityDef* ScriptedCore::FindRecordType(const Obx_String& name) const {
    for (const auto& recordType : m_recordTypes) {
        if (recordType->Name().CompareNoCase(name) == 0) {
            return recordType.get();
        }
    }
    return nullptr;
}

ScriptedMatches& ScriptedCore::Matches(const Obx_String& recordType, const Obx_String& field,
                                       const Obx_String& value) {
    return m_matches[{recordType, field, value}];
}

void ScriptedCore::SetFieldValues(const Obx_String& field, std::vector<Obx_String> values) {
    m_fieldValues[field] = std::move(values);
}

const std::vector<Obx_String>* ScriptedCore::FindFieldValues(const Obx_String& field) const {
    const auto found = m_fieldValues.find(field);
    return found == m_fieldValues.end() ? nullptr : &found->second;
}

void ScriptedCore::ForgetCalls() {
    m_log.Clear();
    m_answers.StartCountingAgain();
    m_importedHistory.clear();
}

ScriptedAnswer ScriptedCore::Called(CallLog::Kind kind, const std::string& before,
                                    const std::string& name,
                                    std::initializer_list<CallArgument> arguments) {
    std::string line = before + name + "(";
    const char* separator = "";
    for (const CallArgument& argument : arguments) {
        line += separator + argument.Shown();
        separator = ", ";
    }
    m_log.Add(kind, line + ")");
    ScriptedAnswer answer = m_answers.Next(name);
    if (const auto* thrown = std::get_if<ThrowAnswer>(&answer)) {
        ThrowKind(thrown->kind, thrown->text);
    }
    return answer;
}

void ScriptedCore::HandleReleased(const std::string& what) {
    --m_handlesHeld;
    m_log.Add(CallLog::Kind::kRelease, what);
}
