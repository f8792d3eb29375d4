#include "tool/sources/mapped/map_run.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "map_run_fixture.h"
#include "tool/io/source_error.h"

namespace tool {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

TEST_F(MapRunTest, GivesFieldsTheValuesOfColumns) {
    m_folder.Write("bugs.csv", "Nr,Title\n1,one\n2,\n");
    EXPECT_THAT(Bugs(", title: Title"), ElementsAre("source_id=1 title=one", "source_id=2"));
    EXPECT_THAT(m_findings, IsEmpty());
}

TEST_F(MapRunTest, TakesTheFirstAddressThatHasAValue) {
    m_folder.Write("bugs.csv", "Nr,A,B\n1,,b\n2,n/a,b\n3,a,b\n4,,\n");
    EXPECT_THAT(Bugs(", title: {from: [A, B], null_if: n/a, default: none}"),
                ElementsAre("source_id=1 title=b", "source_id=2 title=b", "source_id=3 title=a",
                            "source_id=4 title=none"));
}

TEST_F(MapRunTest, FillsTemplatesUnlessAPartIsMissing) {
    m_folder.Write("bugs.csv", "Nr,A\n1,x\n2,\n");
    EXPECT_THAT(Bugs(", title: {text: '{A}-{Nr}{{}}'}"),
                ElementsAre("source_id=1 title=x-1{}", "source_id=2"));
}

TEST_F(MapRunTest, ChangesTextsInOneOrderWhateverTheOrderInTheMap) {
    m_folder.Write("bugs.csv", "Nr,A\n1, Old-Text \n");
    EXPECT_THAT(Bugs(", title: {table: {old text: new text}, case: lower, replace: {-: ' '}, "
                     "cut: 7, trim: true, from: A}"),
                ElementsAre("source_id=1 title=new tex"));
    EXPECT_THAT(m_findings,
                ElementsAre("cut-text: records: bug, field title: 1 text cut, first in bugs.csv, "
                            "row 1 (line 2)"));
}

TEST_F(MapRunTest, ChangesTheCaseOfAllLetters) {
    m_folder.Write("bugs.csv", "Nr,A\n1,ÄrgER\n");
    EXPECT_THAT(Bugs(", title: {from: A, case: lower}"), ElementsAre("source_id=1 title=ärger"));
    EXPECT_THAT(Bugs(", title: {from: A, case: upper}"), ElementsAre("source_id=1 title=ÄRGER"));
}

TEST_F(MapRunTest, ReadsDatesOfAZone) {
    m_folder.Write("bugs.csv",
                   "Nr,A\n1,2.5.2023 07:51\n2,26.03.2023 02:30\n3,29.10.2023 02:30\n"
                   "4,tomorrow\n");
    EXPECT_THAT(Bugs(", opened: {from: A, date: '%d.%m.%Y %H:%M', zone: Europe/Berlin}"),
                ElementsAre("source_id=1 opened=2023-05-02 05:51:00",
                            "! opened: the clocks skipped the time \"26.03.2023 02:30\" when they "
                            "were put forward: source_id=2",
                            "source_id=3 opened=2023-10-29 00:30:00",
                            "! opened: \"tomorrow\" is no date of the format %d.%m.%Y %H:%M: "
                            "source_id=4"));
    EXPECT_THAT(m_findings, ElementsAre(HasSubstr("doubled-time: records: bug, field opened: 1 ")));
}

TEST_F(MapRunTest, TakesListsWhereTheFieldIsOne) {
    m_folder.Write("bugs.csv", "Nr,A,B,B\n1,\"x, y,\",p,q\n");
    EXPECT_THAT(Bugs(", cc: {from: A, split: ','}, title: {from: B, join: +}"),
                ElementsAre("source_id=1 cc=[x|y] title=p+q"));
    EXPECT_THAT(Bugs(", cc: {from: A, split: ','}, title: {from: {column: 4}}"),
                ElementsAre("source_id=1 cc=[x|y] title=q"));
    EXPECT_THAT(Bugs(", title: B"),
                ElementsAre("! title: it has 2 values, where one is expected; join them, or pick "
                            "one: source_id=1"));
}

TEST_F(MapRunTest, MakesOneRecordOfEachItem) {
    m_folder.Write("bugs.csv", "Nr,A,B,C\n1,ann,bob,\"eve, dan\"\n2,bob,,eve\n3,n/a,,\n");
    EXPECT_THAT(Run("null_if: n/a\nsources: {bugs: {files: bugs.csv}}\n"
                    "steps:\n- records: user\n  source: bugs\n  key: login\n  same_key: first\n"
                    "  each: [A, B, {from: C, split: ','}]\n  fields: {login: .}\n")
                    .front(),
                ElementsAre("login=ann", "login=bob", "login=eve", "login=dan"));
    EXPECT_THAT(m_findings,
                ElementsAre("unread-address: no step reads Nr of bugs (3 values, first in "
                            "bugs.csv, row 1 (line 2))",
                            "repeated-key: records: user: 2 keys came again, and the first of each "
                            "was taken"));
}

TEST_F(MapRunTest, GathersTheHistoryOfARecordFromAllRows) {
    m_folder.Write("log.csv", "Id,Bug,When\n1,7,2023-01-01\n2,8,2023-01-01\n3,7,2023-01-02\n");
    EXPECT_THAT(Run("sources: {log: {files: log.csv}}\n"
                    "steps:\n- history: bug\n  source: log\n  key: source_id\n"
                    "  fields: {source_id: Bug, id: Id, when: When, who: {value: x}}\n")
                    .front(),
                ElementsAre("source_id=7 <1,2023-01-01 00:00:00,x> <3,2023-01-02 00:00:00,x>",
                            "source_id=8 <2,2023-01-01 00:00:00,x>"));
}

TEST_F(MapRunTest, CutsALongHistoryIntoPortions) {
    std::string rows = "Id,Bug,When\n";
    for (int id = 0; id < 1003; ++id) {
        rows += std::to_string(id) + (id == 500 ? ",8" : ",7") + ",2023-01-01\n";
    }
    m_folder.Write("log.csv", rows);
    const auto records = Run("sources: {log: {files: log.csv}}\n"
                             "steps:\n- history: bug\n  source: log\n  key: source_id\n"
                             "  fields: {source_id: Bug, id: Id, when: When}\n")
                             .front();
    ASSERT_EQ(records.size(), 3U);
    const auto entries = [&](std::size_t record) {
        return std::count(records[record].begin(), records[record].end(), '<');
    };
    EXPECT_EQ(entries(0), 501);
    EXPECT_EQ(entries(1), 501);
    EXPECT_EQ(entries(2), 1);
}

// A later packet would replace a file of the same name.
TEST_F(MapRunTest, GathersTheAttachmentsThatSeveralStepsMakeOfARecord) {
    m_folder.Write("a.csv", "Bug,Path\n1,a/x.txt\n2,a/y.txt\n,z\n");
    m_folder.Write("b.csv", "Bug,Path\n2,b/y.txt\n1,b/x.txt\n3,b/w.txt\n");
    const std::string step =
        "- {attachments: bug, field: files, key: source_id, "
        "fields: {source_id: Bug, path: Path}, source: ";
    const auto steps = Run("sources: {a: {files: a.csv}, b: {files: b.csv}}\nsteps:\n" + step +
                           "a}\n" + step + "b}\n");
    ASSERT_EQ(steps.size(), 1U);
    EXPECT_THAT(
        steps[0],
        ElementsAre(HasSubstr("source_id: it has no value"), "source_id=1 <,a/x.txt,> <,b/x.txt,>",
                    "source_id=2 <,a/y.txt,> <,b/y.txt,>", "source_id=3 <,b/w.txt,>"));
}

TEST_F(MapRunTest, MakesNothingOfAStepThatPassesOverEveryRow) {
    m_folder.Write("a.csv", "Nr,Kind\n1,x\n2,x\n");
    const auto steps =
        Run("sources: {a: {files: a.csv}}\nsteps:\n"
            "- {records: bug, source: a, key: source_id, fields: {source_id: Nr}}\n"
            "- {records: bug, source: a, key: source_id, mode: update, when: "
            "[{from: Kind, is: y}], fields: {source_id: Nr}}\n");
    EXPECT_THAT(steps, ElementsAre(ElementsAre("source_id=1", "source_id=2")));
    EXPECT_THAT(m_findings, ElementsAre("passed-over: records: bug: 2 rows passed over by 'when'"));
    EXPECT_EQ(m_losses, 0);
}

TEST_F(MapRunTest, GathersEntriesThatStandFarApartInPortions) {
    std::string rows = "Id,Bug,When\n";
    for (int id = 0; id < 3008; ++id) {
        rows += std::to_string(id) + (id % 2 == 0 ? ",7" : ",8") + ",2023-01-01\n";
    }
    m_folder.Write("log.csv", rows);
    const auto records = Run("sources: {log: {files: log.csv}}\n"
                             "steps:\n- history: bug\n  source: log\n  key: source_id\n"
                             "  fields: {source_id: Bug, id: Id, when: When}\n")
                             .front();
    std::vector<std::string> firsts;
    for (const std::string& record : records) {
        firsts.push_back(record.substr(0, record.find(',')));
    }
    EXPECT_THAT(firsts, ElementsAre("source_id=7 <0", "source_id=7 <1002", "source_id=7 <2004",
                                    "source_id=7 <3006", "source_id=8 <1", "source_id=8 <1003",
                                    "source_id=8 <2005", "source_id=8 <3007"));
    EXPECT_THAT(m_rowsOf, ElementsAre(501, 501, 501, 1, 501, 501, 501, 1));
}

TEST_F(MapRunTest, ReadsItemsOfJsonDocuments) {
    m_folder.Write("a.json", R"({"key":"B-1","users":[{"id":"ann","name":"Ann"},null],
        "files":[{"id":1,"name":"x/y"},{"id":2,"name":"z"}],"more":{"a":[{"b":1},{"c":2}]}})");
    EXPECT_THAT(
        Run("sources: {docs: {files: '*.json', ignore: more/a/*/c}}\n"
            "steps:\n"
            "- {records: user, source: docs, key: login, each: 'users/*', "
            "fields: {login: id, name: name}}\n"
            "- {attachments: bug, source: docs, key: source_id, each: 'files/*', field: files, "
            "fields: {source_id: /key, id: id, path: {text: '{/key}/{id}/{name}'}}}\n"),
        ElementsAre(ElementsAre("login=ann name=Ann"),
                    ElementsAre("source_id=B-1 <1,B-1/1/x/y,> <2,B-1/2/z,>")));
    EXPECT_THAT(m_findings,
                ElementsAre("unread-address: no step reads more/a/*/b of docs (1 value, first in "
                            "a.json, element 1 (line 1))",
                            "ignored-address: more/a/*/c of docs is left out by the map (1 "
                            "value)"));
}

