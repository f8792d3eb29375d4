#ifndef RECORDDB_STORE_RECORD_TABLE_H
#define RECORDDB_STORE_RECORD_TABLE_H

#include <cstdint>
#include <optional>
#include <unordered_map>
#include <vector>

#include "recorddb/schema.h"
#include "recorddb/sql.h"
#include "recorddb/store/batch/key_sets.h"
#include "recorddb/store/batch/record_buffer.h"
#include "recorddb/store/batch/write_batch.h"

namespace recorddb {

// The rows of a record type's table. Reading takes what the batch has gathered into account;
// writing goes to the database at once. Its statements are prepared when they are first needed and
// kept. Every operation throws sql::Error.
class RecordTable {
  public:
    // Batch and type outlive the object.
    RecordTable(WriteBatch& batch, const schema::RecordType& type);

    // Inserts a record, which then has version 1.
    void Insert(std::int64_t dbid, const RecordBuffer& record);

    // Removes a record that was just inserted, and with it its reference lists, where the engine
    // keeps all that is known of its keys in the table itself.
    void Remove(std::int64_t dbid);

    // Writes the changed columns of a record and adds one to its version, provided that it still
    // has the version given; else returns false.
    bool Update(std::int64_t dbid, std::int64_t version, const RecordBuffer& record);

    // The version of a record; nothing when there is no such record.
    std::optional<std::int64_t> Version(std::int64_t dbid);

    // Reads the columns of a record into the buffer as what the database holds; returns its
    // version, or nothing when there is no such record.
    std::optional<std::int64_t> Load(std::int64_t dbid, RecordBuffer& record);

    // The lowest dbid above the one given; nothing when there is none.
    std::optional<std::int64_t> NextAfter(std::int64_t dbid);

    const std::vector<FieldSet>& UniqueSets() const { return m_uniqueSets; }

    // The dbid of a record other than the one given (0: of any) that has the values of `record` in
    // all fields of UniqueSets()[set]; nothing when there is none.
    std::optional<std::int64_t> FindTwin(std::size_t set, const RecordBuffer& record,
                                         std::int64_t dbid);

  private:
    std::optional<std::int64_t> NextOfPage(std::int64_t dbid);
    sql::Statement& TwinStatement(std::size_t set);
    sql::Statement& UpdateStatement(const std::vector<bool>& changed);
    std::string ColumnList() const;

    WriteBatch& m_batch;
    sql::Connection& m_connection;
    const schema::RecordType& m_type;
    std::vector<std::size_t> m_columns;  // the fields with a column, without the dbid
    std::vector<FieldSet> m_uniqueSets;
    std::vector<sql::Statement*> m_twins;  // by set
    sql::Statement* m_insert = nullptr;
    sql::Statement* m_version = nullptr;
    sql::Statement* m_load = nullptr;
    sql::Statement* m_next = nullptr;
    // The dbids that come next, of a type of which all machines have to be asked; good as long as
    // nothing has changed.
    struct Page {
        std::uint64_t transactionCount = 0;
        std::uint64_t undoCount = 0;
        std::uint64_t changeCount = 0;
        std::int64_t after = 0;
        std::vector<std::int64_t> dbids;  // ascending
        bool isLast = false;
    };
    Page m_page;
    // By the set of columns that they write.
    std::unordered_map<std::vector<bool>, sql::Statement*> m_updates;
};

}  // namespace recorddb

#endif
