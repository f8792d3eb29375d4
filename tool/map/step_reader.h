#ifndef TOOL_MAP_STEP_READER_H
#define TOOL_MAP_STEP_READER_H

#include <vector>

#include "tool/map/map_file.h"
#include "tool/map/table_reader.h"
#include "tool/map/yaml_tree.h"

namespace tool {

// Reads an item of a map's `steps`, which reads one of `sources`. Throws MapError.
MapStep ReadMapStep(const YamlFile& file, const YamlNode& node,
                    const std::vector<MapSource>& sources, MapTables& tables);

}  // namespace tool

#endif
