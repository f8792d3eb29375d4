#ifndef RECORDDB_READER_H
#define RECORDDB_READER_H

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "recorddb/expected_search.h"
#include "recorddb/export.h"
#include "recorddb/keys.h"
#include "recorddb/record.h"

namespace recorddb {

class Database;

// Reads what is in a database, for programs that show or compare it. It needs the memory of one
// record, however many there are, unless it is told to look ahead. Each operation sees the database
// as it is at that moment; to see the same state in several of them, hold a transaction
// (Database::Begin) around them. Every operation throws sql::Error.
class RECORDDB_API RecordReader {
  public:
    // The database outlives the reader.
    explicit RecordReader(Database& database);
    RecordReader(const RecordReader&) = delete;
    RecordReader& operator=(const RecordReader&) = delete;
    ~RecordReader();

    // Asks for what these searches find, in a few questions for all of them, so that the operations
    // that follow need not ask for each record; where that saves nothing, does nothing. Takes the
    // memory of all those records, until the next call or the end of the reader. Only in a
    // transaction that reads, and lasts as long.
    void LookAhead(std::span<const ExpectedSearch> searches);

    std::int64_t Count(const schema::RecordType& type);

    // The first record with a dbid above the one given; nothing when there is none. A walk through
    // all records begins with 0 and goes on with the dbid of the record before.
    std::optional<RecordView> Next(const schema::RecordType& type, std::int64_t after);

    // The dbid of that record.
    std::optional<std::int64_t> NextDbId(const schema::RecordType& type, std::int64_t after);

    // A record by its dbid, or by what people call it: its unique key or, in digits, its dbid. The
    // key takes precedence. Nothing when there is no such record.
    std::optional<RecordView> Get(const schema::RecordType& type, std::int64_t dbid);
    std::optional<RecordView> Find(const schema::RecordType& type, std::string_view identifier);

    // The dbids of the records that have this value in a field with a column, in ascending order;
    // at most `limit` of them. The value is compared as it is stored: a reference as a dbid.
    std::vector<std::int64_t> FindByValue(const schema::RecordType& type,
                                          const schema::Field& field, std::string_view value,
                                          std::size_t limit);

    // The record of a type with that unique key, searched within the limits.
    KeyMatch FindKey(const schema::RecordType& type, std::string_view key,
                     const KeySearchLimits& limits);

    // Hands over the dbid and the value, as it is stored, of every record that has a value in a
    // field with a column, in no particular order.
    void ReadValues(const schema::RecordType& type, const schema::Field& field,
                    const std::function<void(std::int64_t, std::string_view)>& take);

    // The unique key of a record; empty when there is no such record.
    std::string Key(const schema::RecordType& type, std::int64_t dbid);

    // By time, entries of one time in the order of arrival.
    std::vector<HistoryEntry> History(const RecordView& record);

    // In the order in which they were added.
    std::vector<Attachment> Attachments(const RecordView& record);

    // Hands the content of an attachment over piece by piece.
    void ReadContent(const Attachment& attachment,
                     const std::function<void(std::span<const std::byte>)>& take);

    // The SHA-256 of the content that is actually stored, which is the attachment's own unless the
    // database is damaged; that of empty content when there is none.
    std::string HashContent(const Attachment& attachment);

    // The record that a record is a duplicate of, and those that are duplicates of it.
    std::optional<LinkedRecord> Original(const RecordView& record);
    std::vector<LinkedRecord> Duplicates(const RecordView& record);

  private:
    struct Tables;

    std::unique_ptr<Tables> m_tables;
};

}  // namespace recorddb

#endif
