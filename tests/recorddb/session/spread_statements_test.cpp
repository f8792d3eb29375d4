#include "spread_statements.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "random_work.h"
#include "recorddb/reader.h"

namespace recorddb {

namespace {

using testing::IsEmpty;

// The statements that go to all machines, by a part that tells them: none is asked for every record
// of a load or of a comparison.
const std::vector<std::string> kAskAll = {
    // How many records there are.
    "SELECT count(*) FROM",
    // The next thousand records.
    "ORDER BY dbid LIMIT 1000",
    // When an attachment is removed: whether others have its content.
    "SELECT 1 FROM zt_attachment WHERE sha256 = $1",
    // The duplicates of a record that is shown.
    "SELECT duplicate FROM zt_duplicate WHERE record_type = $1 AND original = $2",
    // Searches for values that are no key, and for records without a value.
    " IS NULL ORDER BY dbid LIMIT $", "WHERE \"votes\" = $1", "WHERE \"title\" = $1",
    "WHERE \"opened\" = $1", "WHERE \"owner\" = $1", "WHERE \"severity\" = $1",
    "WHERE \"state\" = $1"};

class SpreadStatementsTest : public testing::Test {
  protected:
    SpreadStatementsTest()
        : m_work(3, Writing::Gathered, RandomWork::Ahead::Much, Engine::PostgresSharded) {}

    // Reads all records with all that belongs to them, as for showing and comparing them.
    static void ReadAll(Database& database) {
        const sql::Transaction moment(database.GetConnection(), sql::Access::Reading);
        RecordReader reader(database);
        for (const schema::RecordType& type : database.GetSchema().Types()) {
            reader.Count(type);
            for (auto record = reader.Next(type, 0); record;
                 record = reader.Next(type, record->dbid)) {
                reader.Find(type, reader.Key(type, record->dbid));
                reader.History(*record);
                reader.Attachments(*record);
                reader.Original(*record);
                reader.Duplicates(*record);
            }
        }
    }

    // The statements that are prepared on the connection.
    static std::vector<std::string> Prepared(Database& database) {
        sql::Statement& list =
            database.GetConnection().Prepare("SELECT statement FROM pg_prepared_statements");
        const sql::ResetGuard guard(list);
        std::vector<std::string> statements;
        while (list.Step()) {
            statements.emplace_back(list.Text(0));
        }
        return statements;
    }

    RandomWork m_work;
};

TEST_F(SpreadStatementsTest, SayOnWhichMachineTheirRowsAre) {
    if (TestServer() == nullptr) {
        return;
    }
    m_work.Run(12);
    ReadAll(m_work.Base());
    SpreadStatements statements({"user", "desk", "bug", "task"}, {"bug__watchers"}, kAskAll);
    for (const std::string& statement : Prepared(m_work.Base())) {
        statements.Take(statement);
    }
    EXPECT_THAT(statements.Unclear(), IsEmpty());
    EXPECT_GT(statements.Clear(), 30U);
}

}  // namespace

}  // namespace recorddb
