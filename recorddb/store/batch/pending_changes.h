#ifndef RECORDDB_STORE_BATCH_PENDING_CHANGES_H
#define RECORDDB_STORE_BATCH_PENDING_CHANGES_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "recorddb/model/field_value.h"
#include "recorddb/record.h"
#include "recorddb/store/batch/history_expiry.h"

namespace recorddb {

// A record that is changed. What it was before, wherever that stands, is "beneath".
struct PendingRecord {
    std::int64_t dbid = 0;
    std::int64_t baseVersion = 0;  // that it has beneath; 0: it is not there
    std::int64_t version = 0;
    // By field: all values of a new record, and all columns of a changed one of which any column or
    // list was changed; otherwise empty.
    std::vector<FieldValue> values;
    std::vector<bool> changed;  // by field: the columns that differ from beneath; may say too much
    // The fields of reference lists that were changed, with the list beneath.
    std::vector<std::pair<std::size_t, FieldValue>> lists;
    // Of new records: those of a lower wave are written before, since this one may refer to them.
    int wave = 0;

    bool IsNew() const { return baseVersion == 0; }
    bool HasList(std::size_t field) const;
    // The list beneath; no value when it is empty or has not changed.
    const FieldValue& ListBeneath(std::size_t field) const;
};

// The changed records of one type, in the order in which they were first changed.
class PendingRecords {
  public:
    const std::vector<PendingRecord>& All() const { return m_records; }
    const PendingRecord* Find(std::int64_t dbid) const;

    // Adds the change of a record; one that was changed before is merged with it.
    void Add(PendingRecord change);

    // Whether there are changes, of records that are there beneath, to that column.
    bool ChangesColumn(std::size_t field) const {
        return field < m_changed.size() && m_changed[field];
    }
    bool HasNew() const { return m_highestNew != 0; }
    // The highest dbid of a new record; 0 when there is none.
    std::int64_t HighestNew() const { return m_highestNew; }

    // New records by their keys: the texts that KeyText makes.
    // Lets each be changed, its dbid too. Keys are forgotten.
    template <typename Change>
    void ChangeEach(Change change) {
        m_positions.clear();
        m_keys.clear();
        m_highestNew = 0;
        for (PendingRecord& record : m_records) {
            change(record);
            m_highestNew = record.IsNew() ? std::max(m_highestNew, record.dbid) : m_highestNew;
            m_positions.emplace(record.dbid, m_positions.size());
        }
    }

    void AddKey(std::string key, std::int64_t dbid) { m_keys.emplace(std::move(key), dbid); }
    std::int64_t FindKey(const std::string& key) const;

    void MoveInto(PendingRecords& beneath);
    void Clear();

  private:
    void NoteColumns(const std::vector<bool>& changed);

    std::vector<PendingRecord> m_records;
    std::unordered_map<std::int64_t, std::size_t> m_positions;
    std::unordered_map<std::string, std::int64_t> m_keys;
    std::vector<bool> m_changed;
    std::int64_t m_highestNew = 0;
};

// A text that stands for values of a set of fields, by its number. Nothing when one of them is no
// value, which equals none.
std::optional<std::string> KeyText(std::size_t set, const std::vector<const FieldValue*>& values);

// What is changed of a record's history.
struct PendingHistory {
    std::vector<HistoryTimes> times;  // of all entries as they are now
    std::vector<HistoryEntry> added;
    std::string_view field;                      // of the added ones
    std::map<std::int64_t, std::string> expiry;  // new expiry times of entries beneath
};

// That a record is a duplicate.
struct PendingLink {
    std::int64_t original = 0;
    std::string time;
};

// A type, or a table of the database's own, with a record of it.
using RecordKey = std::pair<std::int64_t, std::int64_t>;

// Changes of records that have not been written: one layer of a batch.
struct PendingChanges {
    explicit PendingChanges(std::size_t typeCount) : records(typeCount) {}

    std::vector<PendingRecords> records;  // by type
    std::map<RecordKey, PendingHistory> histories;
    std::map<RecordKey, PendingLink> links;  // by the duplicate
    std::size_t count = 0;                   // changes that were added

    bool IsEmpty() const { return count == 0; }
    PendingRecords& Of(std::int64_t type) { return records[static_cast<std::size_t>(type - 1)]; }
    const PendingRecords& Of(std::int64_t type) const {
        return records[static_cast<std::size_t>(type - 1)];
    }

    // Merges these changes into those beneath, which were made before, and leaves none here.
    void MoveInto(PendingChanges& beneath);
    void Clear();
};

}  // namespace recorddb

#endif
