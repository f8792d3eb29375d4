#include "recorddb/store/counted_record_ids.h"

#include <gtest/gtest.h>

#include <limits>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

#include "open_database.h"
#include "platform/messages/pamsgexception.h"
#include "recorddb/sql/savepoint.h"
#include "recorddb/store/batch/database_batch.h"
#include "recorddb/store/tables/tables.h"

namespace recorddb::schema {

namespace {

class CountedRecordIdsTest : public OnEachEngine<OpenDatabaseTest> {
  protected:
    // Inserts a bug with the next number and returns that.
    std::int64_t InsertBug() { return InsertBug(*m_database, *m_ids); }

    static std::int64_t InsertBug(Database& database, CountedRecordIds& ids) {
        const RecordType& bug = *database.GetSchema().FindType("bug");
        const std::int64_t dbid = ids.Next(bug);
        sql::Statement& insert = database.GetConnection().Prepare(
            "INSERT INTO bug (dbid, id, state, title) VALUES ($1, $2, 'NEW', 't')");
        const std::string id = FormatDisplayId(bug.prefix, dbid);
        insert.BindAll(dbid, id);
        insert.Execute();
        DatabaseBatch::Of(database).Numbers().Note(bug, dbid);
        return dbid;
    }

    void InsertUser(std::int64_t dbid) {
        Run("INSERT INTO \"user\" (dbid, login) VALUES (" + std::to_string(dbid) + ", 'odd')");
        DatabaseBatch::Of(*m_database).Numbers().Note(Type("user"), dbid);
    }

    void Reopen() {
        OpenDatabaseTest::Reopen();
        m_ids.emplace(DatabaseBatch::Of(*m_database), TheSchema());
    }

    std::optional<CountedRecordIds> m_ids{std::in_place, DatabaseBatch::Of(*m_database),
                                          TheSchema()};
};

TEST_P(CountedRecordIdsTest, NumbersCountFromOneInEveryType) {
    const auto transaction = m_database->Begin();
    EXPECT_EQ(InsertBug(), 1);
    EXPECT_EQ(InsertBug(), 2);
    EXPECT_EQ(m_ids->Next(Type("user")), 1);
}

TEST_P(CountedRecordIdsTest, NumbersGoOnInTheNextTransactionAndSession) {
    {
        auto transaction = m_database->Begin();
        InsertBug();
        transaction.Commit();
    }
    {
        auto transaction = m_database->Begin();
        EXPECT_EQ(InsertBug(), 2);
        transaction.Commit();
    }
    Reopen();
    const auto transaction = m_database->Begin();
    EXPECT_EQ(InsertBug(), 3);
}

TEST_P(CountedRecordIdsTest, RolledBackNumbersAreFreeAgain) {
    {
        const auto transaction = m_database->Begin();
        InsertBug();
    }
    auto transaction = m_database->Begin();
    EXPECT_EQ(InsertBug(), 1);
    {
        const sql::Savepoint savepoint(Connection());
        EXPECT_EQ(InsertBug(), 2);
    }
    EXPECT_EQ(InsertBug(), 2);
    transaction.Commit();
}

TEST_P(CountedRecordIdsTest, AnotherWritersRecordsAreSeen) {
    {
        auto transaction = m_database->Begin();
        InsertBug();
        transaction.Commit();
    }
    {
        const auto other = Database::Open(Path(), Database::Mode::ReadWrite);
        CountedRecordIds otherIds(DatabaseBatch::Of(*other), other->GetSchema());
        auto transaction = other->Begin();
        EXPECT_EQ(InsertBug(*other, otherIds), 2);
        transaction.Commit();
    }
    const auto transaction = m_database->Begin();
    EXPECT_EQ(InsertBug(), 3);
}

TEST_P(CountedRecordIdsTest, NumbersAreGivenOutInATransactionOnly) {
    EXPECT_THROW(m_ids->Next(Type("bug")), std::logic_error);
}

TEST_P(CountedRecordIdsTest, HighestNumberThatThereIsEndsTheCount) {
    InsertUser(std::numeric_limits<std::int64_t>::max());
    const auto transaction = m_database->Begin();
    try {
        m_ids->Next(Type("user"));
        ADD_FAILURE() << "a number was given out";
    } catch (PaMsgException* exception) {
        EXPECT_EQ(AdExtractFirstMsgAndDeleteException(exception).ToUtf8(),
                  "No record of type \"user\" can be added: the dbid 9223372036854775807, which a "
                  "record has, is the highest that there is.");
    }
}

TEST_P(CountedRecordIdsTest, NumbersBelowOneAreNotCountedOn) {
    InsertUser(-5);
    const auto transaction = m_database->Begin();
    EXPECT_EQ(m_ids->Next(Type("user")), 1);
}

ON_EACH_LAYOUT(CountedRecordIdsTest);

}  // namespace

}  // namespace recorddb::schema
