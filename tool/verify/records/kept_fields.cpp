#include "tool/verify/records/kept_fields.h"

#include <string_view>
#include <utility>

#include "tool/guarded/blank_word.h"
#include "tool/guarded/guarded_text.h"
#include "tool/packet/importer_text.h"

namespace tool {

namespace {

void Restore(std::string& text) {
    if (IsGuarded(text)) {
        text = Restored(text);
    }
}

// The parts of a value are guarded each by itself.
void Restore(KeptField& field) {
    Restore(field.value);
    for (std::string& key : field.keys) {
        Restore(key);
    }
    for (HistoryLine& line : field.history) {
        Restore(line.id);
        for (std::string& column : line.columns) {
            Restore(column);
        }
    }
    for (AttachmentLines& lines : field.attachments) {
        Restore(lines.id);
        Restore(lines.fileName);
        Restore(lines.fileSize);
        Restore(lines.description);
    }
}

KeptField FieldOf(const ImporterField& given, FieldUse use) {
    KeptField field;
    field.use = use;
    field.name = given.name;
    switch (use) {
        case FieldUse::Reference: {
            const std::string_view key = Trimmed(given.value);
            field.clears = IsBlankWord(key);
            if (!key.empty() && !field.clears) {
                field.keys.emplace_back(key);
            }
            field.value = given.value;
            break;
        }
        case FieldUse::ReferenceList:
            field.keys = ReadListItems(given.value);
            break;
        case FieldUse::History:
            field.history = ReadHistoryLines(given.value);
            break;
        case FieldUse::Attachments:
            field.attachments = ReadAttachmentLines(given.value);
            break;
        default:
            field.clears = use == FieldUse::Value && IsBlankWord(given.value);
            field.value = given.value;
    }
    return field;
}

}  // namespace

void KeepPacketFields(const ImporterFields& fields, bool guarded,
                      const ImportConfiguration& configuration,
                      const recorddb::schema::RecordType& type, KeptRecord& record) {
    record.fields.clear();
    for (const ImporterField& given : fields) {
        if (given.value.empty()) {
            continue;
        }
        KeptField& field =
            record.fields.emplace_back(FieldOf(given, UseOf(given.name, configuration, type)));
        if (guarded) {
            Restore(field);
        }
    }
    record.originalId = OriginalIdOf(fields, configuration, type);
    if (guarded) {
        Restore(record.originalId);
    }
}

void KeepSourceValues(const SourceValues& values, const ImportConfiguration& configuration,
                      const recorddb::schema::RecordType& type, KeptRecord& record) {
    record.fields.clear();
    ImporterFields plain;
    for (const SourceField& given : values.fields) {
        if (given.values.empty()) {
            continue;
        }
        KeptField& field = record.fields.emplace_back();
        field.use = UseOf(given.name, configuration, type);
        field.name = given.name;
        field.value = given.values.front();
        if (field.use == FieldUse::Reference || field.use == FieldUse::ReferenceList) {
            field.keys = given.values;
        }
        plain.push_back({given.name, field.value});
    }
    record.originalId = OriginalIdOf(plain, configuration, type);
    if (!values.history.empty()) {
        KeptField& field = record.fields.emplace_back();
        field.use = FieldUse::History;
        for (const SourceHistoryEntry& entry : values.history) {
            field.history.push_back(
                {.id = entry.id,
                 .columns = {entry.when, entry.who, entry.action, entry.before, entry.after, ""},
                 .count = HistoryLine::kMostColumns});
        }
    }
    if (!values.attachments.empty()) {
        KeptField& field = record.fields.emplace_back();
        field.use = FieldUse::Attachments;
        field.name = values.attachmentsField;
        for (const SourceAttachment& attachment : values.attachments) {
            field.attachments.push_back({.id = attachment.id,
                                         .fileName = attachment.path,
                                         .fileSize = attachment.size,
                                         .description = attachment.description,
                                         .count = AttachmentLines::kWhole});
        }
    }
}

}  // namespace tool
