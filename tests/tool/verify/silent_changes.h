#ifndef TESTS_TOOL_SILENT_CHANGES_H
#define TESTS_TOOL_SILENT_CHANGES_H

#include <string_view>

namespace tool {

// A change of the loaded example tracker that nothing can contradict. An entry for a table and
// column holds where its query on the changed database finds a row. The query sees the unchanged
// database as the schema `original`, and {0} in it stands for the column's former value, as an SQL
// literal.
struct SilentChange {
    const char* table;
    const char* column;  // empty: a row as a whole is deleted or added
    const char* query;
    const char* reason;
};

// The entry for that table and column; null where every change has to be found.
const SilentChange* FindSilentChange(std::string_view table, std::string_view column);

}  // namespace tool

#endif
