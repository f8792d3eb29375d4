#ifndef TESTS_RECORDDB_SQL_SQL_TEST_H
#define TESTS_RECORDDB_SQL_SQL_TEST_H

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "engines.h"
#include "recorddb/errors.h"
#include "recorddb/sql.h"
#include "recorddb/sql/dialect.h"
#include "recorddb/store/tables/table_layout.h"
#include "temporary_folder.h"

namespace recorddb::sql {

// An open database with a table `thing(name, size, data)`, whose names are unique. In the sharded
// layout, connections take the tables for spread.
class SqlTest : public testing::Test {
  protected:
    explicit SqlTest(Engine engine = Engine::Sqlite)
        : m_place(engine, m_folder.File("test.db")),
          m_connection(Open(Path(), OpenMode::CreateNew)) {
        Transaction transaction(*m_connection);
        m_connection->ExecuteScript(
            "CREATE TABLE thing (name TEXT NOT NULL UNIQUE, size BIGINT, data " +
            std::string(m_connection->GetDialect().blobType) + ")");
        if (LayoutOn(engine) == Layout::Sharded) {
            m_takesTurns = true;
            m_connection->ExecuteScript(
                "CREATE TABLE zt_turn (number BIGINT); INSERT INTO zt_turn VALUES (0)");
        }
        transaction.Commit();
        ExpectTurns(*m_connection);
    }

    // Another connection to the same database.
    std::unique_ptr<Connection> OpenAnother(OpenMode mode) {
        auto another = Open(Path(), mode);
        ExpectTurns(*another);
        return another;
    }

    const std::string& Path() const { return m_place.Location(); }

    bool IsFile() const { return m_place.IsFile(); }

    void Insert(std::string_view name) { BoundInsert(name).Execute(); }

    void InsertLater(std::string_view name) { BoundInsert(name).ExecuteLater(); }

    std::int64_t Count() {
        return QueryInt(m_connection->Prepare("SELECT count(*) FROM thing")).value();
    }

    // Runs the function and returns the error that it throws.
    template <typename Function>
    Error ErrorOf(Function function) {
        try {
            function();
        } catch (const Error& error) {
            return error;
        }
        ADD_FAILURE() << "no error";
        return {ErrorKind::Other, "", ""};
    }

    Statement& BoundInsert(std::string_view name) {
        Statement& insert = m_connection->Prepare("INSERT INTO thing (name) VALUES ($1)");
        insert.BindAll(name);
        return insert;
    }

    TemporaryFolder m_folder;
    DatabasePlace m_place;
    bool m_takesTurns = false;
    std::unique_ptr<Connection> m_connection;

  private:
    void ExpectTurns(Connection& connection) const {
        if (m_takesTurns) {
            connection.ExpectSpreadTables(kTakeTurnSql);
        }
    }
};

}  // namespace recorddb::sql

#endif
