#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "tool/html/load_page.h"
#include "tool/html/load_verdict.h"

namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using tool::ImportedData;
using tool::LoadTotals;
using tool::Loss;
using tool::LossKind;
using tool::RejectedRecord;
using tool::RunSummary;

class LoadPageTest : public testing::Test {
  protected:
    LoadPageTest() {
        m_options.database = "out/tracker.db";
        m_options.sources = {"packets"};
    }

    RunSummary Start() const {
        return RunSummary({"load", m_options,
                           std::chrono::system_clock::time_point(std::chrono::seconds(1795237720)),
                           "1.2.3"});
    }

    static void Reject(RunSummary& summary, const std::string& reason) {
        RejectedRecord record;
        record.source = "packets/bugs.xml";
        record.number = 1234;
        record.line = 5678;
        record.reason = reason;
        record.sourceId = "core-7";
        summary.AddReject(record);
    }

    static LoadTotals Totals(std::uint64_t read, std::uint64_t rejected = 0) {
        LoadTotals totals;
        totals.read = read;
        totals.created = read - rejected;
        totals.rejected = rejected;
        totals.seconds = 2;
        return totals;
    }

    // Two record types, two rejects and a loss.
    RunSummary Eventful() const {
        RunSummary summary = Start();
        summary.StartType("user", ImportedData::Records, {});
        summary.StartType("bug", ImportedData::Records, Totals(2000));
        Reject(summary, R"(The field "title" cannot take "a <b>")");
        Reject(summary, R"(The field "title" cannot take "c")");
        Loss loss;
        loss.kind = LossKind::ChangedText;
        loss.source = "packets/bugs.xml";
        loss.line = 4321;
        loss.field = "title";
        loss.text = "becomes another text";
        summary.AddLoss(loss);
        summary.Advance(1, 2500);
        summary.Finish(Totals(5000, 2));
        return summary;
    }

    tool::LoadOptions m_options;
};

TEST_F(LoadPageTest, HoldsEverySection) {
    const std::string page = LoadPage(Eventful());
    for (const char* title : {"Totals", "What to do next", "By record type", "Rejected records",
                              "Silent losses", "Records over time", "What was run"}) {
        EXPECT_THAT(page, HasSubstr(std::string(">") + title + "</h2>"));
    }
}

TEST_F(LoadPageTest, IsTheSameForTheSameRun) {
    EXPECT_EQ(LoadPage(Eventful()), LoadPage(Eventful()));
}

TEST_F(LoadPageTest, NeedsNothingElse) {
    EXPECT_THAT(LoadPage(Eventful()),
                AllOf(HasSubstr("default-src 'none'"), Not(HasSubstr("http:")),
                      Not(HasSubstr("https:")), Not(HasSubstr("<script")), Not(HasSubstr("url("))));
}

TEST_F(LoadPageTest, SaysWhatWasRun) {
    EXPECT_THAT(LoadPage(Eventful()),
                AllOf(HasSubstr("<dd>ztimport load</dd>"), HasSubstr("<dd>out/tracker.db</dd>"),
                      HasSubstr("<li>packets</li>"), HasSubstr("2026-11-21 05:08:40 UTC"),
                      HasSubstr("<dd>2.00 seconds</dd>"), HasSubstr("<dd>1.2.3</dd>")));
}

TEST_F(LoadPageTest, CountsForEachRecordType) {
    const std::string page = LoadPage(Eventful());
    const std::string readCell = R"(<td class="number" data-label="Read">)";
    EXPECT_THAT(page,
                HasSubstr("user <span class=\"kind\">records</span></th>" + readCell + "2,000"));
    EXPECT_THAT(page,
                HasSubstr("bug <span class=\"kind\">records</span></th>" + readCell + "3,000"));
    EXPECT_THAT(page, HasSubstr("All</th>" + readCell + "5,000"));
}

TEST_F(LoadPageTest, AddsUpWhatComesInSeveralPieces) {
    RunSummary summary = Start();
    summary.StartType("user", ImportedData::Records, {});
    summary.StartType("bug", ImportedData::Records, Totals(1));
    summary.StartType("user", ImportedData::Records, Totals(3));
    summary.Finish(Totals(10));
    ASSERT_EQ(summary.Types().size(), 2U);
    EXPECT_EQ(summary.Types()[0].totals.read, 8U);
    EXPECT_EQ(summary.Types()[1].totals.read, 2U);
}

