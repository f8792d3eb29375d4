#ifndef TOOL_SOURCES_KIND_KEPT_ROWS_H
#define TOOL_SOURCES_KIND_KEPT_ROWS_H

#include <cstddef>
#include <string>
#include <vector>

#include "tool/io/text_store.h"

namespace tool {

// The texts of the rows that records were made of, where they are wanted.
struct KeptRows {
    struct File {
        std::size_t source = 0;  // by position among the sources of the map
        std::string header;      // the line that names its columns; empty without one
        // The map gives the file another encoding than UTF-8, in which its rows are kept: a file
        // that is made of them needs a byte order mark.
        bool needsMark = false;
        bool isJson = false;  // so line breaks between its values mean nothing
    };

    TextStore texts;
    std::vector<std::string> sources;  // their names
    std::vector<File> files;           // by number
};

}  // namespace tool

#endif
