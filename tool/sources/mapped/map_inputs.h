#ifndef TOOL_SOURCES_MAPPED_MAP_INPUTS_H
#define TOOL_SOURCES_MAPPED_MAP_INPUTS_H

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

#include "tool/map/map_file.h"

namespace tool {

// A file that a source of a map reads.
struct MapInput {
    std::size_t source = 0;      // by position in the map
    std::filesystem::path path;  // "-" for standard input
    std::string name;            // what people call it
};

// The files that a map reads, and those that it does not.
struct MapInputs {
    std::vector<MapInput> inputs;     // by source, then in the bytewise order of their names
    std::vector<std::string> unread;  // files of SOURCE folders that no source reads
    // What stands in these folders besides files: pipes, devices, sockets, links to folders and to
    // nothing. None of them is read.
    std::vector<std::string> unreadable;
};

// Finds the files that the patterns of a map name in `arguments`, the SOURCEs of the command line:
// a folder is searched, a file must be named by a pattern (by its last part, or more of it), "-" is
// standard input for a map with a single source. Hidden files are left out. Throws SourceError when
// a pattern names no file, or a file is named by two sources or by none.
MapInputs FindMapInputs(const MapFile& map, const std::vector<std::string>& arguments);

// Whether a path with "/" between its parts fits a pattern.
bool FitsPattern(const std::string& path, const std::string& pattern);

}  // namespace tool

#endif