TEST_F(MapRunTest, RejectsARecordWithoutAKeyAndAnObjectInThePlaceOfAValue) {
    m_folder.Write("a.jsonl", "{\"t\":\"x\",\"k\":null}\n{\"k\":1,\"t\":{}}\n");
    EXPECT_THAT(Run("sources: {a: {files: a.jsonl}}\nsteps:\n"
                    "- {records: bug, source: a, key: source_id, fields: {source_id: k, "
                    "title: t}}\n")
                    .front(),
                ElementsAre("! source_id: it has no value, and records are known by it: title=x",
                            "! title: at t stands an object or a list, where one value is "
                            "expected: source_id=1"));
}

TEST_F(MapRunTest, RefusesAHeaderWithoutAColumnThatIsRead) {
    m_folder.Write("bugs.csv", "Nr\n1\n");
    try {
        Bugs(", title: Titel");
        FAIL() << "no error";
    } catch (const SourceError& error) {
        EXPECT_THAT(error.what(), HasSubstr("bugs.csv: there is no column \"Titel\", which "
                                            "map.yaml:7:34 reads; its columns are Nr. "));
    }
    EXPECT_THAT(Bugs(", title: {from: Titel, optional: true}"), ElementsAre("source_id=1"));
}

TEST_F(MapRunTest, RefusesAPatternWithoutAFile) {
    m_folder.Write("bugs.txt", "Nr\n1\n");
    EXPECT_THROW(Bugs(""), SourceError);
}

