#include "recorddb/store/tables/next_number.h"

#include <fmt/format.h>

#include <limits>

#include "recorddb/errors.h"

namespace recorddb {

std::int64_t NextNumber(std::int64_t last, std::string_view column, std::int64_t count) {
    if (last > std::numeric_limits<std::int64_t>::max() - count) {
        throw sql::Error(
            sql::ErrorKind::Corrupt,
            fmt::format("{} holds the number {}, after which there are not enough", column, last),
            "");
    }
    return last + 1;
}

}  // namespace recorddb
