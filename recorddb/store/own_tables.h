#ifndef RECORDDB_STORE_OWN_TABLES_H
#define RECORDDB_STORE_OWN_TABLES_H

#include <array>
#include <string>
#include <string_view>

#include "recorddb/sql/dialect.h"

namespace recorddb::schema {

// The database's own tables. In all of them, `record_type` is a RecordType::id, `record` a dbid,
// `field` the name of a field as the schema writes it; times are UTC as 'YYYY-MM-DD HH:MM:SS', and
// hashes are SHA-256 in lower-case hex.
//
// zt_schema            one row: the format of the database and the schema file's text
// zt_record_type       the names and kinds of the record types, for people's queries
// zt_history           history entries, clustered by record; entry counts from 1 in each record
// zt_attachment        attachments of records, numbered by dbid
// zt_content           attachment content in chunks counted from 0; empty content is one empty
//                      chunk
// zt_duplicate         which record is a duplicate of which; a record has one original
// zt_journal           what was loaded from which source under which configuration; `run` is the
//                      number of the latest load that took it up
// zt_journal_reject    the ordinals of a source's records that were rejected
// zt_journal_waiting   the ordinals of a source's records that a load has read and put off, since
//                      they wait for others
inline constexpr std::array<std::string_view, 9> kOwnTables = {
    "zt_schema",    "zt_record_type", "zt_history",        "zt_attachment",     "zt_content",
    "zt_duplicate", "zt_journal",     "zt_journal_reject", "zt_journal_waiting"};

// The script that makes them.
std::string OwnTablesScript(const sql::Dialect& dialect);

}  // namespace recorddb::schema

#endif
