#include "recorddb/store/tables/search_indexes.h"

#include <fmt/format.h>

#include <string>
#include <string_view>

#include "recorddb/errors.h"
#include "recorddb/sql.h"
#include "recorddb/store/tables/tables.h"

namespace recorddb::schema {

namespace {

bool IsIndexedFromTheStart(const RecordType& type, const Field& field) {
    return field.kind == FieldKind::DbId || field.kind == FieldKind::Reference || field.unique ||
           type.key.front() == field.index;
}

std::string IndexName(const RecordType& type, const Field& field) {
    return fmt::format("zt_search_{}_{}", type.id, field.index);
}

std::string IndexSql(const RecordType& type, const Field& field, std::string_view schema) {
    return fmt::format("CREATE INDEX IF NOT EXISTS {} ON {}{} ({})", IndexName(type, field),
                       schema.empty() ? "" : sql::Quoted(schema) + ".", sql::Quoted(type.name),
                       sql::Quoted(field.name));
}

// Asked before the server is, whose answer would name neither the role that may nor what for.
void RequireRightToIndex(sql::Connection& connection, const RecordType& type, const Field& field) {
    const std::string_view query = connection.GetDialect().rightToIndex;
    if (query.empty()) {
        return;
    }
    enum Column { kHasOwnersRights, kMayMakeThings, kRole, kOwner, kSchema };
    sql::Statement& ask = connection.Prepare(query);
    const sql::ResetGuard guard(ask);
    ask.BindAll(std::string_view(type.name));
    if (!ask.Step()) {
        return;
    }
    const std::string role = sql::Quoted(ask.Text(kRole));
    const auto refuse = [&](const std::string& why) {
        throw sql::Error(sql::ErrorKind::PermissionDenied,
                         fmt::format("searching {} by {} takes an index, for which the role {} {}",
                                     sql::Quoted(type.name), sql::Quoted(field.name), role, why),
                         "");
    };
    if (ask.Int(kHasOwnersRights) == 0) {
        const std::string owner = sql::Quoted(ask.Text(kOwner));
        refuse(
            fmt::format("lacks the rights of {0}, which owns the table; let {0} load first, or "
                        "make the index as {0}: {1}",
                        owner, IndexSql(type, field, ask.Text(kSchema))));
    }
    if (ask.Int(kMayMakeThings) == 0) {
        refuse(
            fmt::format("lacks the right CREATE on the schema {0}; it takes: GRANT CREATE ON "
                        "SCHEMA {0} TO {1}",
                        sql::Quoted(ask.Text(kSchema)), role));
    }
}

}  // namespace

SearchIndexes::SearchIndexes(sql::Connection& connection, const Schema& schema)
    : m_connection(connection) {
    for (const RecordType& type : schema.Types()) {
        std::vector<State>& states = m_states.emplace_back(type.fields.size());
        for (const Field& field : type.fields) {
            states[field.index].permanent =
                !HasColumn(field.kind) || IsIndexedFromTheStart(type, field);
        }
    }
}

void SearchIndexes::Ensure(const RecordType& type, const Field& field) {
    State& state = StateOf(type, field);
    if (state.permanent || m_connection.IsReadOnly()) {
        return;
    }
    if (state.madeAtRollbackCount != m_connection.RollbackCount()) {
        Make(type, field, state);
    }
}

bool SearchIndexes::Has(const RecordType& type, const Field& field) {
    return HasColumn(field.kind) &&
           (StateOf(type, field).permanent || m_connection.HasIndex(IndexName(type, field)));
}

void SearchIndexes::Make(const RecordType& type, const Field& field, State& state) {
    const std::string name = IndexName(type, field);
    // Looked up first, since making one takes the write lock even when it is there.
    const bool exists = m_connection.HasIndex(name);
    if (exists && !m_connection.InTransaction()) {
        state.permanent = true;
        return;
    }
    if (!exists && m_connection.InReading()) {
        throw sql::Error(sql::ErrorKind::Other, "the index has to be made in its turn", "");
    }
    if (!exists) {
        RequireRightToIndex(m_connection, type, field);
    }
    if (!m_connection.InTransaction()) {
        sql::Transaction transaction(m_connection);
        m_connection.ExecuteScript(IndexSql(type, field, {}));
        transaction.Commit();
        state.permanent = true;
        return;
    }
    if (!exists) {
        m_connection.ExecuteScript(IndexSql(type, field, {}));
    }
    // Inside a transaction, even an index that is there already may have been made by this
    // transaction, and is gone when it is rolled back.
    state.madeAtRollbackCount = m_connection.RollbackCount();
}

}  // namespace recorddb::schema
