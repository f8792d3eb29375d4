#include "recorddb/store/tables/search_indexes.h"

#include <gtest/gtest.h>

#include "open_database.h"
#include "recorddb/sql/savepoint.h"

namespace recorddb::schema {

namespace {

class SearchIndexesTest : public OnEachEngine<OpenDatabaseTest> {
  protected:
    void Ensure(std::string_view type, std::string_view field) {
        m_database->EnsureSearchIndex(Type(type), Field(type, field));
    }

    const char* const m_byTitle = "SELECT dbid FROM bug WHERE title = $1";
};

TEST_P(SearchIndexesTest, FirstSearchMakesTheIndex) {
    EXPECT_FALSE(IsIndexSearch(m_byTitle));
    Ensure("bug", "title");
    EXPECT_TRUE(IsIndexSearch(m_byTitle));
}

TEST_P(SearchIndexesTest, IndexIsThereInTheNextSession) {
    Ensure("bug", "title");
    Reopen();
    EXPECT_TRUE(IsIndexSearch(m_byTitle));
    const std::size_t before = IndexCount();
    Ensure("bug", "title");
    EXPECT_EQ(IndexCount(), before);
}

TEST_P(SearchIndexesTest, ColumnsWithAnIndexGetNoSecondOne) {
    const std::size_t before = IndexCount();
    for (const char* const field : {"dbid", "id", "source_id", "owner"}) {
        Ensure("bug", field);
    }
    Ensure("user", "login");
    Ensure("order", "Group");
    EXPECT_EQ(IndexCount(), before);
}

TEST_P(SearchIndexesTest, KnowsWhatIsSearchedByAnIndex) {
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

TEST_P(SearchIndexesTest, LaterPartOfAKeyGetsItsOwn) {
    Ensure("order", "number");
    EXPECT_TRUE(IsIndexSearch("SELECT dbid FROM \"order\" WHERE number = $1"));
}

TEST_P(SearchIndexesTest, FieldsWithoutAColumnAreLeftAlone) {
    const std::size_t before = IndexCount();
    for (const char* const field : {"watchers", "files", "log"}) {
        EXPECT_NO_THROW(Ensure("bug", field));
    }
    EXPECT_EQ(IndexCount(), before);
}

TEST_P(SearchIndexesTest, IndexUndoneWithItsTransactionIsMadeAgain) {
    {
        const auto transaction = m_database->Begin();
        Ensure("bug", "title");
    }
    EXPECT_FALSE(IsIndexSearch(m_byTitle));
    Ensure("bug", "title");
    EXPECT_TRUE(IsIndexSearch(m_byTitle));
}

TEST_P(SearchIndexesTest, IndexUndoneAfterAnInnerRollbackIsMadeAgain) {
    {
        const auto transaction = m_database->Begin();
        Ensure("bug", "title");
        { const sql::Savepoint savepoint(Connection()); }
        Ensure("bug", "title");
    }
    Ensure("bug", "title");
    EXPECT_TRUE(IsIndexSearch(m_byTitle));
}

TEST_P(SearchIndexesTest, ReadOnlyDatabaseIsSearchedAsItIs) {
    Reopen(Database::Mode::ReadOnly);
    EXPECT_NO_THROW(Ensure("bug", "title"));
    EXPECT_FALSE(IsIndexSearch(m_byTitle));
}

ON_EACH_LAYOUT(SearchIndexesTest);

}  // namespace

}  // namespace recorddb::schema
