#ifndef TOOL_MAP_TABLE_READER_H
#define TOOL_MAP_TABLE_READER_H

#include <map>
#include <memory>
#include <string>

#include "tool/map/map_file.h"
#include "tool/map/yaml_tree.h"

namespace tool {

// The value tables of a map that have a name, and whether they are used.
class MapTables {
  public:
    explicit MapTables(const YamlFile& file) : m_file(file) {}

    // Reads the map's `tables`. Throws MapError.
    void Read(const YamlNode& node);

    // The table that a value names, or that stands in it. Throws MapError.
    std::shared_ptr<const MapTable> Use(const YamlNode& node);

    // Throws MapError when a table is used nowhere.
    void RequireUse() const;

  private:
    struct Named {
        std::shared_ptr<const MapTable> table;
        bool used = false;
    };

    std::shared_ptr<const MapTable> ReadEntries(const YamlNode& node,
                                                const std::string& name) const;

    const YamlFile& m_file;
    std::map<std::string, Named> m_tables;
};

}  // namespace tool

#endif
