#ifndef RECORDDB_STORE_TABLES_STORED_SCHEMA_H
#define RECORDDB_STORE_TABLES_STORED_SCHEMA_H

#include <cstdint>
#include <string>

#include "recorddb/layout.h"
#include "recorddb/schema.h"
#include "recorddb/sql.h"

namespace recorddb::schema {

// The format of the tables that this program makes, and the oldest one that it can use as well.
constexpr std::int64_t kFormatVersion = 3;
constexpr std::int64_t kOldestFormat = 3;

// The range of programs, by their kFormatVersion, that can use a database of this format. A later
// format that only adds to this one keeps the lower end, so that programs of today go on with it.
constexpr std::int64_t kOldestReadable = 3;
constexpr std::int64_t kNewestReadable = kFormatVersion;

// The format of databases of the sharded layout, which programs that only know the plain one must
// leave alone; so it is its own oldest readable one.
constexpr std::int64_t kShardedFormat = 4;

// Checks that the tables of a schema can be made where others may stand: on a server. Throws
// DatabaseError: FileExists when one of that name is there, TooManyColumns when the engine cannot
// hold one.
void CheckRoom(sql::Connection& connection, const Schema& schema, Layout layout,
               const std::string& location);

// Makes all tables of a new database, in the transaction under way, and stores the schema there.
// Those of the sharded layout are spread over machines where the engine can. Throws sql::Error.
void StoreSchema(sql::Connection& connection, const Schema& schema, Layout layout = Layout::Plain);

// What a database says of itself: the text of the schema file that it was made from, and how it
// keeps its tables.
struct StoredSchema {
    std::string text;
    Layout layout = Layout::Plain;

    bool operator==(const StoredSchema&) const = default;
};

// `location` names the database in errors. Throws DatabaseError when it is no record database or
// one of a format that this program cannot use, sql::Error when what is stored is damaged.
StoredSchema LoadStoredSchema(sql::Connection& connection, const std::string& location);

// Checks that the tables of a schema are there. Throws DatabaseError when they were replaced or
// taken away, sql::Error.
void CheckTables(sql::Connection& connection, const Schema& schema, Layout layout,
                 const std::string& location);

}  // namespace recorddb::schema

#endif
