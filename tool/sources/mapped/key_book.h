#ifndef TOOL_SOURCES_MAPPED_KEY_BOOK_H
#define TOOL_SOURCES_MAPPED_KEY_BOOK_H

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "recorddb/sql.h"
#include "tool/io/frame_spool.h"
#include "tool/sources/mapped/key_filter.h"
#include "tool/sources/mapped/made_record.h"

namespace tool {

// Knows any number of keys and values again, in a temporary database. Every operation throws
// std::runtime_error that says what to do when that fails.
class KeyBook {
  public:
    struct Known {
        std::uint64_t first = 0;  // number of the record that had the key first
        RowPlace place;
        std::string hash;  // of what it says
    };

    KeyBook();
    ~KeyBook();

    // Notes the key of a record of `step`. Returns what is known of it when it came before.
    std::optional<Known> Note(std::size_t step, std::string_view key, const Known& record);

    // Notes that the sources have a record with `value` in a field, which is known by a number.
    void AddValue(std::size_t field, std::string_view value);
    bool HasValue(std::size_t field, std::string_view value);

    // Keeps records, and gives them back sorted by the first record of their key; those of one key
    // in the order in which they came. A round begins with Add and ends when Next returns false.
    void Add(const MadeRecord& record);
    bool Next(MadeRecord& record);

  private:
    bool MayHave(std::size_t step, std::string_view key);
    void Keep(std::size_t step, std::string_view key, const Known& record);
    void InsertKept();
    void Insert(std::string_view kept);

    // Keys that the filter calls new are kept apart, and put into the database only when it may be
    // asked for one of them: mostly never.
    KeyFilter m_filter;
    FrameSpool m_kept;
    std::uint64_t m_inserted = 0;  // bytes of these that are in the database
    std::unique_ptr<recorddb::sql::Connection> m_scratch;
    recorddb::sql::Transaction m_work;
    recorddb::sql::Statement& m_insertKey;
    recorddb::sql::Statement& m_selectKey;
    recorddb::sql::Statement& m_insertValue;
    recorddb::sql::Statement& m_selectValue;
    recorddb::sql::Statement& m_insertPart;
    recorddb::sql::Statement& m_deleteParts;
    std::unique_ptr<recorddb::sql::Statement> m_parts;
    bool m_isReading = false;
    std::string m_buffer;
};

}  // namespace tool

#endif
