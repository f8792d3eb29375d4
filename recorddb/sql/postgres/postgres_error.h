#ifndef RECORDDB_SQL_POSTGRES_POSTGRES_ERROR_H
#define RECORDDB_SQL_POSTGRES_POSTGRES_ERROR_H

#include <string>
#include <string_view>

#include "recorddb/errors.h"

struct pg_conn;
struct pg_result;

namespace recorddb::sql {

// The error that the server, or libpq itself, answered a statement with.
Error PostgresError(pg_conn* connection, const pg_result* result, std::string_view sql);

// The kind of an error by its SQLSTATE, five characters; Other for one that is not known.
ErrorKind KindOfSqlState(std::string_view state);

// The columns in the detail of a unique violation, "Key (town, street)=(Ulm, Weg) already exists.",
// which is the only place where the server names them; its words may be of any language.
std::vector<std::string> ColumnsOfDetail(std::string_view detail);

}  // namespace recorddb::sql

#endif
