#ifndef RECORDDB_STORE_BATCH_TOUCHED_H
#define RECORDDB_STORE_BATCH_TOUCHED_H

#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <unordered_set>
#include <vector>

#include "recorddb/model/field_value.h"
#include "recorddb/schema.h"
#include "recorddb/store/batch/hash_filter.h"
#include "recorddb/store/batch/key_sets.h"
#include "recorddb/store/batch/pending_changes.h"
#include "recorddb/store/batch/record_buffer.h"

namespace recorddb {

// What work has read of the database: records, and searches for values. It is kept as hashes; two
// things with the same one are taken for the same, which costs work done again, and no more.
class ReadNotes {
  public:
    // Notes only what comes after it was switched on.
    void Switch(bool on);
    bool IsOn() const { return m_isOn; }

    void Record(const RecordKey& record);
    // `found`: the search led to a record that the database holds.
    void Search(const schema::RecordType& type, const FieldSet& fields,
                const std::vector<const FieldValue*>& values, bool found);
    // Something that cannot be noted.
    void Unclear() { m_isUnclear = true; }

  private:
    friend class RecentWrites;

    // One field and value of a search.
    struct Condition {
        std::uint64_t value;
        std::uint64_t field;
    };

    bool m_isOn = false;
    bool m_isUnclear = false;
    std::unordered_set<std::uint64_t> m_records;
    std::unordered_set<std::uint64_t> m_known;  // searches, each as one hash
    std::vector<std::vector<Condition>> m_searches;
};

// What the latest transactions of a session have written, for telling whether work that was done on
// an earlier state of the database would be the same now.
class RecentWrites {
  public:
    // Remembers so many transactions; 0, as at first: none.
    void Remember(std::size_t transactions);
    // From here on remembers all transactions, in memory that has a bound.
    void RememberAll();
    bool IsOn() const { return m_most > 0 || m_sum != nullptr; }

    // Note what the transaction under way writes. NoteAll: it may write anything.
    void Note(const schema::Schema& schema, const PendingChanges& changes);
    void Note(const schema::RecordType& type, std::int64_t dbid, const RecordBuffer& record);
    void NoteAll();
    // Others may have written something before the transaction under way.
    void NoteOthers();

    // The transaction has ended: with its writes in the database, or not.
    void Keep();
    void Drop();

    // A number for the state after the latest transaction. It rises with each that was kept.
    std::uint64_t Moment() const { return m_moment; }

    // Whether something that was read may have been written after that moment; where all is
    // remembered, whether it may have been written at all.
    bool HaveTouched(const ReadNotes& reads, std::uint64_t since) const;

  private:
    struct Writes {
        bool all = false;
        // Records; values of fields; fields that were changed in records that were there.
        std::unordered_set<std::uint64_t> hashes;
    };
    // The writes of all transactions.
    struct Sum {
        bool all = false;
        HashFilter hashes;
    };

    template <typename Has>
    static bool Touches(const ReadNotes& reads, Has has);
    void Add(Writes writes);

    std::size_t m_most = 0;
    std::uint64_t m_moment = 0;
    Writes m_current;
    std::deque<Writes> m_writes;  // the last one is that of the latest transaction
    std::unique_ptr<Sum> m_sum;   // instead of them, where all is remembered
};

}  // namespace recorddb

#endif
