#ifndef RECORDDB_SQL_POSTGRES_POSTGRES_CONNECTION_H
#define RECORDDB_SQL_POSTGRES_POSTGRES_CONNECTION_H

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "recorddb/sql.h"
#include "recorddb/sql/postgres/array_statements.h"
#include "recorddb/sql/postgres/postgres_connector.h"
#include "recorddb/sql/postgres/postgres_handle.h"
#include "recorddb/sql/statement_cache.h"

namespace recorddb::sql {

// A connection to one schema of a database on a PostgreSQL server. Programs that write to one
// schema take turns: each transaction that may write waits for the one before, up to
// `lock_timeout`.
class PostgresConnection final : public Connection {
  public:
    // Connects to the database at a URL. Throws Error as sql::Open does. With OpenMode::CreateNew,
    // the first transaction makes the schema that the URL names if there is none.
    static std::unique_ptr<Connection> Open(const std::string& url, OpenMode mode);

    // By the connections that the connector makes.
    explicit PostgresConnection(PostgresConnector connector);
    ~PostgresConnection() override;

    Statement& Prepare(std::string_view sql) override;
    std::unique_ptr<Statement> PrepareOwn(std::string_view sql) override;
    std::unique_ptr<Statement> PrepareScan(std::string_view sql) override;
    void ExecuteScript(std::string_view sql) override;
    bool HasTable(std::string_view name) override;
    bool HasIndex(std::string_view name) override;
    std::unique_ptr<RowWriter> MakeRowWriter() override;
    std::unique_ptr<RowReader> MakeRowReader() override;
    bool ReadsManyForLess() const override { return true; }
    bool CanReconnect() const override { return true; }
    void Reconnect(std::chrono::milliseconds patience) override;
    bool KeepTurn() override;
    void LetOthersWrite() override;
    std::string ShareMoment() override;
    bool JoinMoment(const std::string& moment) override;
    bool CanSpreadTables() override;
    void ExpectSpreadTables(std::string_view takeTurn) override;
    const Dialect& GetDialect() const override;
    bool IsReadOnly() const override { return m_connector.IsReadOnly(); }
    bool TransactionSurvivesErrors() const override { return false; }

  protected:
    void Run(Control control) override;
    bool EngineInTransaction() const override;

  private:
    void Begin();
    void Commit();
    void NoteTurn(const PostgresResult& begun);
    void BeginServerSavepoint();
    void ReleaseServerSavepoint();
    void RollbackToServerSavepoint();

    PostgresConnector m_connector;
    PostgresHandle m_handle;
    bool m_keepsTurn = false;
    bool m_othersWait = false;  // when the transaction under way began; where the turn is kept
    // Where turns are counted: the number of the latest transaction for writing, whether it was
    // committed, and whether all since the last KeepTurn were this connection's.
    std::int64_t m_turn = 0;
    bool m_turnCommitted = false;
    bool m_allTurnsOwn = false;
    ArrayStatements m_arrayStatements;
    StatementCache m_statements;  // destroyed before the handle that the statements belong to
};

}  // namespace recorddb::sql

#endif
