#include "recorddb/sql/postgres/postgres_connection.h"

#include <fmt/format.h>

#include <stdexcept>
#include <utility>

#include "recorddb/errors.h"
#include "recorddb/sql/dialect.h"
#include "recorddb/sql/postgres/postgres_cursor.h"
#include "recorddb/sql/postgres/postgres_row_reader.h"
#include "recorddb/sql/postgres/postgres_row_writer.h"
#include "recorddb/sql/postgres/postgres_statement.h"

namespace recorddb::sql {

namespace {

// Texts compare by code point, as everywhere else, whatever the language of the server.
constexpr Dialect kPostgresDialect = {
    .dbIdType = "BIGINT PRIMARY KEY",
    .textType = "TEXT COLLATE \"C\"",
    .blobType = "BYTEA",
    .clusteredTable = "",
    .foreignKeysAhead = false,
    .mostColumns = 1600,
    .rightToIndex =
        "SELECT pg_has_role(t.relowner, 'USAGE'), has_schema_privilege(n.oid, 'CREATE'), "
        "current_user, pg_get_userbyid(t.relowner), n.nspname "
        "FROM pg_class AS t JOIN pg_namespace AS n ON n.oid = t.relnamespace "
        "WHERE n.nspname = current_schema() AND t.relkind = 'r' AND t.relname = $1",
};

// One name serves every savepoint: the server always takes the innermost one of that name.
constexpr const char* kBeginSavepoint = "SAVEPOINT zt_savepoint";
constexpr const char* kReleaseSavepoint = "RELEASE SAVEPOINT zt_savepoint";

}  // namespace

std::unique_ptr<Connection> PostgresConnection::Open(const std::string& url, OpenMode mode) {
    return std::make_unique<PostgresConnection>(PostgresConnector(url, mode));
}

PostgresConnection::PostgresConnection(PostgresConnector connector)
    : m_connector(std::move(connector)),
      m_handle(m_connector.Connect()),
      m_arrayStatements(m_handle) {}

PostgresConnection::~PostgresConnection() {
    // The statements that are kept go with it, and need not be dropped one by one.
    m_handle.Close();
}

Statement& PostgresConnection::Prepare(std::string_view sql) {
    return m_statements.Get(sql, [&] { return PrepareOwn(sql); });
}

std::unique_ptr<Statement> PostgresConnection::PrepareOwn(std::string_view sql) {
    return std::make_unique<PostgresStatement>(m_handle, sql);
}

std::unique_ptr<Statement> PostgresConnection::PrepareScan(std::string_view sql) {
    return std::make_unique<PostgresCursor>(*this, m_handle, sql);
}

// A script that is no SQL is refused whole, with what would go in front of it.
void PostgresConnection::ExecuteScript(std::string_view sql) {
    m_handle.Settle();
    m_handle.Run(std::string(sql));
}

// A table of a record database has nothing that runs by itself or hides rows: no triggers, rules,
// policies, computed columns or partitions. It may belong to another role, as long as this one has
// all the rights that it needs.
bool PostgresConnection::HasTable(std::string_view name) {
    Statement& find = Prepare(
        "SELECT NOT EXISTS (SELECT FROM pg_trigger WHERE tgrelid = t.oid AND NOT tgisinternal) "
        "AND NOT EXISTS (SELECT FROM pg_rewrite WHERE ev_class = t.oid) "
        "AND NOT EXISTS (SELECT FROM pg_attribute WHERE attrelid = t.oid AND attgenerated <> '') "
        "AND NOT EXISTS (SELECT FROM pg_inherits WHERE inhparent = t.oid) "
        "AND NOT t.relrowsecurity, "
        "(SELECT string_agg(wanted, ', ') FROM unnest(string_to_array($2, ' ')) AS wanted "
        "WHERE NOT has_table_privilege(t.oid, wanted)), current_user, current_schema() "
        "FROM pg_class AS t JOIN pg_namespace AS n ON n.oid = t.relnamespace "
        "WHERE n.nspname = current_schema() AND t.relkind = 'r' AND t.relname = $1");
    const ResetGuard guard(find);
    find.BindAll(name, std::string_view(IsReadOnly() ? "SELECT" : "SELECT INSERT UPDATE DELETE"));
    if (!find.Step() || find.Int(0) == 0) {
        return false;
    }
    if (!find.IsNull(1)) {
        throw Error(ErrorKind::PermissionDenied,
                    fmt::format("the role {0} lacks the right {1} on the table {2}; the role that "
                                "owns it can give it: GRANT {3} ON ALL TABLES IN SCHEMA {4} TO {0}",
                                Quoted(find.Text(2)), find.Text(1), Quoted(name),
                                IsReadOnly() ? "SELECT" : "SELECT, INSERT, UPDATE, DELETE",
                                Quoted(find.Text(3))),
                    "");
    }
    return true;
}

bool PostgresConnection::HasIndex(std::string_view name) {
    Statement& find = Prepare(
        "SELECT 1 FROM pg_class AS t JOIN pg_namespace AS n ON n.oid = t.relnamespace "
        "WHERE n.nspname = current_schema() AND t.relkind = 'i' AND t.relname = $1");
    find.BindAll(name);
    return QueryInt(find).has_value();
}

std::unique_ptr<RowWriter> PostgresConnection::MakeRowWriter() {
    return std::make_unique<PostgresRowWriter>(m_handle, m_arrayStatements);
}

std::unique_ptr<RowReader> PostgresConnection::MakeRowReader() {
    return std::make_unique<PostgresRowReader>(m_handle, m_arrayStatements);
}

void PostgresConnection::Reconnect(std::chrono::milliseconds patience) {
    if (InTransaction()) {
        throw std::logic_error("a connection is made anew while a transaction is open");
    }
    m_handle.Close();
    m_keepsTurn = false;
    m_allTurnsOwn = false;
    m_handle.TakeOver(m_connector.Connect(patience));
}

bool PostgresConnection::CanSpreadTables() {
    return QueryInt(Prepare("SELECT 1 FROM pg_extension WHERE extname = 'citus'")).has_value();
}

void PostgresConnection::ExpectSpreadTables(std::string_view takeTurn) {
    if (InTransaction()) {
        throw std::logic_error("a connection is set up for spread tables in a transaction");
    }
    m_connector.ExpectSpreadTables(takeTurn);
    m_arrayStatements.SetStanding(Standing::SpreadOverMachines);
    m_handle.Run(PostgresConnector::kSpreadTablesSettings);
}

// The number of a turn is undone with the transaction that took it.
void PostgresConnection::NoteTurn(const PostgresResult& begun) {
    if (!m_connector.ExpectsSpreadTables() || IsReadOnly()) {
        return;
    }
    if (begun.RowCount() != 1) {
        throw Error(ErrorKind::Corrupt,
                    "the row is missing by which writers take turns: zt_turn must have one",
                    m_connector.BeginSql());
    }
    const std::int64_t turn = begun.Int(0, 0);
    m_allTurnsOwn = m_allTurnsOwn && turn == m_turn + (m_turnCommitted ? 1 : 0);
    m_turn = turn;
    m_turnCommitted = false;
}

// The lock of the schema can be had by the transaction and by the connection at once. Where turns
// are counted, nobody is kept from writing; it shows when somebody has.
bool PostgresConnection::KeepTurn() {
    if (m_connector.ExpectsSpreadTables()) {
        return std::exchange(m_allTurnsOwn, true);
    }
    if (!m_keepsTurn) {
        m_handle.Run(m_connector.LockSql());
        m_keepsTurn = true;
        m_othersWait = false;
        return false;
    }
    if (std::exchange(m_othersWait, false)) {
        // The transaction under way still has it.
        m_handle.Run(m_connector.UnlockSql());
        m_keepsTurn = false;
    }
    return true;
}

void PostgresConnection::LetOthersWrite() {
    if (!m_keepsTurn) {
        return;
    }
    try {
        m_handle.Run(m_connector.UnlockSql());
    } catch (const Error& error) {
        // A server gives the locks of a connection back that was lost.
        if (error.Kind() != ErrorKind::ConnectionLost) {
            throw;
        }
    }
    m_keepsTurn = false;
}

std::string PostgresConnection::ShareMoment() {
    return std::string(m_handle.Run("SELECT pg_export_snapshot()").Text(0, 0));
}

// The name comes from the server (pg_export_snapshot), so it needs no quoting.
bool PostgresConnection::JoinMoment(const std::string& moment) {
    m_handle.Run("SET TRANSACTION SNAPSHOT '" + moment + "'");
    return true;
}

const Dialect& PostgresConnection::GetDialect() const {
    return kPostgresDialect;
}

void PostgresConnection::Run(Control control) {
    switch (control) {
        case Control::Begin:
            Begin();
            break;
        case Control::BeginReading:
            m_handle.GiveUpLeft();
            m_handle.Run(std::string(PostgresConnector::kBeginReading));
            break;
        case Control::Commit:
            Commit();
            break;
        case Control::Rollback:
            m_handle.GiveUpLeft();
            m_handle.Run("ROLLBACK");
            break;
        case Control::BeginSavepoint:
            BeginServerSavepoint();
            break;
        case Control::ReleaseSavepoint:
            ReleaseServerSavepoint();
            break;
        case Control::RollbackToSavepoint:
            RollbackToServerSavepoint();
            break;
    }
}

// Whether others wait is asked for KeepTurn in the same round trip.
void PostgresConnection::Begin() {
    m_handle.GiveUpLeft();
    try {
        if (m_keepsTurn) {
            const PostgresResult waits =
                m_handle.Run(m_connector.BeginSql() + "; " + m_connector.WaitsSql());
            m_othersWait = waits.Int(0, 0) != 0;
        } else {
            NoteTurn(m_handle.Run(m_connector.BeginSql()));
        }
    } catch (...) {
        if (EngineInTransaction()) {
            m_handle.Run("ROLLBACK");
        }
        throw;
    }
}

// Savepoints go to the server with the next statement: so they cost no round trip, and nothing at
// all when there is no statement. In a transaction that has failed they are refused, which is to
// show at once.
void PostgresConnection::BeginServerSavepoint() {
    // What was sent before does not belong to it.
    if (m_handle.AwaitsAnswers()) {
        m_handle.Settle();
    }
    m_handle.Defer(kBeginSavepoint);
    if (m_handle.GetState() == PostgresHandle::State::InFailedTransaction) {
        m_handle.Settle();
    }
}

void PostgresConnection::ReleaseServerSavepoint() {
    if (m_handle.LastDeferred() == kBeginSavepoint) {
        m_handle.DropLastDeferred();
        return;
    }
    m_handle.Defer(kReleaseSavepoint);
    // What was done in the savepoint has to have gone well before it is given up.
    if (m_handle.AwaitsAnswers() ||
        m_handle.GetState() == PostgresHandle::State::InFailedTransaction) {
        m_handle.Settle();
    }
}

void PostgresConnection::RollbackToServerSavepoint() {
    if (m_handle.LastDeferred() == kBeginSavepoint) {
        return;
    }
    if (m_handle.AwaitsAnswers()) {
        m_handle.GiveUpLeft();
    }
    m_handle.Run("ROLLBACK TO SAVEPOINT zt_savepoint");
}

// A server takes the commit of a failed transaction for its roll-back, and says so in the answer
// only.
void PostgresConnection::Commit() {
    if (m_handle.Run("COMMIT").Command() != "COMMIT") {
        throw Error(ErrorKind::Other,
                    "the transaction was rolled back, since a statement in it had failed",
                    "COMMIT");
    }
    m_turnCommitted = m_turnCommitted || !InReading();
}

bool PostgresConnection::EngineInTransaction() const {
    const PostgresHandle::State state = m_handle.GetState();
    return state == PostgresHandle::State::InTransaction ||
           state == PostgresHandle::State::InFailedTransaction;
}

}  // namespace recorddb::sql
