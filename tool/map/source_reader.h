#ifndef TOOL_MAP_SOURCE_READER_H
#define TOOL_MAP_SOURCE_READER_H

#include "tool/map/map_file.h"
#include "tool/map/yaml_tree.h"

namespace tool {

// Reads an entry of a map's `sources`. Throws MapError.
MapSource ReadMapSource(const YamlFile& file, const YamlNode::Member& member);

}  // namespace tool

#endif
