#ifndef TOOL_MAP_VALUE_READER_H
#define TOOL_MAP_VALUE_READER_H

#include "tool/map/address_reader.h"
#include "tool/map/map_file.h"
#include "tool/map/table_reader.h"
#include "tool/map/yaml_tree.h"

namespace tool {

// Reads the value of a field, called `what` in errors. Throws MapError.
MapValue ReadMapValue(const YamlFile& file, const YamlNode& node, const std::string& what,
                      const AddressUse& use, MapTables& tables);

// Reads the name of a time zone, or texts that mean "no value". Throw MapError.
std::string ReadZone(const YamlFile& file, const YamlNode& node);
std::vector<std::string> ReadNullTexts(const YamlFile& file, const YamlNode& node);

}  // namespace tool

#endif
