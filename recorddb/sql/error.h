#ifndef RECORDDB_SQL_ERROR_H
#define RECORDDB_SQL_ERROR_H

#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace recorddb::sql {

// What went wrong, as far as callers act differently on it. Each driver maps its own codes to
// these.
enum class ErrorKind {
    UniqueViolation,
    ForeignKeyViolation,
    ConstraintViolation,  // any other constraint: NOT NULL, CHECK ...
    Busy,                 // locked by another writer for longer than the driver waits
    DiskFull,
    Io,
    ReadOnly,
    Corrupt,
    NotADatabase,  // the file is something else
    CannotOpen,
    Unsupported,  // an engine that this build has no driver for
    Other
};

// The name of a kind for messages, such as "unique violation".
std::string_view KindName(ErrorKind kind);

// A failure of the SQL engine. what() joins the kind, the driver's text and the
// beginning of the statement.
class Error : public std::runtime_error {
  public:
    // sql is the statement that failed, empty when none was running.
    Error(ErrorKind kind, std::string driverText, std::string sql,
          std::vector<std::string> columns = {});

    ErrorKind Kind() const { return m_kind; }
    const std::string& DriverText() const { return m_driverText; }
    const std::string& Sql() const { return m_sql; }

    // For a unique or NOT NULL violation the names of the columns concerned, without their table;
    // empty when the driver does not tell them.
    const std::vector<std::string>& Columns() const { return m_columns; }

    bool IsConstraint() const;

  private:
    ErrorKind m_kind;
    std::string m_driverText;
    std::string m_sql;
    std::vector<std::string> m_columns;
};

}  // namespace recorddb::sql

#endif
