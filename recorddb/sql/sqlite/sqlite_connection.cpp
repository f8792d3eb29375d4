#include "recorddb/sql/sqlite/sqlite_connection.h"

#include <sqlite3.h>

#include <algorithm>
#include <chrono>
#include <utility>

#include "recorddb/errors.h"
#include "recorddb/sql/dialect.h"
#include "recorddb/sql/sqlite/sqlite_error.h"
#include "recorddb/sql/sqlite/sqlite_statement.h"

namespace recorddb::sql {

namespace {

constexpr Dialect kSqliteDialect = {
    .dbIdType = "INTEGER PRIMARY KEY",
    .textType = "TEXT",
    .blobType = "BLOB",
    .clusteredTable = " WITHOUT ROWID",
    .foreignKeysAhead = true,
    .mostColumns = 2000,
    .rightToIndex = "",
};

// In the order of Connection::Control. One name serves every savepoint: the engine always takes the
// innermost one of that name, and so three statements are enough for any depth of nesting.
constexpr std::array<std::string_view, 7> kControlSql = {
    "BEGIN IMMEDIATE",
    "COMMIT",
    "ROLLBACK",
    "SAVEPOINT zt_savepoint",
    "RELEASE SAVEPOINT zt_savepoint",
    "ROLLBACK TO SAVEPOINT zt_savepoint",
    "BEGIN",
};

// How long the engine waits for other programs, for the life of the object. In milliseconds.
class BusyTimeout {
  public:
    BusyTimeout(sqlite3* handle, int timeout, int otherwise)
        : m_handle(handle), m_otherwise(otherwise) {
        sqlite3_busy_timeout(handle, timeout);
    }
    BusyTimeout(const BusyTimeout&) = delete;
    BusyTimeout& operator=(const BusyTimeout&) = delete;
    ~BusyTimeout() { sqlite3_busy_timeout(m_handle, m_otherwise); }

  private:
    sqlite3* m_handle;
    int m_otherwise;
};

}  // namespace

void SqliteConnection::Closer::operator()(sqlite3* handle) const noexcept {
    sqlite3_close_v2(handle);
}

SqliteConnection::SqliteConnection(Handle handle, OpenMode mode)
    : m_handle(std::move(handle)),
      m_readOnly(mode == OpenMode::ReadOnly || mode == OpenMode::Immutable) {}

SqliteConnection::~SqliteConnection() = default;

Statement& SqliteConnection::Prepare(std::string_view sql) {
    return m_statements.Get(sql, [&] { return PrepareOwn(sql); });
}

std::unique_ptr<Statement> SqliteConnection::PrepareOwn(std::string_view sql) {
    return std::make_unique<SqliteStatement>(m_handle.get(), sql);
}

void SqliteConnection::ExecuteScript(std::string_view sql) {
    const std::string script(sql);
    ++m_scriptCount;
    CheckSqlite(m_handle.get(),
                sqlite3_exec(m_handle.get(), script.c_str(), nullptr, nullptr, nullptr), script);
}

bool SqliteConnection::HasTable(std::string_view name) {
    // Virtual tables have no page of their own.
    Statement& find = Prepare(
        "SELECT 1 FROM sqlite_master "
        "WHERE type = 'table' AND lower(name) = lower($1) AND rootpage > 0");
    find.BindAll(name);
    if (!QueryInt(find)) {
        return false;
    }
    Statement& findComputed = Prepare("SELECT 1 FROM pragma_table_xinfo($1) WHERE hidden <> 0");
    findComputed.BindAll(name);
    return !QueryInt(findComputed);
}

bool SqliteConnection::HasIndex(std::string_view name) {
    Statement& find =
        Prepare("SELECT 1 FROM sqlite_master WHERE type = 'index' AND lower(name) = lower($1)");
    find.BindAll(name);
    return QueryInt(find).has_value();
}

// Keeps nobody from writing; the data version tells whether another connection has committed.
bool SqliteConnection::KeepTurn() {
    const std::int64_t version = QueryInt(Prepare("PRAGMA data_version")).value_or(0);
    return std::exchange(m_versionOfOthers, version) == version;
}

void SqliteConnection::WatchOthers() {
    KeepTurn();
}

// A transaction sees the moment of its first query.
std::string SqliteConnection::ShareMoment() {
    KeepTurn();
    return "";
}

// Nobody has written since WatchOthers, so not since ShareMoment.
bool SqliteConnection::JoinMoment(const std::string& /*moment*/) {
    return KeepTurn();
}

const Dialect& SqliteConnection::GetDialect() const {
    return kSqliteDialect;
}

void SqliteConnection::Run(Control control) {
    switch (control) {
        case Control::Begin:
            m_writesBefore.clear();
            m_readOnly ? ExecuteControl(control) : BeginWriting();
            break;
        case Control::BeginReading:
            m_writesBefore.clear();
            ExecuteControl(control);
            break;
        case Control::BeginSavepoint:
            m_writesBefore.reserve(m_writesBefore.size() + 1);
            ExecuteControl(control);
            m_writesBefore.push_back(WriteCount());
            break;
        case Control::ReleaseSavepoint:
            ExecuteControl(control);
            m_writesBefore.pop_back();
            break;
        case Control::RollbackToSavepoint:
            // In a transaction that has made an index, rolling back to a savepoint makes the engine
            // prepare all its statements again. Most records that are refused have written nothing
            // yet.
            if (WriteCount() != m_writesBefore.back()) {
                ExecuteControl(control);
            }
            break;
        default:
            ExecuteControl(control);
            break;
    }
}

// The engine looks ever less often whether the lock has become free, and a writer that lets go of
// it for a moment only, as a load does between two groups, would keep all others out. So its
// patience is divided into small pieces.
void SqliteConnection::BeginWriting() {
    using std::chrono::milliseconds;
    constexpr int piece = 20;
    const auto patience = static_cast<int>(QueryInt(Prepare("PRAGMA busy_timeout")).value_or(0));
    const auto end = std::chrono::steady_clock::now() + milliseconds(patience);
    const BusyTimeout timeout(m_handle.get(), std::min(piece, patience), patience);
    for (;;) {
        try {
            ExecuteControl(Control::Begin);
            return;
        } catch (const Error& error) {
            if (error.Kind() != ErrorKind::Busy || std::chrono::steady_clock::now() >= end) {
                throw;
            }
        }
    }
}

void SqliteConnection::ExecuteControl(Control control) {
    const auto index = static_cast<std::size_t>(control);
    Statement*& statement = m_controls.at(index);
    if (statement == nullptr) {
        // A reader has no use for the write lock and may not take it.
        const bool readerBegins = control == Control::Begin && m_readOnly;
        statement = &Prepare(readerBegins ? "BEGIN" : kControlSql.at(index));
    }
    statement->Execute();
}

bool SqliteConnection::EngineInTransaction() const {
    return sqlite3_get_autocommit(m_handle.get()) == 0;
}

// A number that grows with every row that is written and every script that is run: the engine
// counts rows but not what scripts do to tables and indexes.
std::uint64_t SqliteConnection::WriteCount() const {
    return static_cast<std::uint64_t>(sqlite3_total_changes64(m_handle.get())) + m_scriptCount;
}

}  // namespace recorddb::sql
