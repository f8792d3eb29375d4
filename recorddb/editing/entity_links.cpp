#include <algorithm>
#include <string>

#include "platform/core/adtext.h"
#include "platform/foundation/utf.h"
#include "platform/messages/message_ids.h"
#include "recorddb/editing/entity.h"
#include "recorddb/messages/error_message.h"

// What an open record has beside its fields' values: attachments and the mark of a duplicate.

namespace recorddb {

using schema::Field;
using schema::FieldKind;

namespace {

PaMessage NotAttachments(const EditedRecord& record, const Field& field, const Obx_String& value) {
    return FieldMessage(message_id::kFieldNotAttachments, record.Type(), field,
                        {{u"_value_", value.ToUtf8()}});
}

bool ToText(const Obx_String& given, std::string& utf8) {
    return !Utf16ToUtf8(given.View(), utf8).has_value() && utf8.find('\0') == std::string::npos;
}

}  // namespace

std::vector<Attachment> Entity::Attachments(const Field& field) {
    std::vector<Attachment> stored;
    if (!m_record.IsNew()) {
        stored = m_parts->attachments.Load(m_record.Type().id, m_record.dbid);
    }
    std::vector<Attachment> attachments = m_record.attachments.AppliedTo(std::move(stored));
    std::erase_if(attachments,
                  [&field](const Attachment& other) { return other.field != field.name; });
    return attachments;
}

Obx_String Entity::AddAttachment(const Obx_String& fieldName, const Obx_String& fileName,
                                 const Obx_String& description) {
    Obx_String refusal = OnField(
        fieldName, [&](const Field& field) { return Attach(field, fileName, description); });
    if (!refusal.IsEmpty()) {
        m_parts->lastRefusal = refusal;
    }
    return refusal;
}

Obx_String Entity::DeleteAttachment(const Obx_String& fieldName, const Obx_String& attachment) {
    return OnField(fieldName, [&](const Field& field) { return Detach(field, attachment); });
}

PaMessage Entity::Attach(const Field& field, const Obx_String& fileName,
                         const Obx_String& description) {
    if (field.kind != FieldKind::Attachments) {
        return NotAttachments(m_record, field, fileName);
    }
    NewAttachment addition;
    Attachment& attachment = addition.attachment;
    if (!ToText(fileName, addition.name) || !ToText(description, attachment.description)) {
        return FieldMessage(message_id::kValueNotText, m_record.Type(), field,
                            {{u"_value_", fileName.ToUtf8()}});
    }
    AttachmentFile file;
    PaMessage problem = m_parts->attachments.Open(addition.name, field.name, file);
    if (problem.ID() != 0) {
        return problem;
    }
    attachment.field = field.name;
    attachment.fileName = AdBasename(fileName).ToUtf8();
    attachment.fileSize = file.Size();
    m_record.attachments.added.push_back(std::move(addition));
    return {};
}

PaMessage Entity::Detach(const Field& field, const Obx_String& text) {
    if (field.kind != FieldKind::Attachments) {
        return NotAttachments(m_record, field, text);
    }
    const std::string wanted = text.ToUtf8();
    const auto isWanted = [&wanted](const Attachment& attachment) {
        return AttachmentText(attachment) == wanted;
    };
    const std::vector<Attachment> attachments = Attachments(field);
    const auto found = std::find_if(attachments.begin(), attachments.end(), isWanted);
    if (found == attachments.end()) {
        return FieldMessage(message_id::kAttachmentUnknown, m_record.Type(), field,
                            {{u"_value_", wanted}});
    }
    if (found->dbid != 0) {
        m_record.attachments.removed.push_back(*found);
    } else {
        std::erase_if(m_record.attachments.added, [&](const NewAttachment& addition) {
            return addition.attachment.field == field.name && isWanted(addition.attachment);
        });
    }
    return {};
}

// What people call the record.
std::string Entity::DisplayKey() {
    return m_record.IsNew() ? std::to_string(DbId())
                            : m_parts->keys.KeyOf(m_record.Type(), m_record.dbid).value_or("");
}

void Entity::CheckDuplicate(Entity& original) {
    const schema::RecordType& type = m_record.Type();
    if (&original.m_record.def != &m_record.def) {
        ThrowMessage(ErrorMessage(message_id::kDuplicateOtherType,
                                  {{u"_datatype_", type.name},
                                   {u"_value_", DisplayKey()},
                                   {u"_refentitydef_", original.m_record.Type().name}}));
    }
    if (original.m_record.IsNew()) {
        ThrowMessage(ErrorMessage(message_id::kDuplicateNotSaved, {{u"_datatype_", type.name}}));
    }
    if (m_record.IsNew()) {
        return;
    }
    if (original.m_record.dbid == m_record.dbid) {
        ThrowMessage(ErrorMessage(message_id::kDuplicateOfItself,
                                  {{u"_datatype_", type.name}, {u"_value_", DisplayKey()}}));
    }
    if (m_parts->duplicates.LeadsTo(type.id, original.m_record.dbid, m_record.dbid)) {
        ThrowMessage(
            ErrorMessage(message_id::kDuplicateCircle, {{u"_datatype_", type.name},
                                                        {u"_value_", DisplayKey()},
                                                        {u"_id_", original.DisplayKey()}}));
    }
}

void Entity::MarkAsDuplicateOf(Entity& original) {
    CheckDuplicate(original);
    const schema::RecordType& type = m_record.Type();
    m_record.original = original.m_record.dbid;
    m_record.linked = !m_record.IsNew() &&
                      m_parts->duplicates.OriginalOf(type.id, m_record.dbid) == m_record.original;
    if (type.duplicateState) {
        MoveToState(*type.FindField(schema::kStateName), *type.duplicateState);
    }
}

}  // namespace recorddb