TEST_F(MapRunTest, MakesTheSamePacketsOfTheSameRows) {
    m_folder.Write("bugs.csv", "Nr,A\n1,x\n1,y\n");
    Bugs(", title: A");
    const std::vector<std::string> hashes = m_hashes;
    Bugs(", title: A");
    EXPECT_EQ(m_hashes, hashes);
    Bugs(", title: {from: A, case: upper}");
    EXPECT_NE(m_hashes, hashes);
}

TEST_F(MapRunTest, MapsEachReferenceInItsConfiguration) {
    m_folder.Write("bugs.csv", "Nr,A\n1,x\n");
    Bugs(", owner: A, cc: {from: A, by: name}");
    EXPECT_THAT(m_configurations.at(0),
                HasSubstr("<mapping target_field=\"owner\" reference_field=\"login\"/>"));
    EXPECT_THAT(m_configurations.at(0),
                HasSubstr("<mapping target_field=\"cc\" reference_field=\"name\"/>"));
}

TEST_F(MapRunTest, RejectsWhatATemplateOrAReplacementWouldMakeEndless) {
    std::string list = R"(["x")";
    for (int i = 1; i < 3000; ++i) {
        list += R"(,"x")";
    }
    list += ']';
    m_folder.Write("bugs.json", R"([{"Nr":"1","a":)" + list + R"(,"b":)" + list + R"(,"c":")" +
                                    std::string(6000, 'x') + R"("}])");
    const std::string step =
        "sources: {bugs: {files: bugs.json}}\n"
        "steps: [{records: bug, source: bugs, key: source_id, fields: {source_id: Nr, title: ";
    EXPECT_THAT(Run(step + "{text: '{a/*}{b/*}{a/*}', pick: first}}}]\n").front(),
                ElementsAre("! title: the lists in its template would make more than 16777216 "
                            "bytes of it: source_id=1"));
    EXPECT_THAT(Run(step + "{from: c, replace: {x: " + std::string(5000, 'y') + "}}}}]\n").front(),
                ElementsAre("! title: 'replace' would make more than 16777216 bytes of it: "
                            "source_id=1"));
}

