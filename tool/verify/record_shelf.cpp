#include "tool/verify/record_shelf.h"

#include <cstring>
#include <span>
#include <string_view>

#include "tool/verify/scratch_failure.h"

namespace tool {

namespace {

// Each text after its length; a record is shorter than 4 GiB.
void AppendText(std::string& buffer, const std::string& text) {
    const auto length = static_cast<std::uint32_t>(text.size());
    char bytes[sizeof length];
    std::memcpy(bytes, &length, sizeof length);
    buffer.append(bytes, sizeof length).append(text);
}

std::string TakeTextFrom(std::string_view& buffer) {
    std::uint32_t length = 0;
    std::memcpy(&length, buffer.data(), sizeof length);
    std::string text(buffer.substr(sizeof length, length));
    buffer.remove_prefix(sizeof length + length);
    return text;
}

void ReadFields(std::span<const std::byte> blob, ImporterFields& fields) {
    fields.clear();
    std::string_view rest(reinterpret_cast<const char*>(blob.data()), blob.size());
    while (!rest.empty()) {
        std::string name = TakeTextFrom(rest);
        fields.push_back({std::move(name), TakeTextFrom(rest)});
    }
}

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
    for (const auto& [name, value] : record.fields) {
        AppendText(m_buffer, name);
        AppendText(m_buffer, value);
    }
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
    ReadFields(m_select->Blob(7), record.fields);
    return true;
}

}  // namespace tool
