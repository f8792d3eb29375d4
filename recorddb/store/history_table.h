#ifndef RECORDDB_STORE_HISTORY_TABLE_H
#define RECORDDB_STORE_HISTORY_TABLE_H

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "recorddb/record.h"
#include "recorddb/sql.h"
#include "recorddb/store/batch/history_expiry.h"
#include "recorddb/store/batch/pending_changes.h"
#include "recorddb/store/batch/write_batch.h"

namespace recorddb {

// The table of history entries. Every operation throws sql::Error.
class HistoryTable {
  public:
    // The batch outlives the object.
    explicit HistoryTable(WriteBatch& batch)
        : m_batch(batch), m_connection(batch.GetConnection()) {}

    // Adds entries of one record, which are numbered, to its history field, and changes the expiry
    // times of those that it had: the times of all its entries were `before` and become `after`.
    void Save(const RecordKey& record, std::string_view field, std::span<const HistoryEntry> added,
              const std::vector<HistoryTimes>& before, std::vector<HistoryTimes> after);

    // The times of a record's entries, in no particular order.
    std::vector<HistoryTimes> Times(std::int64_t recordType, std::int64_t record);

    // The entries of a record by time, those of one time in the order of arrival.
    std::vector<HistoryEntry> Load(std::int64_t recordType, std::int64_t record);

  private:
    void Insert(const HistoryEntry& entry, std::string_view field);
    void SetExpiry(const RecordKey& record, const HistoryTimes& times);

    WriteBatch& m_batch;
    sql::Connection& m_connection;
    sql::Statement* m_insert = nullptr;
    sql::Statement* m_times = nullptr;
    sql::Statement* m_setExpiry = nullptr;
};

}  // namespace recorddb

#endif
