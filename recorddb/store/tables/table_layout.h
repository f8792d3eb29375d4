#ifndef RECORDDB_STORE_TABLES_TABLE_LAYOUT_H
#define RECORDDB_STORE_TABLES_TABLE_LAYOUT_H

#include <string>
#include <string_view>
#include <vector>

#include "recorddb/layout.h"
#include "recorddb/schema.h"

namespace recorddb {

// What the layouts of a database differ in. In the sharded one,
//
// - records of spread types stand where their dbid says, and lists, history, attachments and
//   duplicates beside the record that they belong to; contents where their hash says. So every
//   primary key begins with that column, and frequent statements name it;
// - zt_key keeps the unique values of spread types, each where its hash says (store/key_rows.h);
// - zt_last_dbid holds the highest numbers given out, which could otherwise only be had by asking
//   all machines (store/last_dbids.h);
// - zt_turn is what writers wait for;
// - a foreign key stands only where both rows are on one machine.

// True for a type whose records are spread over machines.
inline bool IsSpread(Layout layout, const schema::RecordType& type) {
    return layout == Layout::Sharded && type.spread;
}

// The statement by which a transaction takes its turn as the one that writes.
constexpr std::string_view kTakeTurnSql = "UPDATE zt_turn SET number = number + 1 RETURNING number";

// The statements that spread the tables of a sharded database over machines, with the functions of
// Citus.
std::vector<std::string> SpreadingStatements(const schema::Schema& schema);

}  // namespace recorddb

#endif
