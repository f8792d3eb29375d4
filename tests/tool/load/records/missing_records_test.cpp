#include "tool/load/records/missing_records.h"

#include <gmock/gmock.h>

#include <fstream>
#include <iterator>

#include "load_fixture.h"

namespace tool {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

constexpr const char* kOwnerByLogin =
    "<record_reference_mapping_list><m target_field=\"owner\" reference_field=\"email\"/>"
    "</record_reference_mapping_list>";

class MissingRecordsTest : public OnEachEngine<LoadFixture> {
  protected:
    // Loads bugs under a configuration with `more` in it.
    int LoadBugs(const std::vector<Fields>& bugs, std::string_view more = "",
                 std::string_view data = "record") {
        return Load({Configuration("bugs-configuration.xml", data, "bug", "source_id", more),
                     Records("bugs.xml", bugs)});
    }
};

TEST_P(MissingRecordsTest, AReferenceWaitsForItsRecord) {
    EXPECT_EQ(LoadBugs({{{"source_id", "a"}, {"title", "A"}, {"owner", " ann "}}}), 1);
    EXPECT_THAT(Said(), HasSubstr("It waits for the user \"ann\" (field owner)."));
}

TEST_P(MissingRecordsTest, AMappedReferenceNamesTheFieldThatIsSearched) {
    EXPECT_EQ(LoadBugs({{{"source_id", "a"}, {"title", "A"}, {"owner", "ann@x"}}}, kOwnerByLogin),
              1);
    EXPECT_THAT(Said(), HasSubstr("It waits for the user whose email is \"ann@x\" (field owner)."));
}

// The importer finds a field's mapping by the very name that the record writes.
TEST_P(MissingRecordsTest, AFieldWrittenInAnotherCaseThanItsMappingIsSearchedByTheKey) {
    EXPECT_EQ(LoadBugs({{{"source_id", "a"}, {"title", "A"}, {"Owner", "ann"}}}, kOwnerByLogin), 1);
    EXPECT_THAT(Said(), HasSubstr("It waits for the user \"ann\" (field owner)."));
    EXPECT_EQ(
        Load({Configuration("bugs-configuration.xml", "record", "bug", "source_id", kOwnerByLogin),
              Records("late.xml", {{{"source_id", "b"}, {"title", "B"}, {"Owner", "bob"}}}),
              Configuration("users-configuration.xml", "record", "user", "login"),
              Records("users.xml", {{{"login", "bob"}}})}),
        0)
        << Said();
}

TEST_P(MissingRecordsTest, OnlyTheMissingMembersOfAListAreNamed) {
    Load({Configuration("keywords-configuration.xml", "record", "keyword", "name"),
          Records("keywords.xml", {{{"name", "k1"}}})});
    EXPECT_EQ(LoadBugs({{{"source_id", "a"}, {"title", "A"}, {"keywords", "k1, k2,,k3"}}}), 1);
    EXPECT_THAT(Said(), AllOf(HasSubstr("It waits for the keyword \"k2\" (field keywords). It "
                                        "waits for the keyword \"k3\" (field keywords)."),
                              Not(HasSubstr("keyword \"k1\""))));
}

TEST_P(MissingRecordsTest, ADuplicateWaitsForItsOriginal) {
    EXPECT_EQ(LoadBugs({{{"source_id", "b"}, {"title", "B"}, {"duplicate_of", "a"}}},
                       "<duplicate_id name=\"duplicate_of\"/>"),
              1);
    EXPECT_THAT(Said(),
                HasSubstr("It waits for the bug whose source_id is \"a\" (field duplicate_of)."));
}

TEST_P(MissingRecordsTest, ARejectedOneIsNamedWithItsPlace) {
    EXPECT_EQ(LoadBugs({{{"source_id", "a"}, {"title", "A"}, {"votes", "many"}},
                        {{"source_id", "b"}, {"title", "B"}, {"duplicate_of", "a"}}},
                       "<duplicate_id name=\"duplicate_of\"/>"),
              1);
    EXPECT_THAT(Said(), HasSubstr("(field duplicate_of), which was rejected too: " +
                                  m_folder.File("bugs.xml") + ", record 1."));
}

TEST_P(MissingRecordsTest, HistoryWaitsForItsRecord) {
    LoadBugs({{{"source_id", "a"}, {"title", "A"}, {"votes", "many"}}});
    EXPECT_EQ(LoadBugs({{{"source_id", "a"},
                         {"history", "1\t2020-01-01 00:00:00\tu\tsubmit\tnone\tNEW"}}},
                       "", "history"),
              1);
    EXPECT_THAT(Said(), HasSubstr("It waits for the bug whose source_id is \"a\"."));
}

TEST_P(MissingRecordsTest, AnUpdateThatCreatesNothingWaitsForItsRecord) {
    EXPECT_EQ(LoadBugs({{{"source_id", "a"}, {"title", "A"}}}, "<updaterecord name=\"TRUE\"/>"), 1);
    EXPECT_THAT(Said(), HasSubstr("It waits for the bug whose source_id is \"a\"."));
}

TEST_P(MissingRecordsTest, ARecordThatLacksNothingWaitsForNothing) {
    EXPECT_EQ(
        LoadBugs({{{"source_id", "a"}, {"title", "A"}, {"votes", "many"}, {"owner", "blank"}}}), 1);
    EXPECT_THAT(Said(), Not(HasSubstr("waits")));
}

TEST_P(MissingRecordsTest, TheRejectsFolderSaysItToo) {
    m_options.rejects = m_folder.File("rejects");
    LoadBugs({{{"source_id", "a"}, {"title", "A"}, {"owner", "ann"}}});
    std::ifstream file(m_folder.File("rejects/0001-records.xml"));
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    EXPECT_THAT(text, HasSubstr("It waits for the user \"ann\" (field owner). -->\n<record>"));
}

ON_EACH_ENGINE(MissingRecordsTest);

}  // namespace
}  // namespace tool
