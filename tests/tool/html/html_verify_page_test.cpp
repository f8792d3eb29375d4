#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tool/html/verify_page.h"

namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using tool::Difference;
using tool::ImportedData;
using tool::VerifyFindings;
using tool::VerifySummary;

class VerifyPageTest : public testing::Test {
  protected:
    VerifyPageTest() {
        m_options.database = "out/tracker.db";
        m_options.sources = {"packets"};
    }

    VerifyFindings Start() const { return VerifyFindings(m_options, {}, "1.2.3"); }

    static Difference Differs(const std::string& field, const std::string& source,
                              const std::string& database, const std::string& problem = "") {
        return {.source = "packets/bugs.xml",
                .record = 1234,
                .line = 5678,
                .sourceId = "core-7",
                .type = "bug",
                .id = "BUG00000007",
                .field = field,
                .sourceValue = source,
                .databaseValue = database,
                .problem = problem};
    }

    // Findings of `differences` in a database of 5,000 bugs.
    VerifyFindings Found(const std::vector<Difference>& differences) const {
        VerifyFindings findings = Start();
        for (const Difference& difference : differences) {
            findings.AddDifference(difference);
        }
        VerifySummary summary;
        summary.read = 5100;
        summary.compared = 5000;
        summary.differing = differences.size();
        summary.differences = differences.size();
        summary.types.resize(1);
        summary.types[0].name = "bug";
        summary.types[0].compared = 5000;
        summary.types[0].fields = 43210;
        findings.Finish(summary);
        return findings;
    }

    static std::string VerdictText(const VerifyFindings& findings) {
        const tool::PageVerdict verdict = VerdictOf(findings);
        return verdict.state + ": " + verdict.sentence;
    }

    static std::vector<std::string> Titles(const VerifyFindings& findings) {
        std::vector<std::string> titles;
        for (const tool::ExampleGroup& group : findings.Differences()) {
            titles.push_back(std::to_string(group.count) + " " + group.title);
        }
        return titles;
    }

    tool::VerifyOptions m_options;
};

TEST_F(VerifyPageTest, HoldsEverySection) {
    const std::string page = VerifyPage(Found({Differs("title", "a", "b")}));
    for (const char* title : {"Totals", "What to do next", "By record type", "Differences",
                              "The database itself", "What the loads did", "What was run"}) {
        EXPECT_THAT(page, HasSubstr(std::string(">") + title + "</h2>"));
    }
}

TEST_F(VerifyPageTest, SaysThatAllIsThere) {
    const VerifyFindings findings = Found({});
    EXPECT_EQ(VerdictText(findings),
              "Verified: Everything that the sources say of 5,000 records is in the database.");
    EXPECT_TRUE(NextSteps(findings).empty());
    EXPECT_THAT(VerifyPage(findings), AllOf(HasSubstr("<p>There are none.</p>"),
                                            HasSubstr(R"(data-label="Values">43,210</td>)")));
}

TEST_F(VerifyPageTest, SaysHowMuchIsNot) {
    EXPECT_EQ(VerdictText(Found({Differs("title", "a", "b")})),
              "Not verified: 1 of 5,000 records is not in the database as the sources say.");
}

TEST_F(VerifyPageTest, TellsOfADamagedDatabase) {
    VerifyFindings findings = Start();
    findings.AddFault({"bug", "BUG00000007", "log, entry 3, field", "ti<tle", "not a field"});
    findings.AddFault({"bug", "BUG00000008", "log, entry 9, field", "x", "not a field"});
    VerifySummary summary;
    summary.read = 3;
    summary.faults = 2;
    summary.unusedContents = 1;
    summary.unusedBytes = 5;
    findings.Finish(summary);
    EXPECT_EQ(VerdictText(findings),
              "Not verified: The database itself is damaged: 2 faults were found.");
    EXPECT_THAT(VerifyPage(findings),
                AllOf(HasSubstr("bug, log, field: not a field"), HasSubstr("ti&lt;tle"),
                      HasSubstr("1 content of 5 bytes in all belongs to no attachment any more")));
}

TEST_F(VerifyPageTest, TellsOfRecordsThatNoSourceSpeaksOf) {
    VerifyFindings findings = Start();
    VerifySummary summary;
    summary.read = 3;
    summary.exact = true;
    findings.Finish(summary);
    EXPECT_EQ(VerdictText(findings),
              "Verified: Everything that the sources say of 0 records is in "
              "the database, and nothing else.");
    summary.extra = 2;
    summary.differences = 2;
    findings.Finish(summary);
    EXPECT_EQ(VerdictText(findings), "Not verified: 2 records of the database are in no source.");
    EXPECT_THAT(VerifyPage(findings), HasSubstr("in no source</dt>"));
}

