#ifndef RECORDDB_STORE_TABLES_NEXT_NUMBER_H
#define RECORDDB_STORE_TABLES_NEXT_NUMBER_H

#include <cstdint>
#include <string_view>

namespace recorddb {

// The number that follows `last` in a column that counts upwards, as the first of `count` numbers.
// Another program may have stored any number there: throws sql::Error, which names the column, when
// no number is left.
std::int64_t NextNumber(std::int64_t last, std::string_view column, std::int64_t count = 1);

}  // namespace recorddb

#endif
