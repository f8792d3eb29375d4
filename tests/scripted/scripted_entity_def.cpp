#include "tests/scripted/scripted_entity_def.h"

#include <utility>

#include "tests/scripted/scripted_core.h"

ScriptedEntityDef::ScriptedEntityDef(ScriptedCore& core, Obx_String name, long dbId)
    : ScriptedDataObject(core, std::move(name), dbId),
      m_duplicateAction(
          std::make_unique<ScriptedActionDef>(core, u"duplicate", AdActionType_t::kDuplicate)) {
    Field(field_dbid, ad_field_type::kDbId);
}

ScriptedEntityDef& ScriptedEntityDef::States(const Obx_String& stateField) {
    Field(stateField, ad_field_type::kState);
    m_stateField = m_fields.back().get();
    return *this;
}

ScriptedEntityDef& ScriptedEntityDef::Field(const Obx_String& name, int type) {
    const long dbId = 1 + static_cast<long>(m_fields.size());
    m_fields.push_back(std::make_unique<ScriptedFieldDef>(Core(), name, dbId, type, nullptr));
    return *this;
}

ScriptedEntityDef& ScriptedEntityDef::Reference(const Obx_String& name, int type,
                                                ScriptedEntityDef& target) {
    const long dbId = 1 + static_cast<long>(m_fields.size());
    m_fields.push_back(std::make_unique<ScriptedFieldDef>(Core(), name, dbId, type, &target));
    return *this;
}

ScriptedEntityDef& ScriptedEntityDef::Key(std::vector<Obx_String> labels) {
    m_key = std::move(labels);
    return *this;
}

ScriptedFieldDef* ScriptedEntityDef::Find(const Obx_String& fieldName) const {
    for (const auto& field : m_fields) {
        if (field->Name().CompareNoCase(fieldName) == 0) {
            return field.get();
        }
    }
    return nullptr;
}

ScriptedAnswer ScriptedEntityDef::Question(const char* name,
                                           std::initializer_list<CallArgument> arguments) const {
    return Core().Called(CallLog::Kind::kQuestion, Name().ToUtf8() + ".", name, arguments);
}

int ScriptedEntityDef::GetType() const {
    const long own =
        m_stateField != nullptr ? ad_entity_kind::kWithStates : ad_entity_kind::kWithoutStates;
    return static_cast<int>(AnswerOr(Question("GetType"), own));
}

AdFieldDef* ScriptedEntityDef::GetStateFieldDef() const {
    return IsNullAnswer(Question("GetStateFieldDef")) ? nullptr : m_stateField;
}

AdFieldDef* ScriptedEntityDef::GetFieldDef(const Obx_String& fieldName, int reserved) const {
    if (IsNullAnswer(Question("GetFieldDef", {fieldName, reserved}))) {
        return nullptr;
    }
    ScriptedFieldDef* field = Find(fieldName);
    if (field == nullptr) {
        ThrowKind(ThrownKind::kMessage, u"no field " + fieldName);
    }
    return field;
}

Obx_String ScriptedEntityDef::GetFieldPath(const Obx_String& fieldName, int reserved) const {
    Question("GetFieldPath", {fieldName, reserved});
    return u"path of " + fieldName;
}

int ScriptedEntityDef::NumUniqueKeyFieldDefs() const {
    const long own = static_cast<long>(m_key.size());
    return static_cast<int>(AnswerOr(Question("NumUniqueKeyFieldDefs"), own));
}

int ScriptedEntityDef::GetUniqueKeyFieldDefLabels(CStringArray& labels) const {
    Question("GetUniqueKeyFieldDefLabels");
    labels.RemoveAll();
    for (const Obx_String& label : m_key) {
        labels.Add(label);
    }
    return labels.GetSize();
}

void ScriptedEntityDef::GetAttachmentFieldDefNames(CStringArray& names) const {
    Question("GetAttachmentFieldDefNames");
    names.RemoveAll();
    for (const auto& field : m_fields) {
        if (field->Type() == ad_field_type::kAttachments) {
            names.Add(field->Name());
        }
    }
}

AdActionDef* ScriptedEntityDef::LookupActionDef(AdActionType_t type) const {
    Core().Called(CallLog::Kind::kCall, Name().ToUtf8() + ".", "LookupActionDef",
                  {static_cast<int>(type)});
    return m_duplicateAction.get();
}
