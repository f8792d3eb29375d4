#ifndef RECORDDB_INTEGRITY_CHECK_CONTEXT_H
#define RECORDDB_INTEGRITY_CHECK_CONTEXT_H

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "recorddb/integrity.h"
#include "recorddb/schema.h"
#include "recorddb/sql.h"
#include "recorddb/store/batch/question_round.h"
#include "recorddb/store/key_table.h"
#include "recorddb/store/record_tables.h"

namespace recorddb {

// What the scans of a check share. Operations throw sql::Error.
class CheckContext {
  public:
    // Asked at every row, with the number of records checked so far; false ends the check early.
    using KeepOn = std::function<bool(std::uint64_t)>;

    // Batch and schema outlive the object.
    CheckContext(WriteBatch& batch, const schema::Schema& schema, TakeFault take, KeepOn keepOn)
        : m_connection(batch.GetConnection()),
          m_layout(batch.GetLayout()),
          m_schema(schema),
          m_tables(batch, schema),
          m_keys(batch, schema),
          m_existing(schema.Types().size()),
          m_take(std::move(take)),
          m_keepOn(std::move(keepOn)) {}

    const schema::Schema& Schema() const { return m_schema; }
    Layout GetLayout() const { return m_layout; }

    // A statement of the caller's own, since a scan looks up other rows while it reads.
    std::unique_ptr<sql::Statement> Query(std::string_view sql) {
        return m_connection.PrepareOwn(sql);
    }

    // A statement that reads a table, whatever its size.
    std::unique_ptr<sql::Statement> Scan(std::string_view sql) {
        return m_connection.PrepareScan(sql);
    }

    // Questions that are asked together.
    QuestionRound Questions() { return QuestionRound(m_connection); }

    // Advances to the next row; false after the last one and when the check is to end.
    bool NextRow(sql::Statement& rows) {
        m_stopped = m_stopped || !m_keepOn(m_records);
        return !m_stopped && rows.Step();
    }

    // True when the check is to end: then what has not been read must not be reported as missing.
    bool Stopped() const { return m_stopped; }

    // To be called for each record that has been read.
    void AddRecord(const schema::RecordType& type, std::int64_t dbid) {
        ++m_records;
        NoteExisting(type, dbid);
    }
    std::uint64_t Records() const { return m_records; }

    // The record type with that number; null when there is none.
    const schema::RecordType* FindType(std::int64_t id) const;

    bool Exists(const schema::RecordType& type, std::int64_t dbid);

    // What people call a record: its key, "(dbid 7)" where it has none.
    std::string NameOf(const schema::RecordType& type, std::int64_t dbid);

    void Report(const Fault& fault) { m_take(fault); }
    void ReportRecord(const schema::RecordType& type, std::int64_t dbid, std::string field,
                      std::string value, std::string problem);

    // Reports the problem of a column of the current row, unless it is empty; returns whether it
    // did.
    bool ReportCell(const schema::RecordType& type, std::int64_t dbid, std::string_view field,
                    const sql::Statement& row, int column, std::string problem);

  private:
    void NoteExisting(const schema::RecordType& type, std::int64_t dbid);
    std::vector<bool>& ExistingOf(const schema::RecordType& type) {
        return m_existing[static_cast<std::size_t>(type.id - 1)];
    }

    sql::Connection& m_connection;
    Layout m_layout;
    const schema::Schema& m_schema;
    RecordTables m_tables;
    KeyTable m_keys;
    // By type: the dbids, up to a bound, of which is known that there is a record.
    std::vector<std::vector<bool>> m_existing;
    TakeFault m_take;
    KeepOn m_keepOn;
    std::uint64_t m_records = 0;
    bool m_stopped = false;
};

}  // namespace recorddb

#endif
