#include "recorddb/store/key_table.h"

#include <fmt/format.h>

#include "recorddb/store/bind_value.h"
#include "recorddb/store/tables/column_text.h"
#include "recorddb/value_text.h"

namespace recorddb {

namespace {

// A key can contain a reference to a record whose key contains one in turn. Only one that refers to
// itself gets deeper than this or takes more records.
constexpr int kDeepestKey = 16;
constexpr int kMostKeyReads = 1000;

std::string FindSql(const schema::RecordType& type) {
    std::vector<std::string> conditions;
    for (const std::size_t part : type.key) {
        conditions.push_back(
            fmt::format("{} = ${}", sql::Quoted(type.fields[part].name), conditions.size() + 1));
    }
    return fmt::format("SELECT {} FROM {} WHERE {}", schema::kDbIdName, sql::Quoted(type.name),
                       fmt::join(conditions, " AND "));
}

}  // namespace

std::int64_t KeyTable::Find(const schema::RecordType& type, const std::vector<FieldValue>& values) {
    std::vector<const FieldValue*> wanted;
    wanted.reserve(values.size());
    for (const FieldValue& value : values) {
        wanted.push_back(&value);
    }
    if (const std::int64_t pending = m_batch.FindKey(type, type.key, wanted)) {
        return pending;
    }
    const std::int64_t stored = FindStored(type, values, wanted);
    m_batch.NoteSearch(type, type.key, wanted, stored != 0);
    return stored;
}

std::int64_t KeyTable::FindStored(const schema::RecordType& type,
                                  const std::vector<FieldValue>& values,
                                  const std::vector<const FieldValue*>& wanted) {
    if (const auto answer = m_batch.Answers().Find(type, type.key, wanted)) {
        return *answer;
    }
    const auto location = m_batch.Keys().Find(type, type.key, wanted);
    if (location && (location->isCertain || location->dbid == 0)) {
        return location->dbid;
    }
    sql::Statement& find = location ? FindAtStatement(type) : FindStatement(type);
    int parameter = 0;
    for (const FieldValue& value : values) {
        BindValue(find, ++parameter, value);
    }
    if (location) {
        find.Bind(++parameter, location->dbid);
    }
    return sql::QueryInt(find).value_or(0);
}

std::optional<std::string> KeyTable::KeyOf(const schema::RecordType& type, std::int64_t dbid) {
    m_readsLeft = kMostKeyReads;
    return KeyOf(type, dbid, 0);
}

std::optional<std::string> KeyTable::KeyOf(const schema::RecordType& type, std::int64_t dbid,
                                           int depth) {
    if (--m_readsLeft < 0) {
        return std::nullopt;
    }
    std::vector<std::string> parts = KeyParts(type, dbid);
    if (parts.empty()) {
        return std::nullopt;
    }
    for (std::size_t i = 0; i < parts.size(); ++i) {
        const schema::Field& field = type.fields[type.key[i]];
        const auto target = IntegerOf(parts[i]);
        if (field.kind == schema::FieldKind::Reference && target && depth < kDeepestKey) {
            parts[i] = KeyOf(m_schema.Type(field.target), *target, depth + 1).value_or("");
        }
    }
    return fmt::format("{}", fmt::join(parts, " "));
}

// As the columns hold them; empty when there is no such record.
std::vector<std::string> KeyTable::KeyParts(const schema::RecordType& type, std::int64_t dbid) {
    std::vector<std::string> parts;
    // The batch holds keys of new records only: a change of a key is written at once.
    if (m_batch.Pending().HasNew(type, dbid)) {
        const PendingRecord& pending = *m_batch.Pending().FindColumns(type, dbid);
        for (const std::size_t field : type.key) {
            parts.push_back(ColumnText(pending.values[field]));
        }
        return parts;
    }
    m_batch.NoteRead(type, dbid);
    if (const KnownRow* const row = m_batch.Answers().FindRow(type, dbid)) {
        for (const std::size_t field : type.key) {
            parts.push_back(ColumnText((*row)[field]));
        }
        return parts;
    }
    sql::Statement& statement = KeyStatement(type);
    const sql::ResetGuard guard(statement);
    statement.BindAll(dbid);
    if (statement.Step()) {
        for (int column = 0; column < statement.ColumnCount(); ++column) {
            parts.emplace_back(statement.Text(column));
        }
    }
    return parts;
}

std::vector<std::string> KeyTable::TextsOf(const schema::Field& field, const FieldValue& value) {
    const auto keyOf = [this, &field](std::int64_t target) {
        return KeyOf(m_schema.Type(field.target), target).value_or("");
    };
    if (const auto* const text = std::get_if<std::string>(&value)) {
        return {*text};
    }
    if (const auto* const number = std::get_if<std::int64_t>(&value)) {
        const bool isReference = field.kind == schema::FieldKind::Reference;
        return {isReference ? keyOf(*number) : std::to_string(*number)};
    }
    std::vector<std::string> keys;
    if (const auto* const list = std::get_if<ReferenceList>(&value)) {
        for (const std::int64_t target : *list) {
            keys.push_back(keyOf(target));
        }
    }
    return keys;
}

sql::Statement& KeyTable::FindStatement(const schema::RecordType& type) {
    sql::Statement*& statement = Statements(type).find;
    if (statement == nullptr) {
        statement = &m_connection.Prepare(FindSql(type));
    }
    return *statement;
}

sql::Statement& KeyTable::FindAtStatement(const schema::RecordType& type) {
    sql::Statement*& statement = Statements(type).findAt;
    if (statement == nullptr) {
        statement = &m_connection.Prepare(
            fmt::format("{} AND {} = ${}", FindSql(type), schema::kDbIdName, type.key.size() + 1));
    }
    return *statement;
}

sql::Statement& KeyTable::KeyStatement(const schema::RecordType& type) {
    sql::Statement*& statement = Statements(type).key;
    if (statement == nullptr) {
        std::vector<std::string> columns;
        for (const std::size_t part : type.key) {
            columns.push_back(sql::Quoted(type.fields[part].name));
        }
        statement = &m_connection.Prepare(fmt::format("SELECT {} FROM {} WHERE {} = $1",
                                                      fmt::join(columns, ", "),
                                                      sql::Quoted(type.name), schema::kDbIdName));
    }
    return *statement;
}

}  // namespace recorddb
