#include "tool/commands/command_sources.h"

#include <memory>

#include "recorddb/reader.h"
#include "tool/map/map_check.h"
#include "tool/map/map_reader.h"
#include "tool/sources/mapped/map_run.h"

namespace tool {

CommandSources::CommandSources(const std::vector<std::string>& arguments, const std::string& map)
    : m_mapName(map) {
    if (map.empty()) {
        m_list.emplace(arguments);
        return;
    }
    m_map = ReadMapFile(map);
    m_inputs = FindMapInputs(*m_map, arguments);
}

std::vector<InputFile> CommandSources::Files() const {
    std::vector<InputFile> files;
    if (!m_map) {
        for (const Source& source : m_list->Sources()) {
            files.push_back({source.path, "the packet file " + source.name});
        }
        return files;
    }
    files.push_back({m_mapName, "the map " + m_mapName});
    for (const MapInput& input : m_inputs.inputs) {
        files.push_back(
            {input.path == "-" ? "/dev/stdin" : input.path, "the source " + input.name});
    }
    return files;
}

std::vector<std::string> CommandSources::SourceNames() const {
    std::vector<std::string> names;
    for (const MapSource& source : m_map->sources) {
        names.push_back(source.name);
    }
    return names;
}

bool CommandSources::Open(recorddb::Database& database, const RecordLimits& limits, bool findsFast,
                          bool keepsRows) {
    if (!m_map) {
        return true;
    }
    CheckMap(*m_map, database.GetSchema());
    recorddb::RecordReader reader(database);
    MapRun::Options options;
    options.keepsRows = keepsRows;
    options.limits = {.size = limits.size, .depth = limits.depth};
    options.exists = [&](const recorddb::schema::RecordType& type,
                         const recorddb::schema::Field& field, const std::string& value) {
        if (findsFast) {
            database.EnsureSearchIndex(type, field);
        }
        return !reader.FindByValue(type, field, value, 1).empty();
    };
    MapRun run(*m_map, database.GetSchema(), m_inputs, std::move(options));
    if (!run.Run()) {
        return false;
    }
    m_list.emplace(run.Sources());
    m_findings = run.Findings();
    m_rows = run.Rows();
    return true;
}

}  // namespace tool
