#ifndef TOOL_LOAD_POLICY_UNFINISHED_SOURCES_H
#define TOOL_LOAD_POLICY_UNFINISHED_SOURCES_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "recorddb/journal.h"

namespace tool {

// The sources of which earlier loads have imported a part. One of them that comes again with
// another content must not be taken for a new one: its first records would be there twice.
class UnfinishedSources {
  public:
    struct Entry {
        recorddb::journal::JournalKey key;
        std::string name;           // of the source
        std::uint64_t handled = 0;  // records
    };

    // Reads `journal`, which outlives the object. Throws sql::Error.
    explicit UnfinishedSources(recorddb::journal::Journal& journal);

    // The loads that have imported a part of the source called `name` under the configuration of
    // `key`, when it had another content than that of `key`, and have not come to its end since.
    std::vector<Entry> WithOtherContent(const recorddb::journal::JournalKey& key,
                                        const std::string& name) const;

    // The loads through the map called `map` that have imported a part of a step, and have not come
    // to its end since; but for those of `keys`.
    std::vector<Entry> OfMapBeside(const std::string& map,
                                   const std::vector<recorddb::journal::JournalKey>& keys) const;

  private:
    std::optional<Entry> FindImported(const recorddb::journal::JournalKey& key) const;

    recorddb::journal::Journal& m_journal;
    std::vector<recorddb::journal::JournalKey> m_keys;
};

// What there is to do about a source that changed when a part of it had been imported, as a
// sentence. `handled` is the number of records of that part.
std::string AdviseOnChangedSource(std::uint64_t handled);

}  // namespace tool

#endif
