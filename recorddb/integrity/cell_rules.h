#ifndef RECORDDB_INTEGRITY_CELL_RULES_H
#define RECORDDB_INTEGRITY_CELL_RULES_H

#include <cstddef>
#include <cstdint>
#include <string>

#include "recorddb/sql/storage.h"

// Rules for the value in one column of a row by itself. Each returns what is wrong with the value,
// for people, or an empty text. NULL is wrong as well.
namespace recorddb {

// A text in UTF-8 without NUL, which may be empty.
std::string TextProblem(const sql::Statement& row, int column);

// The same, of at least one character.
std::string FilledTextProblem(const sql::Statement& row, int column);

// The same, empty or not, of at most `most` UTF-16 units.
std::string UnitsProblem(const sql::Statement& row, int column, std::size_t most);

// A whole number from `least` on.
std::string IntegerProblem(const sql::Statement& row, int column, std::int64_t least);

// A date and time in the form in which they are stored.
std::string TimeProblem(const sql::Statement& row, int column);

// A SHA-256 as 64 lower-case hex digits.
std::string HashProblem(const sql::Statement& row, int column);

// Binary data.
std::string BlobProblem(const sql::Statement& row, int column);

// The value for people: NULL as an empty text, binary data in hex, cut when they are long.
std::string CellText(const sql::Statement& row, int column);

}  // namespace recorddb

#endif
