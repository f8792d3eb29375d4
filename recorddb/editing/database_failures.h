#ifndef RECORDDB_EDITING_DATABASE_FAILURES_H
#define RECORDDB_EDITING_DATABASE_FAILURES_H

#include <cstdint>
#include <optional>
#include <utility>

#include "recorddb/errors.h"
#include "recorddb/sql.h"

namespace recorddb {

// Remembers failures of the database itself, and throws them to callers of the core as a message.
// After a failure inside a transaction everything is refused until that transaction has ended: the
// engine may have rolled it back on its own, and what came after would be kept without what came
// before.
class DatabaseFailures {
  public:
    // The connection outlives the object.
    explicit DatabaseFailures(sql::Connection& connection) : m_connection(connection) {}

    // Does the work; an sql::Error out of it is remembered and thrown as a PaMsgException*.
    template <typename Work>
    decltype(auto) Guard(Work&& work) {
        RefuseAfterFailure();
        try {
            return std::forward<Work>(work)();
        } catch (const sql::Error& error) {
            Remember(error);
            Throw();
        }
    }

    // Does the work; an sql::Error out of it is remembered and rethrown. For callers that know the
    // database, not only the core.
    template <typename Work>
    decltype(auto) Watch(Work&& work) {
        try {
            return std::forward<Work>(work)();
        } catch (const sql::Error& error) {
            Remember(error);
            throw;
        }
    }

    // The latest failure, unless it was forgotten since.
    const std::optional<sql::Error>& Last() const { return m_last; }
    void Forget() { m_last.reset(); }

  private:
    void RefuseAfterFailure() const {
        if (m_last && m_connection.InTransaction() &&
            m_connection.TransactionCount() == m_failedTransaction) {
            Throw();
        }
    }

    void Remember(const sql::Error& error);
    [[noreturn]] void Throw() const;

    sql::Connection& m_connection;
    std::optional<sql::Error> m_last;
    std::uint64_t m_failedTransaction = 0;  // its number; 0 when the failure was outside of one
};

}  // namespace recorddb

#endif
