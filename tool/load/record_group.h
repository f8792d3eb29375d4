#ifndef TOOL_LOAD_RECORD_GROUP_H
#define TOOL_LOAD_RECORD_GROUP_H

#include <cstddef>

#include "recorddb/session.h"
#include "tool/load/load_policy.h"

namespace tool {

// Groups the records of a load into transactions. A transaction of its own for every record costs
// four times as much as the records themselves; one that never ends makes each savepoint in it
// dearer. About a hundred records to a transaction is near the best.
//
// The groups of a rehearsal are undone together, when the object goes.
class RecordGroup {
  public:
    static constexpr std::size_t kRecords = 100;

    // `policy`, which says what becomes of a group, outlives the object. Throws sql::Error.
    RecordGroup(AdPtr<recorddb::Session> session, const LoadPolicy& policy);

    // Makes sure that a transaction is open.
    recorddb::SessionTransaction& Open();

    // Counts a record; true when the group has as many as it should have.
    bool AddRecord() { return ++m_count >= kRecords; }

    // Ends the group, whose work is permanent then, except in a rehearsal. Nothing happens when no
    // transaction is open.
    void Commit();

  private:
    AdPtr<recorddb::Session> m_session;
    const LoadPolicy& m_policy;
    LoadPolicy::Transaction m_transaction;
    std::size_t m_count = 0;
};

}  // namespace tool

#endif
