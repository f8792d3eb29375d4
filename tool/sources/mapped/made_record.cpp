#include "tool/sources/mapped/made_record.h"

#include "tool/io/byte_codec.h"

namespace tool {

void AppendOrigin(const MadeRecord& record, std::string& bytes) {
    ByteWriter writer(bytes);
    writer.Number(record.place.file);
    writer.Number(record.place.number);
    writer.Number(record.place.line);
    writer.Number(record.rows.size());
    for (const RowSpan& row : record.rows) {
        writer.Number(row.file);
        writer.Number(row.begin);
        writer.Number(row.size);
    }
    writer.Text(record.key);
    writer.Number(record.first);
    writer.Text(record.error);
}

void AppendContent(const MadeRecord& record, std::string& bytes) {
    ByteWriter writer(bytes);
    writer.Number(record.error.empty() ? 0 : 1);
    writer.Number(record.values.fields.size());
    for (const SourceField& field : record.values.fields) {
        writer.Text(field.name);
        writer.Number(field.isList ? 1 : 0);
        writer.Number(field.values.size());
        for (const std::string& value : field.values) {
            writer.Text(value);
        }
    }
    writer.Number(record.values.history.size());
    for (const SourceHistoryEntry& entry : record.values.history) {
        for (const std::string* const text :
             {&entry.id, &entry.when, &entry.who, &entry.action, &entry.before, &entry.after}) {
            writer.Text(*text);
        }
    }
    writer.Text(record.values.attachmentsField);
    writer.Number(record.values.attachments.size());
    for (const SourceAttachment& attachment : record.values.attachments) {
        for (const std::string* const text :
             {&attachment.id, &attachment.path, &attachment.size, &attachment.description}) {
            writer.Text(*text);
        }
    }
}

void ReadRecord(std::string_view bytes, MadeRecord& record) {
    ByteReader reader(bytes);
    record.place.file = static_cast<std::uint32_t>(reader.Number());
    record.place.number = reader.Number();
    record.place.line = reader.Number();
    reader.List(record.rows, [&](RowSpan& row) {
        row.file = static_cast<std::uint32_t>(reader.Number());
        row.begin = reader.Number();
        row.size = reader.Number();
    });
    reader.Text(record.key);
    record.first = reader.Number();
    reader.Text(record.error);
    reader.Number();  // whether there is an error
    reader.List(record.values.fields, [&](SourceField& field) {
        reader.Text(field.name);
        field.isList = reader.Number() != 0;
        reader.List(field.values, [&](std::string& value) { reader.Text(value); });
    });
    reader.List(record.values.history, [&](SourceHistoryEntry& entry) {
        for (std::string* const text :
             {&entry.id, &entry.when, &entry.who, &entry.action, &entry.before, &entry.after}) {
            reader.Text(*text);
        }
    });
    reader.Text(record.values.attachmentsField);
    reader.List(record.values.attachments, [&](SourceAttachment& attachment) {
        for (std::string* const text :
             {&attachment.id, &attachment.path, &attachment.size, &attachment.description}) {
            reader.Text(*text);
        }
    });
}

}  // namespace tool
