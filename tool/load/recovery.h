#ifndef TOOL_LOAD_RECOVERY_H
#define TOOL_LOAD_RECOVERY_H

#include <chrono>

#include "recorddb/database.h"
#include "recorddb/errors.h"
#include "tool/load/policy/load_options.h"
#include "tool/load/policy/load_policy.h"
#include "tool/load/sinks/load_sinks.h"

namespace tool {

// Gets over failures of the database that pass: a lost connection, or a lock or a deadlock in which
// another writer won. What the database undid has to be done again afterwards.
class Recovery {
  public:
    // All of them outlive the object.
    Recovery(recorddb::Database& database, const LoadOptions& options, const LoadPolicy& policy,
             LoadSinks& sinks);

    // Whether any failure is got over: not in a file, where none of them passes, and not in a
    // rehearsal, all of which is undone by them.
    bool IsPossible() const { return m_isPossible; }

    // Whether work that failed with `error` may succeed when it is done again, after so many
    // failures in a row.
    bool MayPass(const recorddb::sql::Error& error, int failures) const;

    // Waits as long as makes sense after so many failures in a row, and connects again where the
    // connection was lost. No transaction may be open. Throws sql::Error (ConnectionLost) when no
    // server answers for as long as the options say, or a signal comes; DatabaseError.
    void GetReady(const recorddb::sql::Error& error, int failures);

  private:
    void Connect(const std::string& why);
    // What is left of the time in which a connection is sought that was lost at `begin`.
    std::chrono::milliseconds Left(std::chrono::steady_clock::time_point begin) const;

    recorddb::Database& m_database;
    LoadSinks& m_sinks;
    std::chrono::seconds m_time;
    bool m_isPossible;
};

}  // namespace tool

#endif
