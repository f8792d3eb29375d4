#include "recorddb/store/atomic_write.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "recorddb/sql/dialect.h"

namespace recorddb {

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

// A connection that notes what is asked of transactions; nothing else of it is used.
class NotingConnection final : public sql::Connection {
  public:
    explicit NotingConnection(bool survivesErrors) : m_survivesErrors(survivesErrors) {}

    sql::Statement& Prepare(std::string_view /*sql*/) override { throw std::bad_alloc(); }
    std::unique_ptr<sql::Statement> PrepareOwn(std::string_view /*sql*/) override {
        return nullptr;
    }
    void ExecuteScript(std::string_view /*sql*/) override {}
    bool HasTable(std::string_view /*name*/) override { return false; }
    bool HasIndex(std::string_view /*name*/) override { return false; }
    const sql::Dialect& GetDialect() const override { return m_dialect; }
    bool IsReadOnly() const override { return false; }
    bool TransactionSurvivesErrors() const override { return m_survivesErrors; }

    std::vector<std::string> noted;

  protected:
    void Run(Control control) override {
        constexpr const char* names[] = {"begin",     "commit",  "roll back",
                                         "savepoint", "release", "roll back to savepoint"};
        noted.emplace_back(names[static_cast<int>(control)]);
    }
    bool EngineInTransaction() const override { return true; }

  private:
    bool m_survivesErrors;
    sql::Dialect m_dialect{};
};

// What an AtomicWrite that is kept asks of the connection inside a transaction.
std::vector<std::string> TakenInTransaction(bool survivesErrors, AtomicWrite::Refusable refusable) {
    NotingConnection connection(survivesErrors);
    const sql::Transaction transaction(connection);
    connection.noted.clear();
    AtomicWrite write(connection, refusable);
    write.Keep();
    return connection.noted;
}

TEST(AtomicWriteTest, IsATransactionWhereThereIsNone) {
    NotingConnection connection(true);
    AtomicWrite write(connection, AtomicWrite::Refusable::None);
    EXPECT_TRUE(write.UndoesAll());
    write.Keep();
    EXPECT_THAT(connection.noted, ElementsAre("begin", "commit"));
}

TEST(AtomicWriteTest, TakesNoSavepointForOneStatementThatTheEngineUndoes) {
    EXPECT_THAT(TakenInTransaction(true, AtomicWrite::Refusable::First), IsEmpty());
    EXPECT_THAT(TakenInTransaction(true, AtomicWrite::Refusable::Any),
                ElementsAre("savepoint", "release"));
}

TEST(AtomicWriteTest, TakesASavepointWhereARefusalWouldEndTheTransaction) {
    EXPECT_THAT(TakenInTransaction(false, AtomicWrite::Refusable::First),
                ElementsAre("savepoint", "release"));
    EXPECT_THAT(TakenInTransaction(false, AtomicWrite::Refusable::None), IsEmpty());
}

}  // namespace

}  // namespace recorddb
