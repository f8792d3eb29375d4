#include "recorddb/sql.h"

namespace recorddb::sql {

std::string Quoted(std::string_view name) {
    std::string quoted = "\"";
    for (const char character : name) {
        quoted.append(character == '"' ? 2 : 1, character);
    }
    quoted += '"';
    return quoted;
}

}  // namespace recorddb::sql
