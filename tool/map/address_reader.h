#ifndef TOOL_MAP_ADDRESS_READER_H
#define TOOL_MAP_ADDRESS_READER_H

#include <string>
#include <vector>

#include "tool/map/map_file.h"
#include "tool/map/yaml_tree.h"

namespace tool {

// Where in a step, or in a source, an address stands.
struct AddressUse {
    MapFormat format = MapFormat::Csv;
    bool hasItem = false;  // a step with `each`
};

// An address as a text: a column's name, or the way to a JSON value. Throws MapError when it cannot
// be one.
MapAddress ReadAddress(const YamlFile& file, const std::string& text, MapPlace place,
                       const AddressUse& use);

// The same as a text or as {column: NUMBER}, or as a list of those.
MapAddress ReadAddress(const YamlFile& file, const YamlNode& node, const AddressUse& use);
std::vector<MapAddress> ReadAddresses(const YamlFile& file, const YamlNode& node,
                                      const AddressUse& use);

// The steps of a way to a JSON value, without a "/" in front.
std::vector<std::string> ReadPath(const YamlFile& file, const std::string& text, MapPlace place);

}  // namespace tool

#endif
