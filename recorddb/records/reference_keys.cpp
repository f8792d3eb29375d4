#include "recorddb/records/reference_keys.h"

#include <fmt/format.h>

#include "recorddb/records/key_splits.h"
#include "recorddb/records/value_text.h"
#include "recorddb/schema/tables.h"

namespace recorddb {

namespace {

// Records remembered for each type.
constexpr std::size_t mostKnown = 20'000;

// A key can contain a reference to a record whose key contains one in turn. Deeper than this only a
// record that refers to itself gets.
constexpr int deepestKey = 16;

}  // namespace

ReferenceKeys::ReferenceKeys(sql::Connection& connection, const schema::Schema& schema)
    : m_connection(connection), m_schema(schema), m_types(schema.Types().size()) {}

KeyMatch ReferenceKeys::Find(const schema::RecordType& type, std::string_view key) {
    m_depth = 0;
    return FindAt(type, key);
}

KeyMatch ReferenceKeys::FindAt(const schema::RecordType& type, std::string_view key) {
    const bool remember = MayRemember();
    Known& known = Keys(type).known;
    if (remember) {
        if (const auto found = known.find(key); found != known.end()) {
            return {.dbid = found->second, .several = false};
        }
    }
    const KeyMatch match = Search(type, key);
    // What does not exist is not remembered: it may be created a moment later.
    if (remember && match.dbid != 0 && !match.several) {
        if (known.size() >= mostKnown) {
            known.clear();
        }
        known.emplace(key, match.dbid);
    }
    return match;
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

KeyMatch ReferenceKeys::Search(const schema::RecordType& type, std::string_view key) {
    if (type.key.size() == 1) {
        return SearchParts(type, {key});
    }
    KeyMatch match;
    for (const auto& parts : KeySplits(key, type.key.size())) {
        const KeyMatch found = SearchParts(type, parts);
        if (found.several || (found.dbid != 0 && match.dbid != 0 && found.dbid != match.dbid)) {
            return {.dbid = 0, .several = true};
        }
        if (found.dbid != 0) {
            match = found;
        }
    }
    return match;
}

KeyMatch ReferenceKeys::SearchParts(const schema::RecordType& type,
                                    const std::vector<std::string_view>& parts) {
    std::vector<FieldValue> values;
    bool several = false;
    for (std::size_t i = 0; i < parts.size(); ++i) {
        auto value = PartValue(type.fields[type.key[i]], parts[i], several);
        if (!value) {
            return {.dbid = 0, .several = several};
        }
        values.push_back(*std::move(value));
    }
    // Only now, since the values of references are found by such statements themselves.
    sql::Statement& find = FindStatement(type);
    int parameter = 0;
    for (const FieldValue& value : values) {
        BindValue(find, ++parameter, value);
    }
    return {.dbid = sql::QueryInt(find).value_or(0), .several = false};
}

std::optional<FieldValue> ReferenceKeys::PartValue(const schema::Field& field,
                                                   std::string_view text, bool& several) {
    switch (field.kind) {
        case schema::FieldKind::Integer:
        case schema::FieldKind::DbId:
            return IntegerOf(text);
        case schema::FieldKind::DateTime:
            return DateTimeOf(text);
        case schema::FieldKind::Reference: {
            if (m_depth >= deepestKey) {
                return std::nullopt;
            }
            ++m_depth;
            const KeyMatch match = FindAt(m_schema.Type(field.target), text);
            --m_depth;
            several = several || match.several;
            return match.dbid != 0 ? std::optional<FieldValue>(match.dbid) : std::nullopt;
        }
        default:
            return std::string(text);
    }
}

std::optional<std::string> ReferenceKeys::KeyOf(const schema::RecordType& type, std::int64_t dbid) {
    return KeyOf(type, dbid, 0);
}

std::optional<std::string> ReferenceKeys::KeyOf(const schema::RecordType& type, std::int64_t dbid,
                                                int depth) {
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
