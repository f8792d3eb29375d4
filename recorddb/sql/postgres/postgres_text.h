#ifndef RECORDDB_SQL_POSTGRES_POSTGRES_TEXT_H
#define RECORDDB_SQL_POSTGRES_POSTGRES_TEXT_H

#include <string_view>

#include "recorddb/errors.h"

namespace recorddb::sql {

// Throws Error for a text that a server cannot hold.
inline void CheckStorable(std::string_view text) {
    constexpr std::size_t most = (std::size_t{1} << 30U) - 1;
    if (text.find('\0') != std::string_view::npos) {
        throw Error(ErrorKind::Other, "the text holds a NUL character, which no server can store",
                    "");
    }
    if (text.size() > most) {
        throw Error(ErrorKind::Other, "the text is larger than a server can store", "");
    }
}

}  // namespace recorddb::sql

#endif
