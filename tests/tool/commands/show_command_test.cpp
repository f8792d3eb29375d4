#include "tool/commands/show_command.h"

#include <gmock/gmock.h>

#include "load_fixture.h"
#include "tool/process/usage_error.h"

namespace tool {
namespace {

using testing::HasSubstr;

class ShowTest : public OnEachEngine<LoadFixture> {
  protected:
    ShowTest() {
        m_options.attachments = m_folder.Path();
        m_folder.Write("note.txt", "hello");
        Load({Configuration("u.xml", "record", "user", "login"),
              Records("users.xml", {{{"login", "ann"}, {"email", "ann@example.org"}}}),
              Configuration("k.xml", "record", "keyword", "name"),
              Records("keywords.xml", {{{"name", "tide"}}, {{"name", "fog"}}}),
              Configuration("b.xml", "record", "bug", "source_id",
                            "<duplicate_id name=\"duplicate_of\"/>"),
              Records("bugs.xml",
                      {{{"source_id", "a"},
                        {"title", "Late\nferry"},
                        {"owner", "ann"},
                        {"keywords", "tide,fog"},
                        {"files", "1\nnote.txt\n5\na note"},
                        {"log", "1\t2020-01-02 03:04:00\tann\tsubmit\tnone\tNEW"}},
                       {{"source_id", "b"}, {"title", "Late"}, {"duplicate_of", "a"}}})});
    }

    std::string Show(const std::string& type = "", const std::string& id = "") {
        std::ostringstream out;
        RunShow({m_database, type, id}, out);
        return out.str();
    }
};

TEST_P(ShowTest, TypesAreShownWithTheirNumbersOfRecords) {
    EXPECT_EQ(Show(),
              "user             1\n"
              "keyword          2\n"
              "bug              2\n");
}

TEST_P(ShowTest, RecordsOfATypeAreShownOneALine) {
    EXPECT_EQ(Show("BUG"),
              "BUG00000001  NEW  a  Late...\n"
              "BUG00000002  CLOSED  b  Late\n");
}

TEST_P(ShowTest, ARecordIsShownWithAllThatBelongsToIt) {
    EXPECT_EQ(Show("bug", "BUG00000001"),
              "bug BUG00000001\n"
              "  dbid       1\n"
              "  id         BUG00000001\n"
              "  state      NEW\n"
              "  source_id  a\n"
              "  title\n"
              "    Late\n"
              "    ferry\n"
              "  owner      ann\n"
              "  keywords   tide, fog\n"
              "duplicates: BUG00000002\n"
              "history (1)\n"
              "  2020-01-02 03:04:00  ann  submit  none -> NEW\n"
              "attachments (1)\n"
              "  files: note.txt, 5 bytes, a note\n");
}

TEST_P(ShowTest, ADuplicateNamesItsOriginal) {
    EXPECT_THAT(Show("bug", "BUG00000002"), HasSubstr("duplicate of BUG00000001\n"));
}

TEST_P(ShowTest, ARecordIsFoundByItsKey) {
    EXPECT_THAT(Show("user", "ann"), HasSubstr("email  ann@example.org"));
}

TEST_P(ShowTest, AnUnknownTypeIsToldWhichThereAre) {
    try {
        Show("bogus");
        FAIL() << "no error";
    } catch (const UsageError& error) {
        EXPECT_THAT(error.what(), HasSubstr("user, keyword, bug"));
    }
}

TEST_P(ShowTest, AnUnknownRecordIsAnError) {
    EXPECT_THROW(Show("bug", "BUG9"), UsageError);
}

ON_EACH_ENGINE(ShowTest);

}  // namespace
}  // namespace tool
