#ifndef RECORDDB_EDITING_VALUE_TEXT_H
#define RECORDDB_EDITING_VALUE_TEXT_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace recorddb {

// The whole number that a text is, with an optional sign and blanks around it; nothing when it is
// not one or has more than 64 bits.
std::optional<std::int64_t> IntegerOf(std::string_view text);

// True for a date and time that exists, in the form in which the database stores it.
bool IsStoredDateTime(std::string_view text);

// The date and time that a text is, as the database stores it ('YYYY-MM-DD HH:MM:SS', UTC);
// nothing when it is not one. AdDateTime says what is accepted.
std::optional<std::string> DateTimeOf(std::string_view text);

// The number of characters (Unicode code points) of a text in UTF-8.
std::int64_t CharacterCount(std::string_view utf8);

}  // namespace recorddb

#endif
