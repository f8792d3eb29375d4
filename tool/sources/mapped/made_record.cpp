#include "tool/sources/mapped/made_record.h"

#include <cstring>
#include <vector>

namespace tool {

namespace {

class ByteWriter {
  public:
    explicit ByteWriter(std::string& bytes) : m_bytes(bytes) {}

    void Number(std::uint64_t number) {
        while (number >= 0x80U) {
            m_bytes += static_cast<char>(number | 0x80U);
            number >>= 7U;
        }
        m_bytes += static_cast<char>(number);
    }
    void Text(const std::string& text) {
        Number(text.size());
        m_bytes += text;
    }

  private:
    std::string& m_bytes;
};

class ByteReader {
  public:
    explicit ByteReader(std::string_view bytes) : m_bytes(bytes) {}

    std::uint64_t Number() {
        std::uint64_t number = 0;
        unsigned shift = 0;
        unsigned char byte = 0;
        do {
            byte = static_cast<unsigned char>(m_bytes.front());
            m_bytes.remove_prefix(1);
            number |= static_cast<std::uint64_t>(byte & 0x7FU) << shift;
            shift += 7;
        } while (byte >= 0x80U);
        return number;
    }
    void Text(std::string& text) {
        const std::size_t size = Number();
        text.assign(m_bytes.substr(0, size));
        m_bytes.remove_prefix(size);
    }
    template <typename Item, typename Read>
    void List(std::vector<Item>& items, Read read) {
        items.resize(Number());
        for (Item& item : items) {
            read(item);
        }
    }

  private:
    std::string_view m_bytes;
};

}  // namespace

void AppendRecord(const MadeRecord& record, std::string& bytes) {
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
