#ifndef RECORDDB_STORE_TABLES_TABLES_H
#define RECORDDB_STORE_TABLES_TABLES_H

#include <string>
#include <string_view>
#include <vector>

#include "recorddb/layout.h"
#include "recorddb/schema.h"
#include "recorddb/sql/dialect.h"

namespace recorddb::schema {

// The column of every record type's table that counts the record's versions, from 1.
constexpr std::string_view kVersionColumn = "zt_version";

// The scripts that make the tables and indexes of a schema's record types: one table per type, with
// the columns `dbid`, the version and one per field that has one, named as the schema names them;
// one table per reference list; indexes for the key and for unique fields, unique unless the type
// is spread; an index for each reference.
struct RecordTablesScripts {
    std::string tables;
    // Indexes, and foreign keys that are not in the tables, when all tables stand where they are to
    // be. Statements for tables on several machines are taken one by one only.
    std::vector<std::string> rest;
};
RecordTablesScripts ScriptsOfRecordTables(const Schema& schema, const sql::Dialect& dialect,
                                          Layout layout = Layout::Plain);

// Both scripts, one after the other.
std::string RecordTablesScript(const Schema& schema, const sql::Dialect& dialect);

}  // namespace recorddb::schema

#endif
