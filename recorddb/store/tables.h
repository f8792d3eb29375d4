#ifndef RECORDDB_STORE_TABLES_H
#define RECORDDB_STORE_TABLES_H

#include <string>
#include <string_view>

#include "recorddb/schema.h"
#include "recorddb/sql/dialect.h"

namespace recorddb::schema {

// The column of every record type's table that counts the record's versions, from 1.
constexpr std::string_view kVersionColumn = "zt_version";

// The script that makes the tables and indexes of a schema's record types: one table per type, with
// the columns `dbid`, the version and one per field that has one, named as the schema names them;
// one table per reference list; unique indexes for the key and for unique fields; an index for each
// reference.
std::string RecordTablesScript(const Schema& schema, const sql::Dialect& dialect);

}  // namespace recorddb::schema

#endif
