#include "tool/map/table_reader.h"

#include <fmt/format.h>

namespace tool {

void MapTables::Read(const YamlNode& node) {
    m_file.RequireMap(node, "'tables'");
    for (const YamlNode::Member& member : node.Members()) {
        m_tables[member.key].table = ReadEntries(member.value, member.key);
    }
}

std::shared_ptr<const MapTable> MapTables::ReadEntries(const YamlNode& node,
                                                       const std::string& name) const {
    const std::string what = name.empty() ? "'table'" : fmt::format("table '{}'", name);
    m_file.RequireMap(node, what);
    auto table = std::make_shared<MapTable>();
    table->name = name;
    table->place = node.Place();
    for (const YamlNode::Member& member : node.Members()) {
        table->entries[member.key] = m_file.TextOf(
            member.value, fmt::format("the new value of '{}' in {}", member.key, what));
    }
    return table;
}

std::shared_ptr<const MapTable> MapTables::Use(const YamlNode& node) {
    if (node.IsMap()) {
        return ReadEntries(node, "");
    }
    const std::string& name = m_file.TextOf(node, "'table'");
    const auto found = m_tables.find(name);
    if (found == m_tables.end()) {
        m_file.Fail(node.Place(), fmt::format("there is no table '{}' in 'tables'", name));
    }
    found->second.used = true;
    return found->second.table;
}

void MapTables::RequireUse() const {
    for (const auto& [name, named] : m_tables) {
        if (!named.used) {
            m_file.Fail(named.table->place,
                        fmt::format("no step uses the table '{}'; name it where it belongs, or "
                                    "take it out",
                                    name));
        }
    }
}

}  // namespace tool
