#ifndef RECORDDB_MODEL_NAMES_H
#define RECORDDB_MODEL_NAMES_H

#include <cstddef>
#include <string>
#include <string_view>

#include "recorddb/schema.h"

namespace recorddb::schema {

// The longest name of a record type: a history entry has room for this much.
constexpr std::size_t kMaxTypeNameLength = 30;
// The longest name of a field, and of any table: PostgreSQL cuts longer identifiers.
constexpr std::size_t kMaxIdentifierLength = 63;
// The most fields with a column that a record type has, and the most fields of a key: SQLite has
// tables of up to 2000 columns, of which two are the database's own, and PostgreSQL has indexes of
// up to 32.
constexpr std::size_t kMaxColumnFields = 1998;
constexpr std::size_t kMaxKeyFields = 32;
// The longest name of a state, in UTF-16 units: a history entry has room for this much.
constexpr std::size_t kMaxStateLength = 30;

// True for a letter or underscore followed by letters, digits and underscores, all ASCII.
bool IsIdentifier(std::string_view name);

// True for names that start like the database's own tables and columns.
bool HasOwnPrefix(std::string_view name);

// True for names of columns that PostgreSQL keeps for itself in every table.
bool IsSystemColumn(std::string_view name);

// The table of a reference list, such as bug__keywords(record, position, target): record and target
// are dbids, position counts from 0.
std::string ListTableName(const RecordType& type, const Field& field);

// Length of UTF-8 text in UTF-16 units.
std::size_t Utf16Length(std::string_view utf8);

}  // namespace recorddb::schema

#endif
