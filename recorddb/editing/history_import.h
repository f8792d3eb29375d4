#ifndef RECORDDB_EDITING_HISTORY_IMPORT_H
#define RECORDDB_EDITING_HISTORY_IMPORT_H

#include <cstddef>
#include <cstdint>
#include <vector>

#include "platform/core/adhistory.h"
#include "platform/foundation/obx_string.h"
#include "platform/messages/pamessage.h"
#include "recorddb/record.h"
#include "recorddb/schema.h"
#include "recorddb/sql.h"
#include "recorddb/store/batch/write_batch.h"
#include "recorddb/store/history_table.h"
#include "recorddb/store/record_tables.h"

namespace recorddb {

// Imports history entries: Add checks them and keeps them in memory, Commit writes them. Operations
// throw sql::Error.
class HistoryImport {
  public:
    // What is given outlives the object.
    HistoryImport(WriteBatch& batch, const schema::Schema& schema, RecordTables& tables,
                  HistoryTable& table)
        : m_batch(batch),
          m_connection(batch.GetConnection()),
          m_schema(schema),
          m_tables(tables),
          m_table(table) {}

    // Takes an entry; `number` counts the entries of the call from 1. Returns a message with id 0,
    // or the one that refuses the entry.
    PaMessage Add(const AdHistory& given, long number);

    // Writes what was added, with expiry times for it and for what the records had before. Returns
    // the number of entries written.
    std::int64_t Commit();

    // The number of entries that wait for Commit, and dropping all but the first `keep` of them.
    std::size_t PendingCount() const { return m_pendingCount; }
    void DropPending(std::size_t keep) noexcept;

    // Brings the expiry times of a record up to date.
    void UpdateExpiry(const schema::RecordType& type, std::int64_t record);

  private:
    // A record whose expiry times are known to be up to date, and in which state of the
    // connection and the batch.
    struct UpToDate {
        std::int64_t recordType = 0;
        std::int64_t record = 0;
        std::uint64_t transactionCount = 0;
        std::uint64_t undoCount = 0;
        bool operator==(const UpToDate&) const = default;
    };

    PaMessage CheckType(const AdHistory& given, long number) const;
    PaMessage CheckRecord(const AdHistory& given, long number);
    void WriteRecord(std::size_t first, std::size_t end);
    UpToDate Now(std::int64_t recordType, std::int64_t record) const;

    WriteBatch& m_batch;
    sql::Connection& m_connection;
    const schema::Schema& m_schema;
    RecordTables& m_tables;
    HistoryTable& m_table;
    // The first m_pendingCount wait for Commit; the rest is kept to reuse the memory of its texts.
    std::vector<HistoryEntry> m_pending;
    std::size_t m_pendingCount = 0;
    UpToDate m_upToDate;
};

}  // namespace recorddb

#endif
