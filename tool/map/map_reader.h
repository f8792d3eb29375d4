#ifndef TOOL_MAP_MAP_READER_H
#define TOOL_MAP_MAP_READER_H

#include <string>

#include "tool/map/map_file.h"

namespace tool {

// Reads a map from `text`, the content of the file called `name`. Throws MapError that says where
// it is wrong.
MapFile ReadMap(const std::string& text, const std::string& name);

// Reads the map file at `path`. Throws SourceError when it cannot be read, MapError.
MapFile ReadMapFile(const std::string& path);

}  // namespace tool

#endif
