#include "recorddb/editing/entity.h"

#include <fmt/format.h>

#include <algorithm>
#include <string>
#include <utility>

#include "platform/messages/message_ids.h"
#include "recorddb/editing/field_info.h"
#include "recorddb/messages/error_message.h"

namespace recorddb {

namespace {

using schema::Field;
using schema::FieldKind;

PaMessage FieldRefused(int id, const EditedRecord& record, const Field& field,
                       const Obx_String& value) {
    return FieldMessage(id, record.Type(), field, {{u"_value_", value.ToUtf8()}});
}

// The state field of a type; null when it has no states.
const Field* StateField(const EntityDef& def) {
    const AdFieldDef* const field = def.GetStateFieldDef();
    return field != nullptr ? &static_cast<const FieldDef*>(field)->Field() : nullptr;
}

}  // namespace

Entity::Entity(std::shared_ptr<const EntityParts> parts, EntityDef& def)
    : m_parts(std::move(parts)), m_record(def) {
    m_record.undoCount = m_parts->batch.UndoCount();
}

Entity::~Entity() {
    if (m_record.IsNew() && m_record.dbid != 0) {
        m_parts->dbids.Release(m_record.Type(), m_record.dbid);
    }
}

AdPtr<Entity> Entity::New(const std::shared_ptr<const EntityParts>& parts, EntityDef& def) {
    AdPtr<Entity> entity(new Entity(parts, def));
    if (const Field* const state = StateField(def)) {
        entity->m_firstState = def.Type().states.front();
        entity->m_record.buffer.Set(state->index, entity->m_firstState);
    }
    return entity;
}

AdPtr<Entity> Entity::Open(const std::shared_ptr<const EntityParts>& parts, EntityDef& def,
                           std::int64_t dbid) {
    const auto version = parts->tables.Records(def.Type()).Version(dbid);
    if (!version) {
        return {};
    }
    AdPtr<Entity> entity(new Entity(parts, def));
    entity->m_record.dbid = dbid;
    entity->m_record.version = *version;
    return entity;
}

int Entity::GetFieldType(const Obx_String& fieldName) const {
    return static_cast<int>(m_record.def.Field(fieldName).Field().kind);
}

Obx_String Entity::GetFieldReferencedEntityDefName(const Obx_String& fieldName) const {
    const AdEntityDef* const target = m_record.def.Field(fieldName).GetReferenceEntityDef();
    return target != nullptr ? target->GetName() : Obx_String();
}

AdFieldInfoPtr Entity::GetFieldValue(const Obx_String& fieldName) const {
    const Field& field = m_record.def.Field(fieldName).Field();
    // Reading may load the record or reserve its dbid, neither of which a caller can notice.
    auto& self = const_cast<Entity&>(*this);
    return AdFieldInfoPtr(
        new FieldInfo(m_parts->failures.Guard([&self, &field] { return self.ValuesOf(field); })));
}

void Entity::Load(const Field& field) {
    if (m_record.IsNew()) {
        return;
    }
    if (field.kind == FieldKind::ReferenceList) {
        LoadList(field);
    } else if (schema::HasColumn(field.kind)) {
        Load();
    }
}

void Entity::Load() {
    if (m_record.columnsLoaded) {
        return;
    }
    const schema::RecordType& type = m_record.Type();
    const auto version = m_parts->tables.Records(type).Load(m_record.dbid, m_record.buffer);
    if (!version) {
        ThrowMessage(ErrorMessage(
            message_id::kRecordGone,
            {{u"_datatype_", type.name}, {u"_value_", std::to_string(m_record.dbid)}}));
    }
    // Nothing was changed in a record that was not loaded, so it may be based on what is there now.
    m_record.version = *version;
    m_record.columnsLoaded = true;
}

void Entity::LoadList(const Field& field) {
    // Loading the columns also reads the version that a change of the list is based on.
    Load();
    if (!m_record.listsLoaded[field.index]) {
        m_record.buffer.SetSaved(field.index,
                                 m_parts->tables.List(m_record.Type(), field).Load(m_record.dbid));
        m_record.listsLoaded[field.index] = true;
    }
}

void Entity::Change(const Field& field, FieldValue value) {
    Load(field);
    m_record.buffer.Set(field.index, std::move(value));
    m_checked = false;
    m_fieldsSet = true;
}

ReferenceList Entity::CurrentList(const Field& field) {
    const auto* const list = std::get_if<ReferenceList>(&m_record.buffer.Get(field.index));
    return list != nullptr ? *list : ReferenceList();
}

Obx_String Entity::NoField(const Obx_String& fieldName) const {
    return ErrorMessage(message_id::kNoField,
                        {{u"_datatype_", m_record.Type().name}, {u"_field_", fieldName.ToUtf8()}})
        .FullMsg();
}

Obx_String Entity::SetFieldValue(const Obx_String& fieldName, const Obx_String& value,
                                 int /*import*/) {
    return OnField(fieldName, [&](const Field& field) { return Set(field, value); });
}

Obx_String Entity::AddFieldValue(const Obx_String& fieldName, const Obx_String& value,
                                 int /*import*/) {
    return OnField(fieldName, [&](const Field& field) { return Add(field, value); });
}

Obx_String Entity::DeleteFieldValue(const Obx_String& fieldName, const Obx_String& value,
                                    int /*import*/) {
    return OnField(fieldName, [&](const Field& field) { return Delete(field, value); });
}

PaMessage Entity::Set(const Field& field, const Obx_String& value) {
    if (field.kind == FieldKind::DbId || field.kind == FieldKind::DisplayId) {
        return FieldRefused(message_id::kFieldOfDatabase, m_record, field, value);
    }
    const bool clearsList = field.kind == FieldKind::ReferenceList && value.IsEmpty();
    if (!schema::HasColumn(field.kind) && !clearsList) {
        return FieldRefused(message_id::kFieldNotPlain, m_record, field, value);
    }
    FieldValue read;
    PaMessage problem = m_parts->rules.Read(m_record.Type(), field, value.View(), read);
    if (problem.ID() == 0) {
        Change(field, std::move(read));
    }
    return problem;
}

PaMessage Entity::Add(const Field& field, const Obx_String& value) {
    if (field.kind != FieldKind::ReferenceList) {
        return FieldRefused(message_id::kFieldNotList, m_record, field, value);
    }
    std::int64_t target = 0;
    PaMessage problem = m_parts->rules.ReadItem(m_record.Type(), field, value.View(), target);
    if (problem.ID() != 0) {
        return problem;
    }
    Load(field);
    ReferenceList list = CurrentList(field);
    if (std::find(list.begin(), list.end(), target) == list.end()) {
        list.push_back(target);
    }
    Change(field, std::move(list));
    return {};
}

PaMessage Entity::Delete(const Field& field, const Obx_String& value) {
    if (field.kind != FieldKind::ReferenceList) {
        return FieldRefused(message_id::kFieldNotList, m_record, field, value);
    }
    std::int64_t target = 0;
    PaMessage problem = m_parts->rules.ReadItem(m_record.Type(), field, value.View(), target);
    if (problem.ID() != 0) {
        return problem;
    }
    Load(field);
    ReferenceList list = CurrentList(field);
    if (std::erase(list, target) == 0) {
        return FieldRefused(message_id::kNotInList, m_record, field, value);
    }
    Change(field, list.empty() ? FieldValue() : FieldValue(std::move(list)));
    return {};
}

void Entity::SetState(const Obx_String& state) {
    const Field* const field = StateField(m_record.def);
    if (field == nullptr) {
        ThrowMessage(ErrorMessage(message_id::kNoState, {{u"_datatype_", m_record.Type().name},
                                                         {u"_value_", state.ToUtf8()},
                                                         {u"_states_", "none"}}));
    }
    FieldValue value;
    PaMessage problem = m_parts->rules.Read(m_record.Type(), *field, state.View(), value);
    if (problem.ID() != 0) {
        ThrowMessage(std::move(problem));
    }
    if (m_record.IsNew()) {
        m_firstState = value;
    }
    MoveToState(*field, std::move(value));
}

void Entity::MoveToState(const Field& field, FieldValue state) {
    Load(field);
    m_record.buffer.Set(field.index, std::move(state));
    m_checked = false;
}

PaMessage Entity::Check() {
    PaMessage problem;
    // A record that was gathered since the last check may hold a value that must be unique. For
    // values in the database itself its unique indexes see to that.
    if (!m_checked || m_checkedAt != m_parts->batch.ChangeCount()) {
        problem = m_parts->checks.Check(m_record);
        m_checked = problem.ID() == 0;
        m_checkedAt = m_parts->batch.ChangeCount();
    }
    return problem;
}

void Entity::Validate(PaMessage& message) {
    message = m_parts->failures.Guard([this] { return Check(); });
}

void Entity::Commit(PaMessage& message) {
    message = m_parts->failures.Guard([this] { return Write(); });
}

PaMessage Entity::Write() {
    PaMessage problem = Check();
    if (problem.ID() != 0) {
        return problem;
    }
    const bool isNew = m_record.IsNew();
    const auto added = static_cast<std::int64_t>(m_record.attachments.added.size());
    const bool marked = m_record.original.has_value();
    problem = m_parts->writer.Write(m_record);
    if (problem.ID() != 0) {
        return problem;
    }
    Statistics& statistics = m_parts->statistics;
    ++statistics.commits;
    statistics.recordsCreated += isNew ? 1 : 0;
    statistics.recordsUpdated += !isNew && m_fieldsSet ? 1 : 0;
    statistics.attachments += added;
    statistics.duplicateLinks += marked ? 1 : 0;
    m_fieldsSet = false;
    if (isNew) {
        m_record.columnsLoaded = true;
        m_record.listsLoaded.assign(m_record.listsLoaded.size(), true);
    }
    return {};
}

void Entity::Revert() {
    m_record.buffer.DropChanges();
    m_record.attachments.Clear();
    m_record.original.reset();
    const Field* const state = StateField(m_record.def);
    if (state != nullptr && m_record.IsNew()) {
        m_record.buffer.Set(state->index, m_firstState);
    }
    m_checked = false;
    m_fieldsSet = false;
}

}  // namespace recorddb
