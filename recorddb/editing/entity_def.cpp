#include "recorddb/editing/entity_def.h"

#include <algorithm>
#include <cstring>
#include <string>

#include "platform/messages/message_ids.h"
#include "recorddb/messages/error_message.h"

namespace recorddb {

namespace {

char16_t LowerCase(char16_t unit) {
    return unit >= u'A' && unit <= u'Z' ? static_cast<char16_t>(unit + (u'a' - u'A')) : unit;
}

// Names in a schema are ASCII, so folding more than ASCII could not make another name fit. Mostly
// they are written as in the schema.
bool SameName(std::u16string_view left, std::u16string_view right) {
    return left.size() == right.size() &&
           (std::memcmp(left.data(), right.data(), left.size() * sizeof(char16_t)) == 0 ||
            std::equal(left.begin(), left.end(), right.begin(),
                       [](char16_t a, char16_t b) { return LowerCase(a) == LowerCase(b); }));
}

}  // namespace

EntityDef::EntityDef(const schema::RecordType& type)
    : m_type(type), m_name(Obx_String::FromUtf8(type.name)) {
    for (const schema::Field& field : type.fields) {
        FieldDef& definition = m_fields.emplace_back(field);
        if (field.kind == schema::FieldKind::State) {
            m_stateField = &definition;
        }
    }
    m_actions.emplace_back(AdActionType_t::kSubmit, u"submit");
    m_actions.emplace_back(AdActionType_t::kModify, u"modify");
    m_actions.emplace_back(AdActionType_t::kImport, u"import");
    if (type.HasStates()) {
        m_actions.emplace_back(AdActionType_t::kChangeState, u"change_state");
        m_actions.emplace_back(AdActionType_t::kDuplicate, u"duplicate");
    }
}

const FieldDef* EntityDef::FindField(std::u16string_view name) const {
    // Begins with the one that was found last: it is often asked for again, and then one soon after
    // it, since records mostly have their fields in the order of the schema.
    for (std::size_t i = 0; i < m_fields.size(); ++i) {
        const std::size_t place = (m_lastFound + i) % m_fields.size();
        if (SameName(m_fields[place].Name().View(), name)) {
            m_lastFound = place;
            return &m_fields[place];
        }
    }
    return nullptr;
}

const FieldDef& EntityDef::Field(const Obx_String& name) const {
    const FieldDef* const field = FindField(name.View());
    if (field == nullptr) {
        ThrowMessage(ErrorMessage(message_id::kNoField,
                                  {{u"_datatype_", m_type.name}, {u"_field_", name.ToUtf8()}}));
    }
    return *field;
}

AdFieldDef* EntityDef::GetFieldDef(const Obx_String& fieldName, int /*reserved*/) const {
    return &m_fields[Field(fieldName).Field().index];
}

Obx_String EntityDef::GetFieldPath(const Obx_String& fieldName, int /*reserved*/) const {
    return Field(fieldName).Name();
}

int EntityDef::GetUniqueKeyFieldDefLabels(CStringArray& labels) const {
    labels.RemoveAll();
    for (const std::size_t part : m_type.key) {
        labels.Add(m_fields[part].Name());
    }
    return labels.GetSize();
}

void EntityDef::GetAttachmentFieldDefNames(CStringArray& names) const {
    names.RemoveAll();
    for (const FieldDef& field : m_fields) {
        if (field.Field().kind == schema::FieldKind::Attachments) {
            names.Add(field.Name());
        }
    }
}

AdActionDef* EntityDef::LookupActionDef(AdActionType_t type) const {
    const auto found = std::find_if(m_actions.begin(), m_actions.end(),
                                    [type](const ActionDef& a) { return a.GetType() == type; });
    if (found == m_actions.end()) {
        ThrowMessage(ErrorMessage(
            message_id::kNoAction,
            {{u"_datatype_", m_type.name}, {u"_value_", std::to_string(static_cast<int>(type))}}));
    }
    return &*found;
}

}  // namespace recorddb
