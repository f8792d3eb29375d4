#include <vector>

#include "platform/core/adtext.h"
#include "platform/messages/message_ids.h"
#include "ztimporter/adimporter/bad_value.h"
#include "ztimporter/adimporter/caught_exceptions.h"
#include "ztimporter/adimporter/importer_trace.h"
#include "ztimporter/adimporter/message_text.h"
#include "ztimporter/adimporter/open_record.h"
#include "ztimporter/adimporter/owned_entries.h"
#include "ztimporter/adimporter/record_addition.h"
#include "ztimporter/entrylabels.h"
#include "ztimporter/importrecordparser.h"

using adimporter::EndWithError;
using adimporter::TraceImporter;

namespace {

constexpr const char16_t* kImportAttachmentEndsWithError = u"ImportAttachment ends with error: %s";

struct NewAttachment {
    Obx_String fileName;
    Obx_String description;
};

NewAttachment ReadAttachment(const CMapStringToString& entry) {
    NewAttachment attachment;
    CMapStringToString::Position position = entry.GetStartPosition();
    Obx_String key;
    Obx_String value;
    while (position != nullptr) {
        entry.GetNextAssoc(position, key, value);
        if (key.CompareNoCase(attachment_label[kFileName]) == 0) {
            attachment.fileName = value;
        } else if (key.CompareNoCase(attachment_label[kDescription]) == 0) {
            attachment.description = value;
        }
    }
    return attachment;
}

// The base name of an existing attachment's file, which stands on the second line of its text; a
// text without a second line has none.
bool HasBaseName(const Obx_String& existing, const Obx_String& baseName) {
    CStringArray lines;
    AdSplitString(existing, u"\n", lines);
    return lines.GetSize() > 1 && AdBasename(lines[1]).CompareNoCase(baseName) == 0;
}

// Deletes the first existing attachment with that base name. It leaves the array, so that a later
// entry of the same name does not replace it once more.
void DeleteSameNamed(AdEntity& record, const Obx_String& fieldName, const Obx_String& baseName,
                     CStringArray& existing) {
    for (int i = 0; i < existing.GetSize(); ++i) {
        if (HasBaseName(existing[i], baseName)) {
            // The result of the deletion does not matter: the new file is added in any case.
            record.DeleteAttachment(fieldName, existing[i]);
            existing.RemoveAt(i);
            return;
        }
    }
}

}  // namespace

// One record of an attachments packet.
class AdImporter::Steps::AttachmentAddition : public RecordAddition {
  public:
    AttachmentAddition(AdImporter& importer, Obx_String& error)
        : RecordAddition(importer, error, kImportAttachmentEndsWithError) {}

  protected:
    bool Collect() override {
        CStringArray fieldNames;
        m_importer.m_entityDef->GetAttachmentFieldDefNames(fieldNames);
        const CMapStringToString& map = m_importer.m_recordMap;
        CMapStringToString::Position position = map.GetStartPosition();
        Obx_String name;
        Obx_String value;
        while (position != nullptr) {
            map.GetNextAssoc(position, name, value);
            for (const Obx_String& fieldName : fieldNames) {
                if (name.CompareNoCase(fieldName) == 0) {
                    m_fields.push_back(
                        {name, adimporter::OwnedEntries(
                                   m_importer.m_recordParser->ExtractAttachmentData(value))});
                }
            }
        }
        return !m_fields.empty();
    }

    void AddTo(const AdEntityPtr& entity) override {
        for (Field& field : m_fields) {
            m_importer.AddAttachment(entity, field.name, field.attachments.GetList(), m_error);
        }
    }

  private:
    struct Field {
        Obx_String name;
        adimporter::OwnedEntries attachments;
    };

    std::vector<Field> m_fields;
};

int AdImporter::ImportAttachment(Obx_String& error) {
    try {
        TraceImporter(u"ImportAttachment begins");
        while (m_recordParser->NextRecord() != 0) {
            if (!Steps::AttachmentAddition(*this, error).Import()) {
                return 0;
            }
        }
        TraceImporter(u"ImportAttachment ends successfully");
        return 1;
    } catch (...) {
        adimporter::AppendCaughtException(error);
    }
    return EndWithError(kImportAttachmentEndsWithError, error);
}

void AdImporter::AddAttachment(AdEntityPtr entity, Obx_String fieldName, EntryList& attachments,
                               Obx_String& error) {
    try {
        TraceImporter(u"AddAttachment begins, field name: %s, attachments size: %d", fieldName,
                      attachments.size());
        AdEntity& record = adimporter::Require(entity, u"entity != __null");
        CStringArray existing;
        {
            const AdFieldInfoPtr field = adimporter::FieldOf(record, fieldName);
            if (field->GetValueStatus() == ad_value_status::kHasValue) {
                field->GetValue(existing);
            }
        }
        for (const CMapStringToString* entry : attachments) {
            const NewAttachment attachment = ReadAttachment(*entry);
            DeleteSameNamed(record, fieldName, AdBasename(attachment.fileName), existing);
            const Obx_String coreText =
                record.AddAttachment(fieldName, attachment.fileName, attachment.description);
            if (!coreText.IsEmpty()) {
                Obx_String id;
                entry->Lookup(attachment_label[kAttachmentDbId], id);
                // One attachment that fails does not stop the others; the last failure is reported.
                error = adimporter::MessageText(message_id::kAttachmentFailed,
                                                {{u"_attachmentid_", id}}) +
                        u"\n";
                TraceImporter(u"AddAttachment error: %s, Core error: %s", error, coreText);
            }
        }
        TraceImporter(u"AddAttachment ends");
    } catch (...) {
        adimporter::AppendCaughtException(error);
        EndWithError(u"AddAttachment ends with error: %s", error);
    }
}
