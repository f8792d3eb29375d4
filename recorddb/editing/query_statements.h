#ifndef RECORDDB_EDITING_QUERY_STATEMENTS_H
#define RECORDDB_EDITING_QUERY_STATEMENTS_H

#include <string>
#include <unordered_map>

#include "recorddb/editing/query_def.h"
#include "recorddb/sql.h"

namespace recorddb {

// The statements of queries, prepared once for each shape: type, columns and fields compared. A
// field that is compared with the empty value takes no parameter, the others take one each in their
// order; the last parameter is the greatest number of rows. After the columns comes the dbid.
class QueryStatements {
  public:
    // The connection outlives the object.
    explicit QueryStatements(sql::Connection& connection) : m_connection(connection) {}

    // Known: the dbid of the only record that can match is the last parameter but one.
    enum class Place { Unknown, Known };

    // Throws sql::Error.
    sql::Statement& For(const QueryDef& query, Place place = Place::Unknown);

  private:
    sql::Connection& m_connection;
    std::unordered_map<std::string, sql::Statement*> m_statements;
};

}  // namespace recorddb

#endif
