#ifndef RECORDDB_SQL_H
#define RECORDDB_SQL_H

#include <chrono>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "recorddb/export.h"

namespace recorddb::sql {

struct Dialect;
class RowReader;
class RowWriter;

// Text that dies at the end of the expression it stands in, and so cannot be borrowed.
template <typename T>
concept DyingText = std::same_as<T, std::string> || std::same_as<T, std::optional<std::string>>;

// A prepared statement with parameters $1, $2 ... One execution goes:
//
//     statement.BindAll(type, record);          // every parameter that is not to be NULL
//     while (statement.Step()) { ... statement.Text(0) ... }
//
// or BindAll and Execute for a statement that returns no rows. An execution ends, and the
// parameters become NULL again, when Step returns false, when Execute returns, when either throws,
// and at Reset. Call Reset, best through a ResetGuard, when you stop before Step has returned
// false: a statement that is still being executed keeps its snapshot of the database open.
//
// A statement holds one execution at a time. Binding while one is under way throws Error.
class RECORDDB_API Statement {
  public:
    Statement() = default;
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;
    virtual ~Statement() = default;

    // Parameters count from 1. Text (UTF-8) and blobs are borrowed, not copied: the caller keeps
    // them alive and unchanged until the execution ends. Throw Error for a parameter that the
    // statement does not have.
    virtual void BindInt(int parameter, std::int64_t value) = 0;
    virtual void BindText(int parameter, std::string_view text) = 0;
    virtual void BindBlob(int parameter, std::span<const std::byte> data) = 0;
    virtual void BindNull(int parameter) = 0;

    // Advances to the next row; true when there is one. Throws Error.
    virtual bool Step() = 0;

    // Runs the statement to its end and returns the number of rows it inserted, changed or
    // deleted. Throws Error.
    virtual std::int64_t Execute() = 0;

    // In a transaction, runs a statement that returns no rows to its end, but need not wait for
    // that: what it cannot do is thrown here or by a later call on the connection, at the latest
    // when the innermost savepoint is released or the transaction committed. Parameters are not
    // borrowed any longer.
    virtual void ExecuteLater() { Execute(); }

    // Ends the execution under way, if any, and sets the parameters to NULL.
    virtual void Reset() noexcept = 0;

    // Columns of the current row, counted from 0. Views live until the next Step or Reset. A NULL
    // reads as 0 or as an empty view. Text and Blob throw Error when there is no memory for them.
    virtual bool IsNull(int column) const = 0;
    virtual std::int64_t Int(int column) const = 0;
    virtual std::string_view Text(int column) const = 0;
    virtual std::span<const std::byte> Blob(int column) const = 0;
    virtual int ColumnCount() const = 0;

    void Bind(int parameter, std::integral auto value) {
        BindInt(parameter, static_cast<std::int64_t>(value));
    }
    void Bind(int parameter, std::string_view text) { BindText(parameter, text); }
    void Bind(int parameter, std::span<const std::byte> data) { BindBlob(parameter, data); }
    void Bind(int parameter, std::nullptr_t) { BindNull(parameter); }
    template <typename T>
    void Bind(int parameter, const std::optional<T>& value) {
        if (value) {
            Bind(parameter, *value);
        } else {
            BindNull(parameter);
        }
    }

    template <DyingText T>
    void Bind(int parameter, T&& text) = delete;

    // Binds $1, $2 ... in turn.
    template <typename... Values>
    void BindAll(Values&&... values) {
        int parameter = 0;
        (Bind(++parameter, std::forward<Values>(values)), ...);
    }
};

// Ends the execution of a statement at the end of a scope.
class ResetGuard {
  public:
    explicit ResetGuard(Statement& statement) : m_statement(statement) {}
    ResetGuard(const ResetGuard&) = delete;
    ResetGuard& operator=(const ResetGuard&) = delete;
    ~ResetGuard() { m_statement.Reset(); }

  private:
    Statement& m_statement;
};

// Runs a query whose parameters are bound and returns the first column of its first row; nothing
// when there is no row or the column is NULL.
inline std::optional<std::int64_t> QueryInt(Statement& statement) {
    const ResetGuard guard(statement);
    if (!statement.Step() || statement.IsNull(0)) {
        return std::nullopt;
    }
    return statement.Int(0);
}

// What a transaction is for.
enum class Access {
    Writing,
    Reading  // it sees one moment, takes no lock and writes nothing
};

// One connection to an SQL engine, for one thread. Every operation throws Error when the engine
// refuses. Transactions are objects: see Transaction and Savepoint.
class RECORDDB_API Connection {
  public:
    Connection() = default;
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;
    virtual ~Connection() = default;

