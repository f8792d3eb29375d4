#ifndef RECORDDB_STORE_HISTORY_TABLE_H
#define RECORDDB_STORE_HISTORY_TABLE_H

#include <cstdint>
#include <string_view>
#include <vector>

#include "recorddb/record.h"
#include "recorddb/sql.h"
#include "recorddb/store/history_expiry.h"

namespace recorddb {

// The table of history entries. Every operation throws sql::Error.
class HistoryTable {
  public:
    // The connection outlives the object.
    explicit HistoryTable(sql::Connection& connection) : m_connection(connection) {}

    void Insert(const HistoryEntry& entry, std::string_view field);

    // The times of a record's entries, in no particular order.
    std::vector<HistoryTimes> Times(std::int64_t recordType, std::int64_t record);

    void SetExpiry(std::int64_t recordType, std::int64_t record, const HistoryTimes& times);

    // The entries of a record by time, those of one time in the order of arrival.
    std::vector<HistoryEntry> Load(std::int64_t recordType, std::int64_t record);

  private:
    sql::Connection& m_connection;
    sql::Statement* m_insert = nullptr;
    sql::Statement* m_times = nullptr;
    sql::Statement* m_setExpiry = nullptr;
};

}  // namespace recorddb

#endif