TEST_F(LoadPageTest, TellsRecordsAndHistoryApart) {
    RunSummary summary = Start();
    summary.StartType("bug", ImportedData::Records, {});
    summary.StartType("bug", ImportedData::History, Totals(4));
    summary.Finish(Totals(10));
    ASSERT_EQ(summary.Types().size(), 2U);
    EXPECT_EQ(summary.Types()[0].totals.read, 4U);
    EXPECT_EQ(summary.Types()[1].totals.read, 6U);
}

TEST_F(LoadPageTest, BoundsTheNumberOfTypes) {
    RunSummary summary = Start();
    for (std::uint64_t i = 0; i < 1000; ++i) {
        summary.StartType("type " + std::to_string(i), ImportedData::Records, Totals(i));
    }
    summary.Finish(Totals(1000));
    EXPECT_LT(summary.Types().size(), 300U);
    EXPECT_EQ(summary.Types().back().type, "other record types");
    EXPECT_EQ(summary.Types().back().totals.read, 800U);
}

TEST_F(LoadPageTest, LeavesOutTypesWithoutRecords) {
    RunSummary summary = Start();
    summary.StartType("user", ImportedData::Records, {});
    summary.StartType("bug", ImportedData::Records, {});
    summary.Finish(Totals(10));
    ASSERT_EQ(summary.Types().size(), 1U);
    EXPECT_EQ(summary.Types()[0].type, "bug");
}

TEST_F(LoadPageTest, ShowsTheCauseAndPlacesOfRejects) {
    EXPECT_THAT(
        LoadPage(Eventful()),
        AllOf(HasSubstr("The field &quot;title&quot; cannot take &quot;…&quot;</span></h3>"),
              HasSubstr(R"(data-label="Record">1,234</td>)"),
              HasSubstr(R"(data-label="Line">5,678</td>)"),
              HasSubstr(R"(data-label="Source id">core-7</td>)"),
              HasSubstr("cannot take &quot;a &lt;b&gt;&quot;</span>")));
}

TEST_F(LoadPageTest, ShowsLossesByKind) {
    EXPECT_THAT(LoadPage(Eventful()),
                AllOf(HasSubstr("texts that the decoding of escapes changes</span></h3>"),
                      HasSubstr("<span class=\"kind\">title</span> <span>becomes another text")));
}

TEST_F(LoadPageTest, EscapesAllTextFromData) {
    const std::string evil = "<img src=x>\"'&\xFF";
    m_options.database = evil;
    m_options.sources = {evil};
    m_options.rejects = evil;
    RunSummary summary = Start();
    summary.StartType(evil, ImportedData::Records, {});
    RejectedRecord rejected;
    rejected.source = evil;
    rejected.sourceId = evil;
    rejected.reason = evil;
    summary.AddReject(rejected);
    summary.AddLoss({LossKind::ChangedText, evil, 1, 1, evil, evil, evil});
    summary.NoteEarlyEnd(evil);
    summary.Finish(Totals(2, 1));
    const std::string page = LoadPage(summary);
    EXPECT_THAT(page, AllOf(Not(HasSubstr("<img")), Not(HasSubstr("\xFF")),
                            HasSubstr("&lt;img src=x&gt;&quot;&#39;&amp;\uFFFD")));
}

TEST_F(LoadPageTest, ShowsTheFirstOfManySources) {
    m_options.sources.assign(1000, "packet.xml");
    RunSummary summary = Start();
    summary.Finish(Totals(1));
    EXPECT_THAT(LoadPage(summary), HasSubstr("and 960 more"));
}

TEST_F(LoadPageTest, StaysSmallHoweverMuchIsRejected) {
    RunSummary summary = Start();
    for (int i = 0; i < 20000; ++i) {
        Reject(summary, std::string(static_cast<std::size_t>(i % 300), 'x') + " is wrong");
    }
    summary.Finish(Totals(20000, 20000));
    EXPECT_LT(LoadPage(summary).size(), std::size_t{2} * 1024 * 1024);
}

class VerdictOfRunTest : public LoadPageTest {
  protected:
    // State and sentence of the run that `summary` describes.
    static std::string Verdict(const RunSummary& summary) {
        const tool::PageVerdict verdict = VerdictOf(summary);
        return verdict.state + ": " + verdict.sentence;
    }