    // The statement with this text, prepared at the first call and kept. The reference stays valid
    // for the connection's life; hot paths keep it and save the look-up. All callers with the same
    // text share one statement, and with it its execution.
    virtual Statement& Prepare(std::string_view sql) = 0;

    // A statement of the caller's own, for executions that nest. It must not outlive the
    // connection.
    virtual std::unique_ptr<Statement> PrepareOwn(std::string_view sql) = 0;

    // A statement of the caller's own for a query of any number of rows, which are not held in
    // memory all at once.
    virtual std::unique_ptr<Statement> PrepareScan(std::string_view sql) { return PrepareOwn(sql); }

    // Runs statements that are separated by semicolons and return no rows; none is kept. Tables and
    // indexes are made this way.
    virtual void ExecuteScript(std::string_view sql) = 0;

    // True for a table that holds its rows itself, as opposed to a view, a virtual table or one
    // with computed columns. Throws Error (PermissionDenied) for one that the role may not use.
    virtual bool HasTable(std::string_view name) = 0;
    virtual bool HasIndex(std::string_view name) = 0;

    // Makes a writer of many rows at once, by whatever means the engine has. It must not outlive
    // the connection.
    virtual std::unique_ptr<RowWriter> MakeRowWriter();

    // Makes a reader of many rows at once, in the same way.
    virtual std::unique_ptr<RowReader> MakeRowReader();

    // True where reading many rows at once costs much less than reading each by itself, so that it
    // is worth while to find out ahead what will be needed.
    virtual bool ReadsManyForLess() const { return false; }

    // True for a connection that can be lost, and be made anew then.
    virtual bool CanReconnect() const { return false; }

    // Connects anew to the same database, after an Error (ConnectionLost). Statements stay good,
    // prepared anew where that is needed; executions have ended. What becomes of a transaction
    // whose commit was not answered, only the database can tell. Throws Error: for want of a
    // server, CannotOpen or ConnectionLost, after which it may be tried again; std::logic_error
    // while a transaction is open, and where there is nothing to lose. A server that does not
    // answer is given up within `patience`, as far as the engine lets that be said.
    virtual void Reconnect(std::chrono::milliseconds patience);

    // In a transaction for writing: keeps the lock of writers beyond its end, so that no other
    // writer comes in between. When some waited as the transaction began, the call lets them go
    // ahead after it instead. False when somebody else may have written since the last call. Where
    // there is no such lock (files, tables that are spread), nobody is kept from writing, and the
    // answer is right all the same.
    virtual bool KeepTurn() { return false; }
    // Lets others write again, when no transaction is open.
    virtual void LetOthersWrite() {}

    // For BeginTogether, as are the next two. To be called before a transaction begins: an engine
    // without shared snapshots notes here what others have written, for JoinMoment.
    virtual void WatchOthers() {}
    // In a transaction for reading: returns a name for the moment that it sees, for JoinMoment of
    // other connections. Throws Error (Unsupported).
    virtual std::string ShareMoment();
    // At the beginning of a transaction for reading on another connection: has it see that moment.
    // False when it may see a later one, since somebody has written. Throws Error (Unsupported).
    virtual bool JoinMoment(const std::string& moment);

    // True where the server can spread tables over machines.
    virtual bool CanSpreadTables() { return false; }

    // From here on, tables may stand spread over machines, where advisory locks and correlated
    // queries are not to be had. `takeTurn` changes a row and returns a number that counts up: a
    // transaction for writing begins with it, so that the next one waits for its end. To be called
    // outside of transactions. Throws Error; Unsupported where there are no machines.
    virtual void ExpectSpreadTables(std::string_view takeTurn);

    virtual const Dialect& GetDialect() const = 0;
    virtual bool IsReadOnly() const = 0;

    // True for an engine that undoes a statement that fails and lets its transaction go on. With
    // any other, a transaction in which a statement failed takes nothing but a roll-back, of itself
    // or to a savepoint; so a statement that may be refused needs a savepoint around it.
    virtual bool TransactionSurvivesErrors() const = 0;

    bool InTransaction() const { return m_inTransaction; }
    // True in a transaction that was begun for reading only.
    bool InReading() const { return m_inTransaction && m_isReading; }

    // Number of transactions begun so far. What was read inside a transaction stays true as long as
    // neither this number nor RollbackCount has changed; after that another writer may have changed
    // it.
    std::uint64_t TransactionCount() const { return m_transactionCount; }

    // Number of roll-backs so far, those of savepoints included. What was written is still there as
    // long as this number has not changed.
    std::uint64_t RollbackCount() const { return m_rollbackCount; }

