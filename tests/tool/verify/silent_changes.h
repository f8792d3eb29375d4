#ifndef TESTS_TOOL_SILENT_CHANGES_H
#define TESTS_TOOL_SILENT_CHANGES_H

#include <string_view>

namespace tool {

// A change of the loaded example tracker that nothing can contradict. What is said here of a table
// and column holds where the query on the changed database finds a row; the unchanged one is its
// schema `original`, and {0} stands for the column's former value, as an SQL literal.
struct SilentChange {
    const char* table;
    const char* column;  // empty: a row as a whole is deleted or added
    const char* query;
    const char* reason;
};

// What is said of that table and column; null where every change is to be found.
const SilentChange* FindSilentChange(std::string_view table, std::string_view column);

}  // namespace tool

#endif