    // The command lines of the next steps, one a line.
    static std::string Commands(const RunSummary& summary) {
        std::string commands;
        for (const tool::NextStep& step : NextSteps(summary)) {
            for (const std::string& word : step.command) {
                commands += word + " ";
            }
            commands += step.command.empty() ? "" : "\n";
        }
        return commands;
    }
};

TEST_F(VerdictOfRunTest, IsCompleteWhenNothingWasRejected) {
    RunSummary summary = Start();
    summary.Finish(Totals(5000));
    EXPECT_EQ(Verdict(summary),
              "Complete: All 5,000 records of the sources were loaded; none was rejected.");
    EXPECT_EQ(Commands(summary), "ztimport verify out/tracker.db packets \n");
}

TEST_F(VerdictOfRunTest, IsCompleteWhenAllWasLoadedBefore) {
    RunSummary summary = Start();
    summary.AddLoadedBefore(48);
    LoadTotals totals;
    totals.read = 48;
    totals.skipped = 48;
    summary.Finish(totals);
    EXPECT_EQ(Verdict(summary),
              "Complete: All 48 records have been loaded before, so nothing was left to do.");
}

TEST_F(VerdictOfRunTest, TellsOfRejectedRecords) {
    RunSummary summary = Start();
    summary.Finish(Totals(5000, 2));
    EXPECT_EQ(Verdict(summary),
              "Rejected records remain: 2 of 5,000 records were rejected, and nothing of them is "
              "in the database.");
}

TEST_F(VerdictOfRunTest, TellsOfRecordsThatAnEarlierLoadRejected) {
    RunSummary summary = Start();
    summary.AddLoadedBefore(48);
    summary.AddRejectedBefore(1);
    LoadTotals totals;
    totals.read = 48;
    totals.skipped = 48;
    summary.Finish(totals);
    EXPECT_EQ(Verdict(summary),
              "Rejected records remain: 1 record that an earlier load rejected is still missing.");
}

TEST_F(VerdictOfRunTest, TellsWhenTheImporterPassedOverEverything) {
    RunSummary summary = Start();
    LoadTotals totals;
    totals.read = 3;
    totals.skipped = 3;
    summary.Finish(totals);
    EXPECT_EQ(Verdict(summary),
              "Nothing imported: 3 records were read, and the importer passed over every one of "
              "them.");
}

TEST_F(VerdictOfRunTest, TellsWhenThereWasNothing) {
    RunSummary summary = Start();
    summary.Finish({});
    EXPECT_EQ(Verdict(summary), "Nothing to load: The sources hold no records.");
    EXPECT_EQ(Commands(summary), "");
}

TEST_F(VerdictOfRunTest, TellsOfLosses) {
    RunSummary summary = Start();
    summary.AddLoss({});
    summary.Finish(Totals(7));
    EXPECT_EQ(Verdict(summary),
              "Loaded with losses: No record was rejected, but 1 detail of the sources was not "
              "imported as it stands.");
}

TEST_F(VerdictOfRunTest, TellsWhenTheLoadDidNotFinish) {
    RunSummary summary = Start();
    summary.NoteEarlyEnd("The disk is full.");
    summary.Finish(Totals(7, 1));
    EXPECT_EQ(Verdict(summary),
              "Not finished: The load ended before all sources were read: 7 records read, 1 "
              "rejected.");
    EXPECT_THAT(LoadPage(summary), HasSubstr("The disk is full."));
}

TEST_F(VerdictOfRunTest, NamesTheFolderToMendAndHowToLoadIt) {
    m_options.rejects = "set aside";
    m_options.attachments = "files";
    RunSummary summary = Start();
    summary.Finish(Totals(7, 1));
    EXPECT_EQ(Commands(summary),
              "ztimport load out/tracker.db set aside --attachments files --rejects "
              "set aside-again \n");
    EXPECT_THAT(LoadPage(summary), HasSubstr("&#39;set aside&#39;"));
}

TEST_F(VerdictOfRunTest, SaysHowToSetRejectsAsideWhenTheyWereNot) {
    RunSummary summary = Start();
    summary.Finish(Totals(7, 1));
    EXPECT_EQ(Commands(summary),
              "ztimport load out/tracker.db packets --retry-rejected --rejects rejects \n");
}

}  // namespace
