#include "tool/report/load_report.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <system_error>

#include "temporary_folder.h"

namespace {

using tool::LoadReport;
using tool::LoadTotals;
using tool::RejectedRecord;

const LoadTotals kTotals = {10, 5, 2, 2, 1, 40, 3, 4, 1.5};

RejectedRecord Reject(const std::string& source, std::uint64_t number, const std::string& id,
                      const std::string& reason) {
    RejectedRecord record;
    record.source = source;
    record.number = number;
    record.sourceId = id;
    record.reason = reason;
    return record;
}

class LoadReportTest : public testing::Test {
  protected:
    std::string Content() const {
        std::ostringstream content;
        content << std::ifstream(m_path).rdbuf();
        return content.str();
    }

    TemporaryFolder m_folder;
    std::string m_path = m_folder.File("report.json");
};

TEST_F(LoadReportTest, HoldsTheTotalsInTheirOrder) {
    LoadReport(m_path).Finish(kTotals);
    EXPECT_EQ(Content(),
              R"({"read":10,"created":5,"updated":2,"rejected":2,"skipped":1,"history":40,)"
              R"("attachments":3,"duplicates":4,"seconds":1.500,"rejects":[],"warnings":[]})"
              "\n");
}

TEST_F(LoadReportTest, ListsTheRejects) {
    LoadReport report(m_path);
    report.Rejects(Reject("a.xml", 3, "core-1", "line 1\n\"x\" \xC3\xA4"));
    report.Rejects(Reject("b.xml", 1, "", "no"));
    report.Finish(kTotals);
    EXPECT_EQ(nlohmann::json::parse(Content())["rejects"], nlohmann::json::parse(R"([
        {"file": "a.xml", "record": 3, "source_id": "core-1", "error": "line 1\n\"x\" ä"},
        {"file": "b.xml", "record": 1, "source_id": "", "error": "no"}])"));
}

TEST_F(LoadReportTest, NamesTheMembersOfARejectInOrder) {
    LoadReport report(m_path);
    report.Rejects(Reject("a.xml", 3, "core-1", "no"));
    report.Finish(kTotals);
    EXPECT_THAT(Content(), testing::HasSubstr(
                               R"({"file":"a.xml","record":3,"source_id":"core-1","error":"no"})"));
}

TEST_F(LoadReportTest, TakesTextThatIsNotUtf8) {
    LoadReport report(m_path);
    report.Rejects(Reject("\xFF.xml", 1, "", ""));
    report.Finish(kTotals);
    EXPECT_EQ(nlohmann::json::parse(Content())["rejects"][0]["file"], "\xEF\xBF\xBD.xml");
}

TEST_F(LoadReportTest, ListsWhatTheLoadWarnsOf) {
    LoadReport report(m_path);
    report.Loses({tool::LossKind::CutShort, "a.xml", 0, 7, "", "", "the packet is cut short"});
    report.Loses({tool::LossKind::ChangedText, "a.xml", 1, 3, "core-1", "title", "changed"});
    report.Finish(kTotals);
    EXPECT_EQ(nlohmann::json::parse(Content())["warnings"], nlohmann::json::parse(R"([
        {"kind": "cut-short", "file": "a.xml", "record": 0, "line": 7, "source_id": "",
         "field": "", "text": "the packet is cut short"}])"));
}

TEST_F(LoadReportTest, EscapesWhatCouldDoSomethingToATerminal) {
    const std::string hostile = "\x1B \x7F \xC2\x9B \u202E \U0001FFFE";
    LoadReport report(m_path);
    report.Rejects(Reject("a.xml", 1, "ä", hostile));
    report.Finish(kTotals);
    EXPECT_THAT(
        Content(),
        testing::AllOf(testing::HasSubstr("\"ä\""),
                       testing::HasSubstr("\\u001b \\u007f \\u009b \\u202e \\ud83f\\udffe")));
    EXPECT_EQ(nlohmann::json::parse(Content())["rejects"][0]["error"], hostile);
}

TEST_F(LoadReportTest, TakesManyRejects) {
    LoadReport report(m_path);
    for (std::uint64_t i = 1; i <= 10000; ++i) {
        report.Rejects(Reject("a.xml", i, std::to_string(i), "no"));
    }
    report.Finish(kTotals);
    nlohmann::json rejects = nlohmann::json::parse(Content())["rejects"];
    ASSERT_EQ(rejects.size(), 10000U);
    EXPECT_EQ(rejects[9999]["record"], 10000);
}

TEST_F(LoadReportTest, ReplacesAnEarlierReportAndLeavesNothingElse) {
    m_folder.Write("report.json", "earlier");
    LoadReport report(m_path);
    report.Rejects(Reject("a.xml", 1, "", "no"));
    EXPECT_EQ(Content(), "earlier");
    report.Finish(kTotals);
    EXPECT_THAT(Content(), testing::StartsWith("{\"read\":10,"));
    EXPECT_EQ(m_folder.FileCount(), 1U);
}

TEST_F(LoadReportTest, LeavesNothingWhenItIsNotFinished) {
    { LoadReport(m_path).Rejects(Reject("a.xml", 1, "", "no")); }
    EXPECT_EQ(m_folder.FileCount(), 0U);
}

TEST_F(LoadReportTest, SaysAtOnceThatItCannotBeWritten) {
    std::string path = m_folder.File("missing/report.json");
    try {
        LoadReport report(path);
        FAIL() << "a report in a directory that is not there";
    } catch (const std::system_error& error) {
        EXPECT_THAT(error.what(),
                    testing::StartsWith(path + ": the report cannot be written here: "));
    }
}

}  // namespace
