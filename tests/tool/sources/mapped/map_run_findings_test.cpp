#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>

#include "map_run_fixture.h"
#include "tool/sources/mapped/map_run.h"

namespace tool {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

TEST_F(MapRunTest, SaysWhichValuesATableLacks) {
    m_folder.Write("bugs.csv", "Nr,A\n1,x\n2,y\n3,y\n4,z\n");
    EXPECT_THAT(Bugs(", title: {from: A, table: {x: X}}"),
                ElementsAre("source_id=1 title=X",
                            "! title: the table of records: bug, field title has no value for "
                            "\"y\": source_id=2",
                            "! title: the table of records: bug, field title has no value for "
                            "\"y\": source_id=3",
                            "! title: the table of records: bug, field title has no value for "
                            "\"z\": source_id=4"));
    EXPECT_THAT(m_findings,
                ElementsAre("unknown-value: the table of records: bug, field title lacks 2 values, "
                            "in 3 places, first in bugs.csv, row 2 (line 3)"));
    EXPECT_THAT(Bugs(", title: {from: A, table: {x: X}, unknown: keep}").at(1),
                "source_id=2 title=y");
    EXPECT_THAT(Bugs(", title: {from: A, table: {x: X}, unknown: leave_out}").at(1), "source_id=2");
    EXPECT_THAT(Bugs(", title: {from: A, table: {x: X}, unknown: other}").at(1),
                "source_id=2 title=other");
}

TEST_F(MapRunTest, TellsWhatEachSameKeyDoes) {
    m_folder.Write("bugs.csv", "Nr,A,B\n1,a,x\n2,b,y\n1,c,z\n1,a,x\n");
    EXPECT_THAT(Bugs(", title: A, cc: B"),
                ElementsAre("source_id=1 title=a cc=[x]", "source_id=2 title=b cc=[y]",
                            "! its key \"1\" came before, in bugs.csv, row 1 (line 2): source_id=1 "
                            "title=c cc=[z]",
                            "! its key \"1\" came before, in bugs.csv, row 1 (line 2): source_id=1 "
                            "title=a cc=[x]"));
    EXPECT_THAT(Bugs(", title: A, cc: B", "  same_key: first\n"),
                ElementsAre("source_id=1 title=a cc=[x]", "source_id=2 title=b cc=[y]"));
    EXPECT_THAT(m_findings,
                ElementsAre(HasSubstr("repeated-key: records: bug: 2 keys came again"),
                            "different-repeat: records: bug: 1 key came again and said something "
                            "else: \"1\" of bugs.csv, row 1 (line 2), and differs in bugs.csv, row "
                            "3 (line 4)"));
    EXPECT_THAT(Bugs(", title: A, cc: B", "  same_key: merge\n"),
                ElementsAre("source_id=1 title=a cc=[x|z]", "source_id=2 title=b cc=[y]"));
}

TEST_F(MapRunTest, TellsOfValuesOutsideOfTheRowsUnlessTheyAreIgnored) {
    m_folder.Write("a.json", R"({"total":1,"page":{"next":"x"},"issues":[{"key":"1"}]})");
    EXPECT_THAT(Run("sources: {docs: {files: a.json, rows: issues, ignore: [/page]}}\nsteps:\n"
                    "- {records: bug, source: docs, key: source_id, fields: {source_id: key}}\n")
                    .front(),
                ElementsAre("source_id=1"));
    EXPECT_THAT(m_findings,
                ElementsAre("ignored-address: /page/next outside of the rows is left out by the "
                            "map (1 value)",
                            "unread-address: no step reads /total, which stands outside of the "
                            "rows (1 value)"));
}

TEST_F(MapRunTest, LeavesOutReferencesToWhatIsNowhere) {
    m_folder.Write("bugs.csv", "Nr,A\n1,\"2, 3, 4\"\n2,1\n");
    m_folder.Write("users.csv", "Login\n2\n");
    m_existing = "4";
    EXPECT_THAT(Run("sources: {bugs: {files: bugs.csv}, users: {files: users.csv}}\nsteps:\n"
                    "- {records: bug, source: bugs, key: source_id, fields: {source_id: Nr, "
                    "cc: {from: A, split: ',', known_only: true}}}\n"
                    "- {records: user, source: users, key: login, fields: {login: Login}}\n"
                    "- {duplicates: bug, source: bugs, key: source_id, fields: {source_id: Nr, "
                    "duplicate_of: {from: A, known_only: true}}}\n"),
                ElementsAre(ElementsAre("source_id=1 cc=[2|4]", "source_id=2"),
                            ElementsAre("login=2"), ElementsAre("source_id=2 duplicate_of=1")));
    EXPECT_THAT(m_findings, ElementsAre(HasSubstr("left-out: duplicates: bug, field duplicate_of: "
                                                  "1 reference"),
                                        HasSubstr("left-out: records: bug, field cc: 2 ")));
}

TEST_F(MapRunTest, PassesOverRowsForWhichATestFails) {
    m_folder.Write("bugs.csv", "Nr,A\n1,x\n2,y\n3,\n");
    EXPECT_THAT(Bugs("", "  when: [{from: A, has_value: true}, {from: A, is_not: y}]\n"),
                ElementsAre("source_id=1"));
    EXPECT_THAT(m_findings, ElementsAre("passed-over: records: bug: 2 rows passed over by 'when'"));
    EXPECT_THAT(Bugs("", "  when: [{from: A, not_in: [x, y]}]\n"), ElementsAre("source_id=3"));
}

TEST_F(MapRunTest, RejectsARowThatCannotBeReadOnce) {
    m_folder.Write("bugs.csv", "Nr\n1\n2,3\n");
    EXPECT_THAT(Run("sources: {bugs: {files: bugs.csv}}\nsteps:\n"
                    "- {records: user, source: bugs, key: login, fields: {login: Nr}}\n"
                    "- {records: bug, source: bugs, key: source_id, fields: {source_id: Nr}}\n"),
                ElementsAre(ElementsAre("login=1", "! it has 2 cells, and the header has 1:"),
                            ElementsAre("source_id=1")));
}

TEST_F(MapRunTest, ReplacesOrRejectsControlCharactersWhereTheMapSaysSo) {
    m_folder.Write("bugs.csv", "Nr,A\n1,x\x0Cy\n");
    EXPECT_THAT(Bugs(", title: A"), ElementsAre("source_id=1 title=x\x0Cy"));
    const std::string rest =
        "sources: {bugs: {files: bugs.csv}}\nsteps:\n- {records: bug, source: "
        "bugs, key: source_id, fields: {source_id: Nr, title: A}}\n";
    EXPECT_THAT(Run("forbidden_characters: replace\n" + rest).front(),
                ElementsAre("source_id=1 title=x\xEF\xBF\xBDy"));
    EXPECT_THAT(m_findings,
                ElementsAre(HasSubstr("replaced-character: records: bug, field title")));
    EXPECT_THAT(Run("forbidden_characters: reject\n" + rest).front(),
                ElementsAre("! title: it holds the control character U+000C, and the map rejects "
                            "such: source_id=1"));
}

TEST_F(MapRunTest, TellsOfAddressesThatNoRowHas) {
    m_folder.Write("a.jsonl", "{\"k\":1}\n");
    Run("sources: {a: {files: a.jsonl, ignore: gone}}\nsteps:\n"
        "- {records: bug, source: a, key: source_id, fields: {source_id: k, title: titel, "
        "owner: {from: who, optional: true}}}\n");
    EXPECT_THAT(m_findings,
                ElementsAre("missing-address: no row of a has titel, which is read in line 4, "
                            "column 75; correct it, or say optional: true there",
                            "missing-address: no row of a has gone, which is to be ignored in line "
                            "2, column 39; correct it, or take it out"));
    EXPECT_EQ(m_losses, 1);
}

TEST_F(MapRunTest, TellsOfWhatIsToBeIgnoredAroundTheRowsAndIsNotThere) {
    m_folder.Write("a.json", R"({"page":{"next":"x"},"issues":[{"key":"1"}]})");
    Run("sources: {docs: {files: a.json, rows: issues, ignore: [/page, /pages]}}\nsteps:\n"
        "- {records: bug, source: docs, key: source_id, fields: {source_id: key}}\n");
    EXPECT_THAT(m_findings,
                ElementsAre(HasSubstr("no row of docs has /pages, which is to be ignored"),
                            HasSubstr("/page/next outside of the rows is left out by the map")));
}

TEST_F(MapRunTest, ReadsNothingInFoldersThatIsNoFile) {
    m_folder.Write("bugs.csv", "Nr\n1\n");
    ASSERT_EQ(::mkfifo(m_folder.File("bugs2.csv").c_str(), 0600), 0);
    std::filesystem::create_directory_symlink(m_folder.Path(), m_folder.File("again"));
    std::filesystem::create_symlink("nowhere.csv", m_folder.File("bugs3.csv"));
    EXPECT_THAT(Run("sources: {bugs: {files: 'bugs*.csv'}}\n"
                    "steps: [{records: bug, source: bugs, key: source_id, "
                    "fields: {source_id: Nr}}]\n")
                    .front(),
                ElementsAre("source_id=1"));
    EXPECT_THAT(m_findings,
                ElementsAre("unread-file: not read, being pipes, devices, or links that lead to no "
                            "file: 3 files, again, bugs2.csv, bugs3.csv"));
}

TEST_F(MapRunTest, CountsValuesAtMoreAddressesThanItTellsApart) {
    std::string row = "{";
    for (int i = 0; i < 20010; ++i) {
        row += "\"a" + std::to_string(i) + "\":1,";
    }
    m_folder.Write("a.jsonl", row + R"("list":[1,{"b":2}],"id":"x"})" + "\n");
    EXPECT_THAT(Run("sources: {a: {files: a.jsonl, ignore: list}}\nsteps:\n"
                    "- {records: bug, source: a, key: source_id, fields: {source_id: id}}\n")
                    .front(),
                ElementsAre("source_id=x"));
    ASSERT_EQ(m_findings.size(), 20002U);
    EXPECT_EQ(m_findings[19999],
              "unread-address: no step reads a19999 of a (1 value, first in "
              "a.jsonl, row 1 (line 1))");
    EXPECT_EQ(m_findings[20000],
              "unread-address: no step reads 10 values at further addresses of a, of which there "
              "are too many to name each, first in a.jsonl, row 1 (line 1)");
    EXPECT_EQ(m_findings[20001], "ignored-address: list of a is left out by the map (2 values)");
}

}  // namespace
}  // namespace tool
