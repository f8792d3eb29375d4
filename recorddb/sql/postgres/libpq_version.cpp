#include "recorddb/sql/postgres/libpq_version.h"

#include <fmt/format.h>
#include <libpq-fe.h>

namespace recorddb::sql {

std::string LibpqVersion() {
    // 150004 is 15.4.
    constexpr int major = 10'000;
    return fmt::format("{}.{}", PQlibVersion() / major, PQlibVersion() % major);
}

}  // namespace recorddb::sql
