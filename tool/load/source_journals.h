#ifndef TOOL_LOAD_SOURCE_JOURNALS_H
#define TOOL_LOAD_SOURCE_JOURNALS_H

#include <set>
#include <string>
#include <vector>

#include "recorddb/database.h"
#include "tool/load/load_journal.h"
#include "tool/load/policy/load_options.h"
#include "tool/load/policy/unfinished_sources.h"
#include "tool/load/records/record_group.h"
#include "tool/load/sinks/load_sinks.h"
#include "tool/sources/source_walk.h"

namespace tool {

// Finds out what earlier loads have done of each source, and says so.
class SourceJournals {
  public:
    // All of them outlive the object. Throws sql::Error.
    SourceJournals(recorddb::Database& database, const LoadOptions& options, LoadSinks& sinks)
        : m_database(database),
          m_options(options),
          m_sinks(sinks),
          m_unfinished(database.GetJournal()) {}

    // Takes note of the sources of a load that are made through a map. To be called before the
    // first of them is opened.
    void ExpectMade(const SourceList& sources);

    // The journal of the source of records that `walk` stands in, which is taken up with `group`
    // unless nothing of it is left to do. Throws SourceChanged when an earlier load has imported a
    // part of it as it was before a change; sql::Error, after which it may be tried again.
    LoadJournal Open(const SourceWalk& walk, RecordGroup& group);

    // Says what earlier loads have done of a source.
    void Tell(const std::string& source, const LoadJournal& journal);

  private:
    void RequireSameContent(const SourceWalk& walk, LoadJournal& journal,
                            const recorddb::journal::JournalKey& key) const;
    void RequireSameMap(const std::string& step, LoadJournal& journal) const;
    void TellOfHandled(const std::string& source, const LoadJournal& journal);
    void TellOfRejected(const std::string& source, const LoadJournal& journal);

    recorddb::Database& m_database;
    const LoadOptions& m_options;
    LoadSinks& m_sinks;
    UnfinishedSources m_unfinished;
    std::vector<recorddb::journal::JournalKey> m_madeKeys;  // of all steps of the map
    std::set<std::string> m_madeNames;
};

}  // namespace tool

#endif
