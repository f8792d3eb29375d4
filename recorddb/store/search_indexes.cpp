#include "recorddb/store/search_indexes.h"

#include <fmt/format.h>

#include "recorddb/errors.h"
#include "recorddb/sql.h"
#include "recorddb/store/tables.h"

namespace recorddb::schema {

namespace {

bool IsIndexedFromTheStart(const RecordType& type, const Field& field) {
    return field.kind == FieldKind::DbId || field.kind == FieldKind::Reference || field.unique ||
           type.key.front() == field.index;
}

std::string IndexName(const RecordType& type, const Field& field) {
    return fmt::format("zt_search_{}_{}", type.id, field.index);
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
        const std::string script = fmt::format("CREATE INDEX IF NOT EXISTS {} ON {} ({})", name,
                                               sql::Quoted(type.name), sql::Quoted(field.name));
        if (m_connection.InTransaction()) {
            m_connection.ExecuteScript(script);
        } else {
            sql::Transaction transaction(m_connection);
            m_connection.ExecuteScript(script);
            transaction.Commit();
        }
    }
    // Inside a transaction, even an index that is there already may have been made by this
    // transaction, and is gone when it is rolled back.
    state.madeAtRollbackCount = m_connection.RollbackCount();
}

}  // namespace recorddb::schema
