#ifndef RECORDDB_ERRORS_H
#define RECORDDB_ERRORS_H

#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "recorddb/export.h"

namespace recorddb {

// Why a file cannot be used as a record database, beyond what the SQL engine itself refuses.
class RECORDDB_API DatabaseError : public std::runtime_error {
  public:
    enum class Problem {
        FileExists,          // a new database was asked for and there is a file already
        TooManyColumns,      // a record type has more fields than the engine has columns
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

namespace recorddb::schema {

// What is wrong with a schema file, and where. what() reads "FILE:LINE:COLUMN: TEXT".
class RECORDDB_API SchemaError : public std::runtime_error {
  public:
    // Line and column count from 1; both are 0 when the file as a whole is meant.
    SchemaError(std::string file, int line, int column, std::string text);

    const std::string& File() const { return m_file; }
    int Line() const { return m_line; }
    int Column() const { return m_column; }
    const std::string& Text() const { return m_text; }

  private:
    std::string m_file;
    int m_line;
    int m_column;
    std::string m_text;
};

}  // namespace recorddb::schema

namespace recorddb::sql {

// What went wrong, as far as callers act differently on it. Each driver maps its own codes to
// these.
enum class ErrorKind {
    UniqueViolation,
    ForeignKeyViolation,
    ConstraintViolation,  // any other constraint: NOT NULL, CHECK ...
    Conflict,             // rows are not as the caller knew them: another writer changed them
    Busy,                 // locked by another writer for longer than the driver waits
    DiskFull,
    Io,
    ReadOnly,
    Corrupt,
    NotADatabase,  // the file is something else
    CannotOpen,
    PermissionDenied,  // the role that works on a server lacks a right
    ConnectionLost,
    Unsupported,  // the engine lacks what was asked of it
    Other
};

// The name of a kind for messages, such as "unique violation".
RECORDDB_API std::string_view KindName(ErrorKind kind);

// A failure of the SQL engine. what() joins the kind, the driver's text and the beginning of the
// statement.
class RECORDDB_API Error : public std::runtime_error {
  public:
    // `sql` is the statement that failed, empty when none was running.
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
