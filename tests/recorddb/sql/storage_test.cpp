#include "recorddb/sql/storage.h"

#include "sql/sql_test.h"

namespace recorddb::sql {

namespace {

class StorageTest : public SqlTest {};

TEST_F(StorageTest, IsThatOfTheValueWhateverTheColumnWasDeclaredAs) {
    m_connection->ExecuteScript(
        "INSERT INTO thing VALUES ('a', '7 or so', 7); INSERT INTO thing VALUES (x'62', 7, 0.5)");
    Statement& select = m_connection->Prepare("SELECT name, size, data, NULL FROM thing");
    const ResetGuard guard(select);
    ASSERT_TRUE(select.Step());
    EXPECT_EQ(StorageOf(select, 0), Storage::Text);
    EXPECT_EQ(StorageOf(select, 1), Storage::Text);
    EXPECT_EQ(StorageOf(select, 2), Storage::Integer);
    EXPECT_EQ(StorageOf(select, 3), Storage::Null);
    ASSERT_TRUE(select.Step());
    EXPECT_EQ(StorageOf(select, 0), Storage::Blob);
    EXPECT_EQ(StorageOf(select, 1), Storage::Integer);
    EXPECT_EQ(StorageOf(select, 2), Storage::Real);
}

class StorageOnServerTest : public SqlTest {
  protected:
    StorageOnServerTest() : SqlTest(Engine::Postgres) {}
};

TEST_F(StorageOnServerTest, IsThatOfTheColumn) {
    m_connection->Prepare("INSERT INTO thing VALUES ('a', 7, '\\x62')").Execute();
    Statement& select = m_connection->Prepare("SELECT name, size, data, NULL, 0.5 FROM thing");
    const ResetGuard guard(select);
    ASSERT_TRUE(select.Step());
    EXPECT_EQ(StorageOf(select, 0), Storage::Text);
    EXPECT_EQ(StorageOf(select, 1), Storage::Integer);
    EXPECT_EQ(StorageOf(select, 2), Storage::Blob);
    EXPECT_EQ(StorageOf(select, 3), Storage::Null);
    EXPECT_EQ(StorageOf(select, 4), Storage::Real);
}

}  // namespace

}  // namespace recorddb::sql
