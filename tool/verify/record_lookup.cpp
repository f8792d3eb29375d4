#include "tool/verify/record_lookup.h"

#include <fmt/format.h>

#include <utility>

#include "recorddb/store/tables.h"
#include "tool/verify/scratch_failure.h"
#include "tool/verify/stored_text.h"

namespace tool {

using recorddb::schema::Field;
using recorddb::schema::RecordType;

namespace {

// One is the record, two are too many; how many more there are does not matter.
constexpr std::size_t kLimit = 2;

std::string CopyName(const RecordType& type, const Field& field) {
    return fmt::format("found_{}_{}", type.id, field.index);
}

}  // namespace

RecordLookup::RecordLookup(recorddb::Database& database, recorddb::RecordReader& reader,
                           recorddb::sql::Connection& scratch, recorddb::KeySearchLimits limits)
    : m_database(database),
      m_reader(reader),
      m_scratch(scratch),
      m_keys(database.GetConnection(), database.GetSchema(), std::move(limits)) {}

std::vector<std::int64_t> RecordLookup::Find(const RecordType& type, const Field& field,
                                             std::string_view value) {
    if (!recorddb::schema::HasColumn(field.kind)) {
        return {};
    }
    std::string stored = StoredText(field, value);
    if (field.kind == recorddb::schema::FieldKind::Reference) {
        // People write the key of the record that it points at.
        const auto match = FindKey(m_database.GetSchema().Type(field.target), value);
        if (match.dbid == 0) {
            return {};
        }
        stored = std::to_string(match.dbid);
    }
    return m_database.GetSearchIndexes().Has(type, field)
               ? m_reader.FindByValue(type, field, stored, kLimit)
               : FindCopied(type, field, stored);
}

std::vector<std::int64_t> RecordLookup::FindCopied(const RecordType& type, const Field& field,
                                                   const std::string& stored) {
    if (m_copied.emplace(type.id, field.index).second) {
        Copy(type, field);
    }
    auto& find = m_scratch.Prepare(
        fmt::format("SELECT dbid FROM {} WHERE value = $1 ORDER BY dbid", CopyName(type, field)));
    const recorddb::sql::ResetGuard guard(find);
    find.BindAll(std::string_view(stored));
    std::vector<std::int64_t> dbids;
    while (dbids.size() < kLimit && find.Step()) {
        dbids.push_back(find.Int(0));
    }
    return dbids;
}

void RecordLookup::Copy(const RecordType& type, const Field& field) {
    const std::string name = CopyName(type, field);
    m_scratch.ExecuteScript(
        fmt::format("CREATE TABLE {} (value TEXT NOT NULL, dbid INTEGER NOT NULL)", name));
    auto& insert =
        m_scratch.Prepare(fmt::format("INSERT INTO {} (value, dbid) VALUES ($1, $2)", name));
    auto& read = m_database.GetConnection().Prepare(fmt::format(
        "SELECT {0}, {1} FROM {2} WHERE {0} IS NOT NULL", recorddb::schema::Quoted(field.name),
        recorddb::schema::dbIdName, recorddb::schema::Quoted(type.name)));
    const recorddb::sql::ResetGuard guard(read);
    while (read.Step()) {
        insert.BindAll(read.Text(0), read.Int(1));
        OnScratch([&insert] { return insert.Execute(); });
    }
    OnScratch([&] {
        m_scratch.ExecuteScript(fmt::format("CREATE INDEX {0}_value ON {0} (value, dbid)", name));
    });
}

recorddb::KeyMatch RecordLookup::FindKey(const RecordType& type, std::string_view key) {
    return m_keys.Find(type, key);
}

}  // namespace tool