TEST_F(VerifyPageTest, DoesNotTakeNothingForVerified) {
    VerifyFindings findings = Start();
    findings.Finish({});
    EXPECT_EQ(VerdictText(findings), "Nothing to verify: The sources hold no records.");
}

TEST_F(VerifyPageTest, TellsOfDifferencesThatAreNoRecords) {
    VerifyFindings findings = Start();
    VerifySummary summary;
    summary.read = 3;
    summary.differences = 1;
    findings.Finish(summary);
    EXPECT_EQ(VerdictText(findings),
              "Not verified: One difference was found between the sources and the database.");
}

TEST_F(VerifyPageTest, GroupsDifferencesByFieldAndSort) {
    EXPECT_THAT(
        Titles(Found({Differs("title", "a", "b"), Differs("title", "c", "d"),
                      Differs("owner", "ann", ""), Differs("cc", "", "bob"),
                      Differs("owner", "eve", "", "no user has the login \"eve\""),
                      Differs("files, a.pdf, size", "1", "2"),
                      Differs("files, b.pdf, size", "3", "4"), Differs("log, entry 7", "x", "")})),
        ElementsAre("2 bug, title: the values differ", "2 bug, files, size: the values differ",
                    "1 bug, owner: in the source only", "1 bug, cc: in the database only",
                    "1 bug, owner: no user has the login \"eve\"",
                    "1 bug, log: in the source only"));
}

TEST_F(VerifyPageTest, ShowsBothValues) {
    EXPECT_THAT(VerifyPage(Found({Differs("title", "a <b>", "")})),
                AllOf(HasSubstr("source</span> <span>a &lt;b&gt;</span>"),
                      HasSubstr("database</span> <span>(nothing)</span>"),
                      HasSubstr("record</span> <span>BUG00000007</span>"),
                      HasSubstr(R"(data-label="Line">5,678</td>)")));
}

TEST_F(VerifyPageTest, LeadsToARecordThatDiffers) {
    const auto steps = NextSteps(Found({Differs("title", "a", "b")}));
    ASSERT_EQ(steps.size(), 1U);
    EXPECT_THAT(steps[0].command,
                ElementsAre("ztimport", "show", "out/tracker.db", "bug", "BUG00000007"));
}

TEST_F(VerifyPageTest, LeadsToALoadOfWhatIsMissing) {
    m_options.attachments = "files";
    VerifyFindings findings = Start();
    VerifySummary summary;
    summary.missing = 2;
    summary.differences = 2;
    findings.Finish(summary);
    const auto steps = NextSteps(findings);
    ASSERT_EQ(steps.size(), 1U);
    EXPECT_THAT(steps[0].command,
                ElementsAre("ztimport", "load", "out/tracker.db", "packets", "--attachments",
                            "files", "--retry-rejected", "--rejects", "rejects"));
}

TEST_F(VerifyPageTest, AddsUpWhatTheLoadsDid) {
    VerifyFindings findings = Start();
    recorddb::journal::JournalEntry entry;
    entry.nextOrdinal = 1500;
    entry.created = 1499;
    entry.rejected = 1;
    entry.complete = true;
    findings.AddLoad({"bug", ImportedData::Records, {}}, &entry);
    findings.AddLoad({"bug", ImportedData::Records, {}}, &entry);
    findings.AddLoad({"bug", ImportedData::History, {}}, nullptr);
    findings.Finish({});
    EXPECT_THAT(
        VerifyPage(findings),
        AllOf(HasSubstr("1 of 3 sources of records was not loaded to the end"),
              HasSubstr(R"(data-label="Read">3,000</td>)"),
              HasSubstr(R"(data-label="Created">2,998</td>)"), Not(HasSubstr("history</span>"))));
}

TEST_F(VerifyPageTest, NeedsNothingElse) {
    EXPECT_THAT(VerifyPage(Found({Differs("title", "<script>", "\xFF")})),
                AllOf(HasSubstr("default-src 'none'"), Not(HasSubstr("<script")),
                      Not(HasSubstr("\xFF")), Not(HasSubstr("url("))));
}

}  // namespace
