#ifndef TOOL_COMMANDS_COMMAND_SOURCES_H
#define TOOL_COMMANDS_COMMAND_SOURCES_H

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "recorddb/database.h"
#include "tool/map/map_file.h"
#include "tool/packet/record_limits.h"
#include "tool/sources/kind/kept_rows.h"
#include "tool/sources/kind/map_findings.h"
#include "tool/sources/mapped/map_inputs.h"
#include "tool/sources/source_list.h"

namespace tool {

// A file that a command reads.
struct InputFile {
    std::filesystem::path path;
    std::string what;  // for messages: "the map bugs.yaml"
};

// The sources that a command line names: packets, or other files with a map.
class CommandSources {
  public:
    // Finds the files; `map` is empty for packets. Throws SourceError and MapError.
    CommandSources(const std::vector<std::string>& arguments, const std::string& map);

    // What is read, to be kept from being written over.
    std::vector<InputFile> Files() const;

    // Makes records of the rows of mapped files; nothing is left to do for packets. False when the
    // process was interrupted. `findsFast`: an index may be made in the database where it has none;
    // `keepsRows`: the texts of the rows are to be kept.
    // Throws SourceError, MapError when the map does not fit the database, std::runtime_error when
    // a temporary file fails.
    bool Open(recorddb::Database& database, const RecordLimits& limits, bool findsFast,
              bool keepsRows = false);

    // After Open: the sources in the order of loading, and what a map has found.
    const SourceList& List() const { return *m_list; }
    const MapFindings& Findings() const { return m_findings; }
    const std::shared_ptr<KeptRows>& Rows() const { return m_rows; }
    // The names of the map's sources.
    std::vector<std::string> SourceNames() const;
    // The map's name; empty without one.
    const std::string& MapName() const { return m_mapName; }

  private:
    std::string m_mapName;
    std::optional<MapFile> m_map;
    MapInputs m_inputs;
    std::optional<SourceList> m_list;
    MapFindings m_findings;
    std::shared_ptr<KeptRows> m_rows;
};

}  // namespace tool

#endif
