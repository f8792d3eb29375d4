#ifndef RECORDDB_STORE_TABLES_OWN_TABLES_H
#define RECORDDB_STORE_TABLES_OWN_TABLES_H

#include <string>
#include <string_view>
#include <vector>

#include "recorddb/layout.h"
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
//
// The sharded layout alone has
//
// zt_key               the unique values of the records of spread types, by their hash; `field`
//                      names the field, or the fields of a key, separated by commas
// zt_last_dbid         the highest dbid that was given out; record_type 0 stands for attachments
// zt_turn              one row, which the transaction that writes has locked; it counts them
std::vector<std::string_view> OwnTables(Layout layout);

// The script that makes them.
std::string OwnTablesScript(const sql::Dialect& dialect, Layout layout);

}  // namespace recorddb::schema

#endif
