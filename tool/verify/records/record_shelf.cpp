#include "tool/verify/records/record_shelf.h"

#include <cstring>
#include <span>
#include <string_view>
#include <vector>

#include "tool/verify/records/verify_scratch.h"

namespace tool {

namespace {

// Writes numbers and, each after its length, texts. A record is shorter than 4 GiB.
class BlobWriter {
  public:
    explicit BlobWriter(std::string& blob) : m_blob(blob) {}

    void Put(std::size_t number) {
        const auto shortened = static_cast<std::uint32_t>(number);
        char bytes[sizeof shortened];
        std::memcpy(bytes, &shortened, sizeof shortened);
        m_blob.append(bytes, sizeof shortened);
    }
    void Put(const std::string& text) {
        Put(text.size());
        m_blob += text;
    }
    void Put(const HistoryLine& line) {
        Put(line.id);
        for (const std::string& column : line.columns) {
            Put(column);
        }
        Put(line.count);
    }
    void Put(const AttachmentLines& lines) {
        Put(lines.id);
        Put(lines.fileName);
        Put(lines.fileSize);
        Put(lines.description);
        Put(lines.count);
    }
    void Put(const KeptField& field) {
        Put(static_cast<std::size_t>(field.use));
        Put(field.name);
        Put(field.value);
        Put(static_cast<std::size_t>(field.clears ? 1 : 0));
        Put(field.keys);
        Put(field.history);
        Put(field.attachments);
    }
    template <typename Part>
    void Put(const std::vector<Part>& parts) {
        Put(parts.size());
        for (const Part& part : parts) {
            Put(part);
        }
    }

  private:
    std::string& m_blob;
};

// Reads what a BlobWriter wrote, in the same order.
class BlobReader {
  public:
    explicit BlobReader(std::span<const std::byte> blob)
        : m_rest(reinterpret_cast<const char*>(blob.data()), blob.size()) {}

    void Take(std::size_t& number) {
        std::uint32_t shortened = 0;
        std::memcpy(&shortened, m_rest.data(), sizeof shortened);
        m_rest.remove_prefix(sizeof shortened);
        number = shortened;
    }
    void Take(std::string& text) {
        std::size_t length = 0;
        Take(length);
        text = m_rest.substr(0, length);
        m_rest.remove_prefix(length);
    }
    void Take(HistoryLine& line) {
        Take(line.id);
        for (std::string& column : line.columns) {
            Take(column);
        }
        Take(line.count);
    }
    void Take(AttachmentLines& lines) {
        Take(lines.id);
        Take(lines.fileName);
        Take(lines.fileSize);
        Take(lines.description);
        Take(lines.count);
    }
    void Take(KeptField& field) {
        std::size_t number = 0;
        Take(number);
        field.use = static_cast<FieldUse>(number);
        Take(field.name);
        Take(field.value);
        Take(number);
        field.clears = number != 0;
        Take(field.keys);
        Take(field.history);
        Take(field.attachments);
    }
    template <typename Part>
    void Take(std::vector<Part>& parts) {
        std::size_t count = 0;
        Take(count);
        parts.resize(count);
        for (Part& part : parts) {
            Take(part);
        }
    }

  private:
    std::string_view m_rest;
};

}  // namespace

RecordShelf::RecordShelf(recorddb::sql::Connection& scratch) : m_scratch(scratch) {
    scratch.ExecuteScript(
        "CREATE TABLE kept (sequence INTEGER PRIMARY KEY, type INTEGER NOT NULL, "
        "dbid INTEGER NOT NULL, source INTEGER NOT NULL, record INTEGER NOT NULL, "
        "line INTEGER NOT NULL, configuration INTEGER NOT NULL, differs INTEGER NOT NULL, "
        "fields BLOB NOT NULL)");
    m_insert = &scratch.Prepare(
        "INSERT INTO kept (type, dbid, source, record, line, configuration, differs, fields) "
        "VALUES ($1, $2, $3, $4, $5, $6, $7, $8)");
}

void RecordShelf::Add(const KeptRecord& record) {
    m_buffer.clear();
    BlobWriter writer(m_buffer);
    writer.Put(record.originalId);
    writer.Put(record.fields);
    m_insert->BindAll(record.type, record.dbid, record.place.source, record.place.record,
                      record.place.line, record.configuration, record.differs ? 1 : 0,
                      std::as_bytes(std::span(m_buffer)));
    OnScratch([this] { return m_insert->Execute(); });
    ++m_count;
}

bool RecordShelf::Next(KeptRecord& record) {
    if (m_select == nullptr) {
        // Only the narrow index is sorted; the rows mostly stand in this order anyway.
        OnScratch(
            [this] { m_scratch.ExecuteScript("CREATE INDEX kept_order ON kept (type, dbid)"); });
        m_select = &m_scratch.Prepare(
            "SELECT type, dbid, source, record, line, configuration, differs, fields "
            "FROM kept INDEXED BY kept_order ORDER BY type, dbid, sequence");
    }
    if (!OnScratch([this] { return m_select->Step(); })) {
        return false;
    }
    const auto number = [this](int column) {
        return static_cast<std::uint64_t>(m_select->Int(column));
    };
    record.type = m_select->Int(0);
    record.dbid = m_select->Int(1);
    record.place = {.source = number(2), .record = number(3), .line = number(4)};
    record.configuration = number(5);
    record.differs = m_select->Int(6) != 0;
    m_size = m_select->Blob(7).size();
    BlobReader reader(m_select->Blob(7));
    reader.Take(record.originalId);
    reader.Take(record.fields);
    return true;
}

}  // namespace tool
