#include "tool/verify/records/record_lookup.h"

#include <fmt/format.h>

#include <utility>

#include "tool/verify/records/stored_text.h"
#include "tool/verify/records/verify_scratch.h"

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
    : m_database(database), m_reader(reader), m_scratch(scratch), m_limits(std::move(limits)) {}

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
    return m_database.HasSearchIndex(type, field)
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
    m_reader.ReadValues(type, field, [&insert](std::int64_t dbid, std::string_view stored) {
        insert.BindAll(stored, dbid);
        OnScratch([&insert] { return insert.Execute(); });
    });
    OnScratch([&] {
        m_scratch.ExecuteScript(fmt::format("CREATE INDEX {0}_value ON {0} (value, dbid)", name));
    });
}

recorddb::KeyMatch RecordLookup::FindKey(const RecordType& type, std::string_view key) {
    return m_reader.FindKey(type, key, m_limits);
}

}  // namespace tool
