#include "recorddb/editing/reference_keys.h"

#include <fmt/format.h>

#include <utility>

#include "recorddb/editing/value_text.h"
#include "recorddb/store/tables.h"

namespace recorddb {

namespace {

// Records remembered for each type.
constexpr std::size_t mostKnown = 20'000;

// A key can contain a reference to a record whose key contains one in turn. Deeper than this, or
// with more records to it, only one gets that refers to itself.
constexpr int deepestKey = 16;
constexpr int mostKeyReads = 1000;

}  // namespace

ReferenceKeys::ReferenceKeys(sql::Connection& connection, const schema::Schema& schema,
                             KeySearchLimits limits)
    : m_connection(connection),
      m_schema(schema),
      m_types(schema.Types().size()),
      m_limits(std::move(limits)) {}

KeyMatch ReferenceKeys::Find(const schema::RecordType& type, std::string_view key) {
    return KeySearch(m_schema, *this, m_limits).Find(type, key);
}

std::optional<std::int64_t> ReferenceKeys::Known(const schema::RecordType& type,
                                                 std::string_view key) {
    if (!MayRemember()) {
        return std::nullopt;
    }
    const KeyCache& known = Keys(type).known;
    const auto found = known.find(key);
    return found != known.end() ? std::optional(found->second) : std::nullopt;
}

// What does not exist is never remembered from one search to the next: it may be created a moment
// later.
void ReferenceKeys::Remember(const schema::RecordType& type, std::string_view key,
                             std::int64_t dbid) {
    if (!MayRemember()) {
        return;
    }
    KeyCache& known = Keys(type).known;
    if (known.size() >= mostKnown) {
        known.clear();
    }
    known.emplace(key, dbid);
}

// Between transactions other writers may change keys, and a roll-back takes records away.
bool ReferenceKeys::MayRemember() {
    if (!m_connection.InTransaction()) {
        return false;
    }
    if (m_transactionCount != m_connection.TransactionCount() ||
        m_rollbackCount != m_connection.RollbackCount()) {
        Forget();
        m_transactionCount = m_connection.TransactionCount();
        m_rollbackCount = m_connection.RollbackCount();
    }
    return true;
}

void ReferenceKeys::Forget() {
    for (TypeKeys& type : m_types) {
        type.known.clear();
    }
}

std::int64_t ReferenceKeys::LookUp(const schema::RecordType& type,
                                   const std::vector<FieldValue>& values) {
    sql::Statement& find = FindStatement(type);
    int parameter = 0;
    for (const FieldValue& value : values) {
        BindValue(find, ++parameter, value);
    }
    return sql::QueryInt(find).value_or(0);
}

std::optional<std::string> ReferenceKeys::KeyOf(const schema::RecordType& type, std::int64_t dbid) {
    m_readsLeft = mostKeyReads;
    return KeyOf(type, dbid, 0);
}

std::optional<std::string> ReferenceKeys::KeyOf(const schema::RecordType& type, std::int64_t dbid,
                                                int depth) {
    if (--m_readsLeft < 0) {
        return std::nullopt;
    }
    sql::Statement& statement = KeyStatement(type);
    std::vector<std::string> parts;
    {
        const sql::ResetGuard guard(statement);
        statement.BindAll(dbid);
        if (!statement.Step()) {
            return std::nullopt;
        }
        for (int column = 0; column < statement.ColumnCount(); ++column) {
            parts.emplace_back(statement.Text(column));
        }
    }
    for (std::size_t i = 0; i < parts.size(); ++i) {
        const schema::Field& field = type.fields[type.key[i]];
        const auto target = IntegerOf(parts[i]);
        if (field.kind == schema::FieldKind::Reference && target && depth < deepestKey) {
            parts[i] = KeyOf(m_schema.Type(field.target), *target, depth + 1).value_or("");
        }
    }
    return fmt::format("{}", fmt::join(parts, " "));
}

std::vector<std::string> ReferenceKeys::TextsOf(const schema::Field& field,
                                                const FieldValue& value) {
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

sql::Statement& ReferenceKeys::FindStatement(const schema::RecordType& type) {
    sql::Statement*& statement = Keys(type).find;
    if (statement == nullptr) {
        std::vector<std::string> conditions;
        for (const std::size_t part : type.key) {
            conditions.push_back(fmt::format("{} = ${}", schema::Quoted(type.fields[part].name),
                                             conditions.size() + 1));
        }
        statement = &m_connection.Prepare(fmt::format("SELECT {} FROM {} WHERE {}",
                                                      schema::dbIdName, schema::Quoted(type.name),
                                                      fmt::join(conditions, " AND ")));
    }
    return *statement;
}

sql::Statement& ReferenceKeys::KeyStatement(const schema::RecordType& type) {
    sql::Statement*& statement = Keys(type).key;
    if (statement == nullptr) {
        std::vector<std::string> columns;
        for (const std::size_t part : type.key) {
            columns.push_back(schema::Quoted(type.fields[part].name));
        }
        statement = &m_connection.Prepare(fmt::format("SELECT {} FROM {} WHERE {} = $1",
                                                      fmt::join(columns, ", "),
                                                      schema::Quoted(type.name), schema::dbIdName));
    }
    return *statement;
}

}  // namespace recorddb
