#ifndef TOOL_LOAD_WAITING_WAITING_ROOM_H
#define TOOL_LOAD_WAITING_WAITING_ROOM_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "recorddb/sql.h"
#include "tool/load/sinks/place.h"
#include "tool/load/waiting/waiting_record.h"

namespace tool {

// Some of the texts that were added, by their hashes: says for most others, without asking the
// disk, that they were not. Of bounded size.
class TextFilter {
  public:
    void Add(std::string_view text);
    bool MayHold(std::string_view text) const;
    void Clear();

  private:
    std::unordered_set<std::size_t> m_hashes;
    bool m_isFull = false;
};

// Records that wait: for keys that are not in the database, or for an earlier record of their id.
// They stand in a temporary file, and so does the index by which they are found again; memory does
// not grow with their number, nor does the cost of one. What is done since the last Keep can be
// undone, as the transaction of the database can.
//
// A key is any text that stands for a value by which a record is looked up; so is an id, which is
// the key of the record itself. Every operation throws std::runtime_error when the temporary file
// fails.
class WaitingRoom {
  public:
    bool IsEmpty() const { return m_count == 0; }
    // Whether nothing waits, also when what was done since the last Keep is undone.
    bool HasBeenEmpty() const { return m_count == 0 && m_keptCount == 0; }

    // Why a record has to wait.
    struct Wait {
        std::string id;                 // of the record; empty when it has none
        std::vector<std::string> keys;  // that are missing, each once
        // Whether the import of the record may create it. An update whose own record does not exist
        // yet does not hold back the one that creates it.
        bool mayCreate = true;
    };

    // Whether a record has to wait because an earlier one of its id does.
    bool Bars(const std::string& id, bool mayCreate);

    // Takes a record in, which comes after all that are there. Without keys it waits for the
    // earlier ones of its id; where there are none, it is ready.
    void Take(Place place, const SourceRecord& record, const Wait& wait);

    // Whether something waits for the key.
    bool Wants(const std::string& key);

    // The key is in the database now: what has waited for nothing else is ready.
    void Arrive(const std::string& key);

    // The first of the records that are ready to be tried, and of those that wait for keys.
    std::optional<Place> FirstReady();
    std::optional<Place> FirstWaiting();

    void Read(Place place, WaitingRecord& record);

    // The record, which was ready, waits for other keys.
    void WaitOn(Place place, const Wait& wait);

    // The record is done with, one way or the other, and leaves. The next one of its id is ready,
    // unless an earlier one is still there.
    void Leave(Place place);

    void Keep();
    void Undo();

  private:
    void Open();
    recorddb::sql::Statement& Prepare(std::string_view sql);
    void Change();
    void AddKeys(Place place, const Wait& wait);
    bool BarsCreation(const Wait& wait, bool isBehind);
    std::optional<Place> First(std::string_view sql);
    void PassOn(const std::string& id);

    std::unique_ptr<recorddb::sql::Connection> m_scratch;  // null as long as nothing has waited
    std::optional<recorddb::sql::Transaction> m_transaction;
    std::uint64_t m_count = 0;
    std::uint64_t m_keptCount = 0;
    TextFilter m_keys;
    TextFilter m_ids;
    std::string m_buffer;
};

}  // namespace tool

#endif
