#ifndef RECORDDB_SQL_DIALECT_H
#define RECORDDB_SQL_DIALECT_H

#include <cstddef>
#include <string_view>

namespace recorddb::sql {

// Where the engines' tables differ. Everything else is one SQL text for all of them.
struct Dialect {
    // Type and constraint of a column `dbid`, the number that a row is known by.
    std::string_view dbIdType;
    // Type of a column of text, which compares by code point.
    std::string_view textType;
    // Type of a column of bytes.
    std::string_view blobType;
    // What stands after the closing bracket of a table that is stored in the order of its primary
    // key, so that the key needs no index beside the table; empty where there is no such thing.
    std::string_view clusteredTable;
    // True where a foreign key may name a table that is made later. Otherwise foreign keys are
    // added once all tables stand.
    bool foreignKeysAhead;
    // The most columns that a table can have.
    std::size_t mostColumns;
    // A query for the right to make an index of the table $1: whether the role has what the table's
    // owner may do, and whether it may make things in the table's schema (1 or 0 each); then the
    // names of role, owner and schema. Empty where nobody lacks such a right.
    std::string_view rightToIndex;
};

}  // namespace recorddb::sql

#endif
