#ifndef TOOL_MAP_FILE_ENDING_H
#define TOOL_MAP_FILE_ENDING_H

#include <string_view>

#include "tool/map/map_file.h"

namespace tool {

// What the ending of a file's name says of its content.
struct FileEnding {
    std::string_view text;
    MapFormat format;
    char separator;  // of CSV
};

// The ending of `name`, or of a pattern; null when it tells nothing.
const FileEnding* EndingOf(std::string_view name);

}  // namespace tool

#endif
