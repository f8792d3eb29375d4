#include "tool/map/map_reader.h"

#include <fmt/format.h>

#include <algorithm>
#include <set>
#include <vector>

#include "tool/io/byte_source.h"
#include "tool/map/source_reader.h"
#include "tool/map/step_reader.h"
#include "tool/map/table_reader.h"
#include "tool/map/value_reader.h"
#include "tool/map/yaml_tree.h"

namespace tool {

namespace {

// Far above what any map needs, so that a device or a wrong file does not fill the memory.
constexpr std::size_t kLargestFile = std::size_t{16} << 20U;

void ReadForbidden(const YamlFile& file, const YamlNode& node, MapFile& map) {
    const std::string& word = file.TextOf(node, "'forbidden_characters'");
    if (word != "keep" && word != "replace" && word != "reject") {
        file.Fail(
            node.Place(),
            fmt::format("'forbidden_characters' must be keep, replace or reject, not '{}'", word));
    }
    map.forbidden = word == "keep"      ? ForbiddenCharacters::Keep
                    : word == "replace" ? ForbiddenCharacters::Replace
                                        : ForbiddenCharacters::Reject;
}

void ReadSources(const YamlFile& file, const YamlNode& root, MapFile& map) {
    const YamlNode& sources =
        file.Require(root, "sources", "the map", "it says which files are read");
    file.RequireMap(sources, "'sources'");
    for (const YamlNode::Member& member : sources.Members()) {
        map.sources.push_back(ReadMapSource(file, member));
    }
}

void ReadSteps(const YamlFile& file, const YamlNode& root, MapTables& tables, MapFile& map) {
    const YamlNode& steps =
        file.Require(root, "steps", "the map", "it says which records are made");
    if (!steps.IsList() || steps.Items().empty()) {
        file.Fail(steps.Place(), "'steps' must be a list of at least one step");
    }
    std::set<std::size_t> used;
    for (const YamlNode& item : steps.Items()) {
        map.steps.push_back(ReadMapStep(file, item, map.sources, tables));
        used.insert(map.steps.back().source);
    }
    for (std::size_t source = 0; source < map.sources.size(); ++source) {
        if (!used.contains(source)) {
            file.Fail(map.sources[source].place,
                      fmt::format("no step reads the source '{}'; add a step, or take it out",
                                  map.sources[source].name));
        }
    }
}

}  // namespace

MapFile ReadMap(const std::string& text, const std::string& name) {
    const YamlFile file(name);
    const YamlNode root = ReadYamlTree(text, name);
    file.RequireMap(root, "the map");
    const YamlNode& version =
        file.Require(root, "map", "the file", "a map begins with its version, map: 1");
    if (file.TextOf(version, "'map'") != "1") {
        file.Fail(version.Place(),
                  fmt::format("this is version '{}' of the map format, and version "
                              "1 is what can be read",
                              version.Text()));
    }
    file.AllowOnly(root,
                   {"map", "forbidden_characters", "null_if", "zone", "tables", "sources", "steps"},
                   "the map");
    MapFile map;
    map.name = name;
    if (const YamlNode* const node = root.Find("forbidden_characters")) {
        ReadForbidden(file, *node, map);
    }
    if (const YamlNode* const node = root.Find("null_if")) {
        map.nullIf = ReadNullTexts(file, *node);
    }
    if (const YamlNode* const node = root.Find("zone")) {
        map.zone = ReadZone(file, *node);
    }
    MapTables tables(file);
    if (const YamlNode* const node = root.Find("tables")) {
        tables.Read(*node);
    }
    ReadSources(file, root, map);
    ReadSteps(file, root, tables, map);
    tables.RequireUse();
    return map;
}

MapFile ReadMapFile(const std::string& path) {
    FileBytes bytes(path, path);
    std::string text;
    std::vector<char> piece(kPieceSize);
    while (const std::size_t got = bytes.Read(piece.data(), piece.size())) {
        text.append(piece.data(), got);
        if (text.size() > kLargestFile) {
            throw SourceError(
                fmt::format("{}: the file is larger than 16 MiB, so it is no map", path));
        }
    }
    return ReadMap(text, path);
}

}  // namespace tool
