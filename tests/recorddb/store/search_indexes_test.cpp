#include "recorddb/store/search_indexes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "open_database.h"
#include "recorddb/sql/savepoint.h"

namespace recorddb::schema {

namespace {

using ::testing::ElementsAre;
using ::testing::StartsWith;

class SearchIndexesTest : public OpenDatabaseTest {
  protected:
    void Ensure(std::string_view type, std::string_view field) {
        m_database->EnsureSearchIndex(Type(type), Field(type, field));
    }

    std::size_t IndexCount() {
        return Texts("SELECT name FROM sqlite_master WHERE type = 'index'").size();
    }

    const char* const m_byTitle = "SELECT dbid FROM bug WHERE title = $1";
};

TEST_F(SearchIndexesTest, FirstSearchMakesTheIndex) {
    EXPECT_THAT(Plan(m_byTitle), ElementsAre(StartsWith("SCAN")));
    Ensure("bug", "title");
    EXPECT_THAT(Plan(m_byTitle), ElementsAre(StartsWith("SEARCH")));
}

TEST_F(SearchIndexesTest, IndexIsThereInTheNextSession) {
    Ensure("bug", "title");
    Reopen();
    EXPECT_THAT(Plan(m_byTitle), ElementsAre(StartsWith("SEARCH")));
    const std::size_t before = IndexCount();
    Ensure("bug", "title");
    EXPECT_EQ(IndexCount(), before);
}

TEST_F(SearchIndexesTest, ColumnsWithAnIndexGetNoSecondOne) {
    const std::size_t before = IndexCount();
    for (const char* const field : {"dbid", "id", "source_id", "owner"}) {
        Ensure("bug", field);
    }
    Ensure("user", "login");
    Ensure("order", "Group");
    EXPECT_EQ(IndexCount(), before);
}

TEST_F(SearchIndexesTest, KnowsWhatIsSearchedByAnIndex) {
    const auto has = [this](std::string_view type, std::string_view field) {
        return m_database->HasSearchIndex(Type(type), Field(type, field));
    };
    for (const char* const field : {"dbid", "id", "source_id", "owner"}) {
        EXPECT_TRUE(has("bug", field)) << field;
    }
    for (const char* const field : {"watchers", "files", "log", "title"}) {
        EXPECT_FALSE(has("bug", field)) << field;
    }
    Ensure("bug", "title");
    EXPECT_TRUE(has("bug", "title"));
    Reopen();
    EXPECT_TRUE(has("bug", "title"));
}

TEST_F(SearchIndexesTest, LaterPartOfAKeyGetsItsOwn) {
    Ensure("order", "number");
    EXPECT_THAT(Plan("SELECT dbid FROM \"order\" WHERE number = $1"),
                ElementsAre(StartsWith("SEARCH")));
}

TEST_F(SearchIndexesTest, FieldsWithoutAColumnAreLeftAlone) {
    const std::size_t before = IndexCount();
    for (const char* const field : {"watchers", "files", "log"}) {
        EXPECT_NO_THROW(Ensure("bug", field));
    }
    EXPECT_EQ(IndexCount(), before);
}

TEST_F(SearchIndexesTest, IndexUndoneWithItsTransactionIsMadeAgain) {
    {
        const auto transaction = m_database->Begin();
        Ensure("bug", "title");
    }
    EXPECT_THAT(Plan(m_byTitle), ElementsAre(StartsWith("SCAN")));
    Ensure("bug", "title");
    EXPECT_THAT(Plan(m_byTitle), ElementsAre(StartsWith("SEARCH")));
}

TEST_F(SearchIndexesTest, IndexUndoneAfterAnInnerRollbackIsMadeAgain) {
    {
        const auto transaction = m_database->Begin();
        Ensure("bug", "title");
        { const sql::Savepoint savepoint(Connection()); }
        Ensure("bug", "title");
    }
    Ensure("bug", "title");
    EXPECT_THAT(Plan(m_byTitle), ElementsAre(StartsWith("SEARCH")));
}

TEST_F(SearchIndexesTest, ReadOnlyDatabaseIsSearchedAsItIs) {
    Reopen(Database::Mode::ReadOnly);
    EXPECT_NO_THROW(Ensure("bug", "title"));
    EXPECT_THAT(Plan(m_byTitle), ElementsAre(StartsWith("SCAN")));
}

}  // namespace

}  // namespace recorddb::schema