TEST_F(MapRunTest, ReplacesTextsFromTheFrontOn) {
    m_folder.Write("bugs.csv", "Nr,Title\n1,aaaa-aa\n");
    EXPECT_THAT(Bugs(", title: {from: Title, replace: {aa: a}}"),
                ElementsAre("source_id=1 title=aa-a"));
}

TEST_F(MapRunTest, ReadsStandardInputForItsSingleSource) {
    std::array<int, 2> pipe{};
    ASSERT_EQ(::pipe2(pipe.data(), O_CLOEXEC), 0);
    constexpr std::string_view rows = "Nr,Title\n1,a\n2\n";
    ASSERT_EQ(::write(pipe[1], rows.data(), rows.size()), static_cast<ssize_t>(rows.size()));
    ::close(pipe[1]);
    m_argument = "-";
    m_standardInput = pipe[0];
    EXPECT_THAT(Bugs(", title: Title"),
                ElementsAre("source_id=1 title=a", "! it has 1 cell, and the header has 2:"));
    ::close(pipe[0]);
}

TEST_F(MapRunTest, RefusesStandardInputForSeveralSources) {
    m_argument = "-";
    try {
        Run("sources: {a: {files: a.csv}, b: {files: b.csv}}\n"
            "steps:\n- {records: user, source: a, key: login, fields: {login: x}}\n"
            "- {records: user, source: b, key: login, fields: {login: x}}\n");
        FAIL();
    } catch (const SourceError& error) {
        EXPECT_THAT(error.what(), HasSubstr("for a map with a single source"));
    }
}

TEST(FitsPattern, KnowsStars) {
    EXPECT_TRUE(FitsPattern("a/b-1/c.json", "*/*-*/*.json"));
    EXPECT_FALSE(FitsPattern("a/b/c.json", "*/*-*/*.json"));
    EXPECT_FALSE(FitsPattern("c.json", "*/*.json"));
    EXPECT_TRUE(FitsPattern("c.json", "**/*.json"));
    EXPECT_TRUE(FitsPattern("a/b/c.json", "**/c.json"));
}

}  // namespace
}  // namespace tool
