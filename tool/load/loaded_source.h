#ifndef TOOL_LOAD_LOADED_SOURCE_H
#define TOOL_LOAD_LOADED_SOURCE_H

#include <cstdint>
#include <string>
#include <utility>

#include "tool/load/load_journal.h"
#include "tool/load/sinks/load_totals.h"
#include "tool/packet/import_configuration.h"
#include "tool/sources/source_walk.h"

namespace tool {

// A source of records during a load: the one that is being read, or an earlier one of which records
// still wait.
struct LoadedSource {
    LoadedSource(LoadJournal itsJournal, const SourceWalk& walk)
        : configuration(walk.Configuration()),
          configurationPacket(configuration.ToPacket()),
          isGuarded(walk.IsGuarded()),
          journal(std::move(itsJournal)) {}

    const ImportConfiguration configuration;  // that its records are imported under
    const std::string configurationPacket;
    const bool isGuarded;
    LoadJournal journal;
    std::uint64_t waiting = 0;      // of its records
    std::uint64_t keptWaiting = 0;  // at the end of the last group
    LoadTotals uncommitted;         // what was done since then
    bool isTouched = false;         // something was noted since then
};

}  // namespace tool

#endif
