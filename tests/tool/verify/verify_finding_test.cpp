#include <gmock/gmock.h>

#include <string>

#include "verify/verify_fixture.h"

// How verify finds the record of the database that a record of a source is about.
namespace tool {
namespace {

using testing::EndsWith;

class VerifyFindingTest : public OnEachEngine<VerifyFixture> {};

ON_EACH_ENGINE(VerifyFindingTest);

TEST_P(VerifyFindingTest, FieldsWithoutAnIndexAreSearchedAllTheSame) {
    const auto sources =
        Together({Configuration("configuration.xml", "record", "bug", "title")},
                 {Records("bugs.xml", {{{"title", "One"}, {"votes", "1"}}, {{"title", "Two"}}})});
    EXPECT_EQ(LoadAndVerify(sources), 0) << Shown();
    ASSERT_EQ(Query(IsFile() ? "SELECT count(*) FROM sqlite_master WHERE name LIKE 'zt_search%'"
                             : "SELECT count(*) FROM pg_indexes WHERE schemaname = "
                               "current_schema() AND indexname LIKE 'zt_search%'"),
              "0");
    Damage("UPDATE bug SET votes = 2; UPDATE bug SET title = 'Tow' WHERE dbid = 2");
    Verify(sources);
    EXPECT_EQ(Differences(), "||||missing from the database\nBUG00000001|votes|1|2|");
}

TEST_P(VerifyFindingTest, ARecordWithoutStatesIsFoundByItsKey) {
    const auto sources = Together({Configuration("configuration.xml", "record", "user", "")},
                                  {Records("users.xml", {{{"login", "ann"}, {"email", "ann@x"}},
                                                         {{"login", "bob"}, {"email", "bob@x"}}})});
    EXPECT_EQ(LoadAndVerify(sources), 0) << Shown();
    Damage(
        "UPDATE \"user\" SET email = 'x' WHERE login = 'ann'; "
        "DELETE FROM \"user\" WHERE dbid = 2");
    Verify(sources);
    EXPECT_EQ(Differences(), "||||missing from the database\nann|email|ann@x|x|");
}

TEST_P(VerifyFindingTest, AReferenceAsOriginalIdIsReadAsAKey) {
    const auto sources = Together(
        {Configuration("users-configuration.xml", "record", "user", "login"),
         Records("users.xml", {{{"login", "2"}}, {{"login", "1"}}}),
         Configuration("bugs-configuration.xml", "record", "bug", "owner")},
        {Records("bugs.xml",
                 {{{"owner", "2"}, {"title", "Two"}}, {{"owner", "1"}, {"title", "One"}}})});
    EXPECT_EQ(LoadAndVerify(sources), 0) << Shown();
    Damage("UPDATE bug SET owner = 3 - owner");
    EXPECT_EQ(Verify(sources), 1);
}

TEST_P(VerifyFindingTest, ARecordWithoutAnOriginalIdCannotBeCompared) {
    EXPECT_EQ(LoadAndVerifyBugs({{{"title", "One"}}}), 1);
    EXPECT_EQ(Differences(), "||||cannot be compared: it has no original id");
    EXPECT_THAT(Shown(), EndsWith("NOT verified: 1 of 6 records differs.\n"));
}

TEST_P(VerifyFindingTest, SeveralRecordsOfOneOriginalIdCannotBeCompared) {
    const auto sources = Together({Configuration("configuration.xml", "record", "bug", "title")},
                                  {Records("bugs.xml", {{{"title", "One"}}, {{"title", "One"}}})});
    LoadAndVerify(sources);
    const std::string problem =
        "||||cannot be compared: several records of the database have the title \"One\"";
    EXPECT_EQ(Differences(), problem + "\n" + problem);
}

}  // namespace
}  // namespace tool
