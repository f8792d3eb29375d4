#ifndef RECORDDB_DATABASE_ERROR_H
#define RECORDDB_DATABASE_ERROR_H

#include <stdexcept>
#include <string>

namespace recorddb {

// Why a file cannot be used as a record database, beyond what the SQL engine itself refuses.
class DatabaseError : public std::runtime_error {
  public:
    enum class Problem {
        FileExists,          // a new database was asked for and there is a file already
        NotARecordDatabase,  // a database, but not one of this kind
        TablesChanged,       // a record database that lacks tables, or has views in their place
        FormatTooNew,
        FormatTooOld
    };

    DatabaseError(Problem problem, const std::string& text)
        : std::runtime_error(text), m_problem(problem) {}

    Problem GetProblem() const { return m_problem; }

  private:
    Problem m_problem;
};

}  // namespace recorddb

#endif
