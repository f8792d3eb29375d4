#include "recorddb/store/batch/key_rows.h"

#include <algorithm>
#include <string>
#include <string_view>

#include "recorddb/store/tables/table_layout.h"
#include "recorddb/value_text.h"

namespace recorddb {

namespace {

// The values of a set of fields among others; empty when one of them is missing.
std::vector<const FieldValue*> ValuesOf(const FieldSet& set, const FieldSet& fields,
                                        const std::vector<const FieldValue*>& values) {
    std::vector<const FieldValue*> ofSet;
    for (const std::size_t field : set) {
        const auto found = std::find(fields.begin(), fields.end(), field);
        if (found == fields.end()) {
            return {};
        }
        ofSet.push_back(values[static_cast<std::size_t>(found - fields.begin())]);
    }
    return ofSet;
}

enum class Values { Saved, Present };

std::optional<KeyRow> RowIn(const schema::RecordType& type, const FieldSet& set,
                            const RecordBuffer& record, Values which) {
    std::vector<const FieldValue*> values;
    for (const std::size_t field : set) {
        values.push_back(which == Values::Saved ? &record.Saved(field) : &record.Get(field));
    }
    return KeyRowOf(type, set, values);
}

}  // namespace

std::int64_t DbIdIn(const schema::RecordType& type, const FieldValue& displayId) {
    const auto* const text = std::get_if<std::string>(&displayId);
    if (text == nullptr || !text->starts_with(type.prefix)) {
        return 0;
    }
    const auto number = IntegerOf(std::string_view(*text).substr(type.prefix.size()));
    return number && schema::FormatDisplayId(type.prefix, *number) == *text ? *number : 0;
}

KeyRows::KeyRows(sql::Connection& connection, const schema::Schema& schema, Layout layout)
    : m_connection(connection) {
    for (const schema::RecordType& type : schema.Types()) {
        const bool isSpread = IsSpread(layout, type);
        m_isSpread.push_back(isSpread);
        m_sets.push_back(isSpread ? UniqueSetsOf(type) : std::vector<FieldSet>());
    }
}

std::optional<KeyRows::Location> KeyRows::Find(const schema::RecordType& type,
                                               const FieldSet& fields,
                                               const std::vector<const FieldValue*>& values) {
    if (!m_isSpread[static_cast<std::size_t>(type.id - 1)]) {
        return std::nullopt;
    }
    for (std::size_t i = 0; i < fields.size(); ++i) {
        const schema::FieldKind kind = type.fields[fields[i]].kind;
        if (kind == schema::FieldKind::DbId) {
            return std::nullopt;
        }
        if (kind == schema::FieldKind::DisplayId && HasValue(*values[i])) {
            return Location{.dbid = DbIdIn(type, *values[i]), .isCertain = false};
        }
    }
    for (const FieldSet& set : SetsOf(type)) {
        const auto ofSet = ValuesOf(set, fields, values);
        const auto row = ofSet.empty() ? std::nullopt : KeyRowOf(type, set, ofSet);
        if (row) {
            const std::int64_t dbid = Lookup(type, *row);
            return Location{.dbid = dbid, .isCertain = set.size() == fields.size()};
        }
    }
    return std::nullopt;
}

std::int64_t KeyRows::Lookup(const schema::RecordType& type, const KeyRow& row) {
    sql::Statement& find = m_connection.Prepare(
        "SELECT record FROM zt_key WHERE hash = $1 AND record_type = $2 AND field = $3");
    find.BindAll(row.hash, type.id, row.field);
    return sql::QueryInt(find).value_or(0);
}

void KeyRows::Add(const schema::RecordType& type, std::int64_t dbid, const RecordBuffer& record) {
    for (const FieldSet& set : SetsOf(type)) {
        if (const auto row = RowIn(type, set, record, Values::Present)) {
            Insert(type, dbid, *row);
        }
    }
}

// All old rows go first, since a record may exchange the values of two of its own fields.
void KeyRows::Change(const schema::RecordType& type, std::int64_t dbid,
                     const RecordBuffer& record) {
    std::vector<KeyRow> added;
    for (const FieldSet& set : SetsOf(type)) {
        if (std::none_of(set.begin(), set.end(),
                         [&record](std::size_t field) { return record.IsChanged(field); })) {
            continue;
        }
        if (const auto row = RowIn(type, set, record, Values::Saved)) {
            Remove(type, dbid, *row);
        }
        if (auto row = RowIn(type, set, record, Values::Present)) {
            added.push_back(*std::move(row));
        }
    }
    for (const KeyRow& row : added) {
        Insert(type, dbid, row);
    }
}

void KeyRows::Insert(const schema::RecordType& type, std::int64_t dbid, const KeyRow& row) {
    sql::Statement& insert = m_connection.Prepare(
        "INSERT INTO zt_key (hash, record_type, field, value, record) VALUES ($1, $2, $3, $4, $5)");
    insert.BindAll(row.hash, type.id, row.field, row.value, dbid);
    insert.Execute();
}

void KeyRows::Remove(const schema::RecordType& type, std::int64_t dbid, const KeyRow& row) {
    sql::Statement& remove = m_connection.Prepare(
        "DELETE FROM zt_key WHERE hash = $1 AND record_type = $2 AND field = $3 AND record = $4");
    remove.BindAll(row.hash, type.id, row.field, dbid);
    remove.Execute();
}

}  // namespace recorddb
