#ifndef TOOL_LOAD_RECORDS_RECORD_GROUP_H
#define TOOL_LOAD_RECORDS_RECORD_GROUP_H

#include <cstddef>
#include <cstdint>
#include <memory>

#include "recorddb/session.h"
#include "tool/load/policy/load_policy.h"

namespace tool {

// Groups the records of a load into transactions. A transaction of its own for every record costs
// four times as much as the records themselves; one that never ends makes each savepoint in it cost
// more. About a hundred records to a transaction is near the best (kGroupRecords).
//
// The groups of a rehearsal are parts of one transaction, which is undone when the object goes.
class RecordGroup {
  public:
    // The records of a group are in memory until it is permanent, so large ones make it end
    // earlier.
    static constexpr std::size_t kBytes = std::size_t{1} << 20;

    // `policy` says what becomes of a group that is not of Writing::Ahead. `writing` is for the
    // groups that are to come, of so many `records` each. Throws sql::Error.
    RecordGroup(AdPtr<recorddb::Session> session, const LoadPolicy& policy,
                recorddb::Writing writing, std::size_t records);

    // Whether what the records of a group write is gathered. Then the group as a whole may be
    // refused, when it is written, because of one of them.
    bool IsGathered() const { return m_writing != recorddb::Writing::AtOnce; }
    // From the next group on.
    void SetWriting(recorddb::Writing writing) { m_writing = writing; }

    // Whether what Commit ends is permanent.
    bool IsPermanent() const { return m_whole == nullptr; }

    bool IsOpen() const { return m_transaction != nullptr; }
    // Makes sure that the group has begun.
    recorddb::SessionTransaction& Open();

    // Counts a record of so many bytes; true when the group has as many as it should have.
    bool AddRecord(std::size_t bytes) {
        m_bytes += bytes;
        return ++m_count >= m_records || m_bytes >= kBytes;
    }

    // Writes what was gathered. Throws sql::Error, after which only Undo is possible.
    void Apply() { Open().Apply(); }

    // Ends a group of Writing::Ahead, and returns what it has gathered.
    std::unique_ptr<recorddb::GatheredWork> Take();

    // Puts what was gathered ahead into a group in which nothing has been done but that; see
    // SessionTransaction::Adopt.
    bool Adopt(recorddb::GatheredWork& work, std::uint64_t moment) {
        return Open().Adopt(work, moment);
    }

    // See Session::Moment.
    std::uint64_t Moment() const { return m_session->Moment(); }

    // Undoes what the group has done, for it to be done again.
    void Undo();

    // Ends the group, whose work is permanent then, except in a rehearsal. Nothing happens when
    // none has begun.
    void Commit();

  private:
    AdPtr<recorddb::Session> m_session;
    LoadPolicy::Transaction m_whole;        // around all groups; null: each is one by itself
    LoadPolicy::Transaction m_transaction;  // of the group
    recorddb::Writing m_writing;
    std::size_t m_records;
    std::size_t m_count = 0;
    std::size_t m_bytes = 0;
};

}  // namespace tool

#endif
