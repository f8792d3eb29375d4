#include "recorddb/integrity/check_context.h"

#include <fmt/format.h>

#include "recorddb/integrity/cell_rules.h"

namespace recorddb {

namespace {

// For each record type: 8 MiB.
constexpr std::uint64_t kMostExisting = std::uint64_t{1} << 26U;

}  // namespace

const schema::RecordType* CheckContext::FindType(std::int64_t id) const {
    const auto count = static_cast<std::int64_t>(m_schema.Types().size());
    return id >= 1 && id <= count ? &m_schema.Type(id) : nullptr;
}

bool CheckContext::Exists(const schema::RecordType& type, std::int64_t dbid) {
    const std::vector<bool>& existing = ExistingOf(type);
    const auto place = static_cast<std::uint64_t>(dbid);
    if (place < existing.size() && existing[place]) {
        return true;
    }
    const bool exists = m_tables.Records(type).Version(dbid).has_value();
    if (exists) {
        NoteExisting(type, dbid);
    }
    return exists;
}

// Dbids are counted from 1 on, so that a bit for each takes little memory.
void CheckContext::NoteExisting(const schema::RecordType& type, std::int64_t dbid) {
    const auto place = static_cast<std::uint64_t>(dbid);
    if (place >= kMostExisting) {
        return;
    }
    std::vector<bool>& existing = ExistingOf(type);
    if (place >= existing.size()) {
        existing.resize(place + 1);
    }
    existing[place] = true;
}

std::string CheckContext::NameOf(const schema::RecordType& type, std::int64_t dbid) {
    std::string key = m_keys.KeyOf(type, dbid).value_or("");
    return key.empty() ? fmt::format("(dbid {})", dbid) : key;
}

void CheckContext::ReportRecord(const schema::RecordType& type, std::int64_t dbid,
                                std::string field, std::string value, std::string problem) {
    m_take({.type = type.name,
            .id = NameOf(type, dbid),
            .field = std::move(field),
            .value = std::move(value),
            .problem = std::move(problem)});
}

bool CheckContext::ReportCell(const schema::RecordType& type, std::int64_t dbid,
                              std::string_view field, const sql::Statement& row, int column,
                              std::string problem) {
    if (problem.empty()) {
        return false;
    }
    ReportRecord(type, dbid, std::string(field), CellText(row, column), std::move(problem));
    return true;
}

}  // namespace recorddb
