#ifndef TOOL_SOURCES_ROWS_ROW_H
#define TOOL_SOURCES_ROWS_ROW_H

#include <cstdint>
#include <string>
#include <string_view>

#include "tool/sources/rows/row_tree.h"

namespace tool {

// A row of a CSV file, a line of JSON Lines, an element of a JSON array, or a JSON document.
struct Row {
    RowTree tree;              // empty when the row has an error
    std::uint64_t number = 0;  // in its file, from 1; a header does not count
    std::uint64_t line = 0;    // of its first byte, from 1
    // As it stands in its file, without the line end, as UTF-8 with U+FFFD for what is no text. As
    // much of it as was read where it has an error; empty where it is too long. Valid until the
    // next row is read.
    std::string_view raw;
    std::string error;  // why it cannot be used, for people; empty: it can
    // It is not known where the row ends, so nothing behind it has been read. Only with an error.
    bool isLast = false;
    std::uint64_t nuls = 0;  // NUL characters, which became U+FFFD
    // Members of JSON objects that were named again, and dropped; the name of one of them.
    std::uint64_t repeated = 0;
    std::string repeatedName;
};

}  // namespace tool

#endif
