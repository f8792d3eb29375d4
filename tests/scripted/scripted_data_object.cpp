#include "tests/scripted/scripted_data_object.h"

#include "tests/scripted/scripted_core.h"

void ScriptedName::Asked(ScriptedCore& core, const char* question) const {
    core.Called(CallLog::Kind::kQuestion, m_name.ToUtf8() + ".", question, {});
}

std::string CallArgument::NameOf(const AdDataObject& definition) {
    const auto* scripted = dynamic_cast<const ScriptedName*>(&definition);
    return scripted != nullptr ? scripted->Name().ToUtf8() : "(not of this core)";
}
