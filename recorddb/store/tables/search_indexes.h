#ifndef RECORDDB_STORE_TABLES_SEARCH_INDEXES_H
#define RECORDDB_STORE_TABLES_SEARCH_INDEXES_H

#include <cstdint>
#include <optional>
#include <vector>

#include "recorddb/schema.h"
#include "recorddb/sql.h"

namespace recorddb::schema {

// Gives every column that is searched an index. Keys, unique fields and references have one from
// the start; any other column gets its own when it is first asked for, and keeps it.
class SearchIndexes {
  public:
    // Connection and schema outlive the object.
    SearchIndexes(sql::Connection& connection, const Schema& schema);

    // Makes sure that an equality search on a field of a type uses an index. Nothing happens on a
    // read-only connection, or for fields without a column. Runs in the transaction under way, or
    // in one of its own. Throws sql::Error.
    void Ensure(const RecordType& type, const Field& field);

    // True when an equality search on a field of a type uses an index at present. False for fields
    // without a column. Throws sql::Error.
    bool Has(const RecordType& type, const Field& field);

  private:
    // What is known about one column: nothing, that its index is there for good, or that it was
    // made at this RollbackCount of the connection and is there until the next roll-back.
    struct State {
        bool permanent = false;
        std::optional<std::uint64_t> madeAtRollbackCount;
    };

    State& StateOf(const RecordType& type, const Field& field) {
        return m_states[static_cast<std::size_t>(type.id - 1)][field.index];
    }
    void Make(const RecordType& type, const Field& field, State& state);

    sql::Connection& m_connection;
    std::vector<std::vector<State>> m_states;  // by type and field
};

}  // namespace recorddb::schema

#endif
