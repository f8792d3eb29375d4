#include "tests/scripted/scripted_entity.h"

#include <utility>
#include <vector>

#include "tests/scripted/scripted_core.h"
#include "tests/scripted/scripted_field_info.h"

namespace {

Obx_String TextOf(const ScriptedAnswer& answer) {
    return AnswerOr(answer, Obx_String());
}

}  // namespace

ScriptedEntity::ScriptedEntity(ScriptedCore& core, ScriptedEntityDef* type, Obx_String dbId,
                               std::string before)
    : m_core(core), m_type(type), m_dbId(std::move(dbId)), m_before(std::move(before)) {
    m_core.HandleMade();
}

ScriptedEntity::~ScriptedEntity() {
    m_core.HandleReleased(Label());
}

std::string ScriptedEntity::Label() const {
    return CallArgument(m_type).Shown() + " " + m_dbId.ToUtf8();
}

ScriptedAnswer ScriptedEntity::Call(const char* name,
                                    std::initializer_list<CallArgument> arguments) const {
    return m_core.Called(CallLog::Kind::kCall, m_before, name, arguments);
}

ScriptedAnswer ScriptedEntity::Question(const char* name,
                                        std::initializer_list<CallArgument> arguments) const {
    return m_core.Called(CallLog::Kind::kQuestion, m_before, name, arguments);
}

AdEntityDef* ScriptedEntity::GetEntityDef() const {
    Question("GetEntityDef");
    return m_type;
}

int ScriptedEntity::GetFieldType(const Obx_String& fieldName) const {
    const ScriptedAnswer answer = Question("GetFieldType", {fieldName});
    const ScriptedFieldDef* field = m_type->Find(fieldName);
    if (field == nullptr) {
        ThrowKind(ThrownKind::kMessage, u"no field " + fieldName);
    }
    return static_cast<int>(AnswerOr(answer, static_cast<long>(field->Type())));
}

Obx_String ScriptedEntity::GetFieldReferencedEntityDefName(const Obx_String& fieldName) const {
    Question("GetFieldReferencedEntityDefName", {fieldName});
    const ScriptedFieldDef* field = m_type->Find(fieldName);
    const bool isReference = field != nullptr && field->Target() != nullptr;
    return isReference ? field->Target()->Name() : Obx_String();
}

AdFieldInfoPtr ScriptedEntity::GetFieldValue(const Obx_String& fieldName) const {
    if (IsNullAnswer(Call("GetFieldValue", {fieldName}))) {
        return nullptr;
    }
    std::vector<Obx_String> values;
    if (fieldName == field_dbid) {
        values.push_back(m_dbId);
    }
    if (const auto* told = m_core.FindFieldValues(fieldName)) {
        values = *told;
    }
    return AdFieldInfoPtr(new ScriptedFieldInfo(m_core, fieldName, std::move(values)));
}

Obx_String ScriptedEntity::SetFieldValue(const Obx_String& fieldName, const Obx_String& value,
                                         int import) {
    return TextOf(Call("SetFieldValue", {fieldName, value, import}));
}

Obx_String ScriptedEntity::AddFieldValue(const Obx_String& fieldName, const Obx_String& value,
                                         int import) {
    return TextOf(Call("AddFieldValue", {fieldName, value, import}));
}

Obx_String ScriptedEntity::DeleteFieldValue(const Obx_String& fieldName, const Obx_String& value,
                                            int import) {
    return TextOf(Call("DeleteFieldValue", {fieldName, value, import}));
}

Obx_String ScriptedEntity::AddAttachment(const Obx_String& fieldName, const Obx_String& fileName,
                                         const Obx_String& description) {
    return TextOf(Call("AddAttachment", {fieldName, fileName, description}));
}

Obx_String ScriptedEntity::DeleteAttachment(const Obx_String& fieldName,
                                            const Obx_String& attachment) {
    return TextOf(Call("DeleteAttachment", {fieldName, attachment}));
}

// A success leaves a message without a number, but not a fresh one, so that a caller who gives the
// same message to the next step is seen in the log.
void ScriptedEntity::Save(const char* step, PaMessage& message) {
    const bool fresh = message.ID() == 0 && message.Type() == 0;
    const ScriptedAnswer answer = fresh ? Call(step) : Call(step, {std::string("a used message")});
    PaMessage success;
    success.Type(1);
    message = AnswerOr(answer, success);
}

void ScriptedEntity::Validate(PaMessage& message) {
    Save("Validate", message);
}

void ScriptedEntity::Commit(PaMessage& message) {
    Save("Commit", message);
}

void ScriptedEntity::Revert() {
    Call("Revert");
}
