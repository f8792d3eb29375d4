#ifndef RECORDDB_VALUE_TEXT_H
#define RECORDDB_VALUE_TEXT_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "recorddb/export.h"

namespace recorddb {

// The whole number that a text holds, with an optional sign and blanks around it; nothing when it
// is not one or has more than 64 bits.
RECORDDB_API std::optional<std::int64_t> IntegerOf(std::string_view text);

// The date and time that a text holds, as the database stores it ('YYYY-MM-DD HH:MM:SS', UTC);
// nothing when it is not one. AdDateTime says what is accepted.
RECORDDB_API std::optional<std::string> DateTimeOf(std::string_view text);

}  // namespace recorddb

#endif
