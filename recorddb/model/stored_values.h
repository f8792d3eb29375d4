#ifndef RECORDDB_MODEL_STORED_VALUES_H
#define RECORDDB_MODEL_STORED_VALUES_H

#include <cstdint>
#include <string_view>

namespace recorddb {

// True for a date and time that exists, in the form in which the database stores it.
bool IsStoredDateTime(std::string_view text);

// The number of characters (Unicode code points) of a text in UTF-8.
std::int64_t CharacterCount(std::string_view utf8);

}  // namespace recorddb

#endif