  protected:
    enum class Control {
        Begin,
        Commit,
        Rollback,
        BeginSavepoint,
        ReleaseSavepoint,     // the innermost one
        RollbackToSavepoint,  // undoes what was done since the innermost one began; it stays open
        BeginReading          // on a connection that may write
    };

    // Does one of these, by whatever means the engine has.
    virtual void Run(Control control) = 0;

    // True while the engine itself has a transaction open. An engine may roll back on its own, on a
    // full disk for instance.
    virtual bool EngineInTransaction() const = 0;

  private:
    friend class Transaction;
    friend class Savepoint;

    void BeginTransaction(Access access);
    void CommitTransaction();
    void RollbackTransaction() noexcept;
    int BeginSavepoint();
    void ReleaseSavepoint(int depth);
    void RollbackSavepoint(int depth) noexcept;

    bool m_inTransaction = false;
    bool m_isReading = false;
    bool m_undoFailed = false;  // a savepoint's work may still be in the transaction
    int m_savepointDepth = 0;
    std::uint64_t m_transactionCount = 0;
    std::uint64_t m_rollbackCount = 0;
};

// A transaction from construction to Commit or Rollback; the destructor rolls back one that is
// still open. A connection has one at a time; inside it, Savepoints nest. On a read-write
// connection it holds the write lock from the start, unless it is for reading, so that a
// transaction that reads first and writes later never fails half-way because another writer came in
// between.
class RECORDDB_API Transaction {
  public:
    // Throws Error when the engine refuses, std::logic_error when a transaction is open already.
    explicit Transaction(Connection& connection, Access access = Access::Writing);
    Transaction(Transaction&& other) noexcept;
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;
    Transaction& operator=(Transaction&&) = delete;
    ~Transaction();

    // Makes the work permanent. Throws Error when the engine refuses, after which the transaction
    // is still open and its destructor rolls it back; std::logic_error when it has ended already
    // or a savepoint is open.
    void Commit();

    // Undoes the work; nothing happens when the transaction has ended already.
    void Rollback() noexcept;

    bool IsOpen() const { return m_connection != nullptr; }

  private:
    Connection* m_connection;
};

// Begins a transaction on each of several connections to one database, which are open for reading;
// all of them see the same moment; where tables are spread over machines, that of the first machine
// only. Throws Error (Unsupported, when the engine has no means for it, or the connections lead to
// different servers).
RECORDDB_API std::vector<Transaction> BeginTogether(std::span<Connection* const> connections);

enum class OpenMode {
    ReadOnly,
    Immutable,  // reading a file that certainly nobody writes to, without its side files
    ReadWrite,  // an existing database
    CreateNew   // a database that does not exist yet
};

// True for postgresql://... and postgres://..., false for what is taken as the path of a file.
RECORDDB_API bool IsServerUrl(const std::string& location);

// Opens the database at a location: the path of an SQLite file, or the URL of a database on a
// PostgreSQL server, as libpq takes it, with a parameter of our own: `schema` names the schema (the
// namespace) in which the tables stand, otherwise it is the first one of the search path. With
// CreateNew, the first transaction makes a schema that is named and not there.
//
// Throws Error: CannotOpen when there is no such file (or, for CreateNew, already one), or it
// cannot be read completely in this mode; NotADatabase when the file is something else, or a
// database that another program has marked as its own. For a server: CannotOpen, PermissionDenied
// when the role lacks a right, Unsupported for Immutable.
//
// The database may come from anybody: its triggers do not run and its views cannot be read.
RECORDDB_API std::unique_ptr<Connection> Open(const std::string& location, OpenMode mode);

// A location as messages may show it: without user and password.
RECORDDB_API std::string ShownLocation(const std::string& location);

// A server URL with a schema in the place of the one that it names, if any.
RECORDDB_API std::string WithSchema(const std::string& url, const std::string& schema);

// The files that the engine may put beside the database at a location, whether or not they are
// there. None for a server.
RECORDDB_API std::vector<std::string> SideFiles(const std::string& location);

// Whether a scratch database can be rolled back. One that cannot must not be used any more after a
// roll-back; it writes less.
enum class Undoing { Impossible, Possible };

// Opens an empty database for intermediate results of any size: a file without a name among the
// system's temporary files, which is gone when the connection is. It takes a few MiB of memory.
RECORDDB_API std::unique_ptr<Connection> OpenScratch(Undoing undoing = Undoing::Impossible);

// A name as an SQL identifier, in double quotes, so that names which are words of SQL work.
RECORDDB_API std::string Quoted(std::string_view name);

}  // namespace recorddb::sql

#endif
