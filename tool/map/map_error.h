#ifndef TOOL_MAP_MAP_ERROR_H
#define TOOL_MAP_MAP_ERROR_H

#include <string>

#include "tool/io/source_error.h"

namespace tool {

// A place in a map file; both from 1.
struct MapPlace {
    int line = 0;
    int column = 0;
};

// A map that cannot be used. what() begins with file, line and column.
class MapError : public SourceError {
  public:
    MapError(const std::string& file, MapPlace place, const std::string& text);
};

}  // namespace tool

#endif
