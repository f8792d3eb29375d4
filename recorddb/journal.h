#ifndef RECORDDB_JOURNAL_H
#define RECORDDB_JOURNAL_H

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "recorddb/export.h"

namespace recorddb::sql {
class Connection;
}

namespace recorddb::journal {

// Identifies an entry of the journal: a source by its content, and the configuration that it was
// loaded under. Both are SHA-256 hashes as 64 lower-case hex digits.
struct JournalKey {
    std::string sourceSha256;
    std::string configurationSha256;
};

// How far a source has been loaded. The counters are those of all its loads together.
struct JournalEntry {
    std::string sourceName;        // for people; not part of the key
    std::int64_t nextOrdinal = 0;  // the records 0 .. nextOrdinal-1 have been handled, or wait
    bool complete = false;         // the source has no more records than those, and none waits
    std::int64_t created = 0;
    std::int64_t updated = 0;
    std::int64_t history = 0;
    std::int64_t attachments = 0;
    std::int64_t duplicates = 0;
    std::int64_t rejected = 0;
    std::int64_t skipped = 0;
    std::int64_t run = 0;  // the number of the load that writes it, or wrote it last

    bool operator==(const JournalEntry&) const = default;
};

// The journal of what has been loaded. It writes in the caller's transaction, the one that the
// records themselves are in, so that both are kept or lost together. Every operation throws
// sql::Error when the engine refuses.
class RECORDDB_API Journal {
  public:
    // The connection outlives the journal.
    explicit Journal(sql::Connection& connection);

    std::optional<JournalEntry> Find(const JournalKey& key);

    // The keys of the entries that are not complete.
    std::vector<JournalKey> Unfinished();

    // Begins another run of loads of a source: raises the number in the entry of the key, which is
    // made if there is none, and returns the entry. From then on no earlier run can Save, whatever
    // connection it still has.
    JournalEntry BeginRun(const JournalKey& key, const std::string& sourceName);

    // Writes the entry of a key in the place of the one that is there. Returns false, and writes
    // nothing, when the number of the run in it is not that of the latest run.
    [[nodiscard]] bool Save(const JournalKey& key, const JournalEntry& entry);

    // Removes the entry of a key with all that it marks, as if the source had never been loaded.
    void Forget(const JournalKey& key);
    void ForgetMarks(const JournalKey& key);

    // What is said of single records of a source.
    enum class Mark {
        Rejected,  // and not imported since
        Waiting    // handled so far only that it waits for other records
    };

    // Mark records by their ordinals, or take the mark off again. Adding a mark that is there and
    // removing one that is not change nothing.
    void Add(Mark mark, const JournalKey& key, std::span<const std::int64_t> ordinals);
    void Remove(Mark mark, const JournalKey& key, std::span<const std::int64_t> ordinals);

    // The ordinals of the records with a mark, ascending.
    std::vector<std::int64_t> Marked(Mark mark, const JournalKey& key);

  private:
    sql::Connection& m_connection;
};

}  // namespace recorddb::journal

#endif
