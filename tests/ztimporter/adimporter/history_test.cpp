#include <gtest/gtest.h>

#include "platform/messages/message_ids.h"
#include "tests/ztimporter/history_fixture.h"

// ImportHistory: a whole history packet.

namespace {

class HistoryImportTest : public HistoryTest {
  protected:
    HistoryImportTest() { m_importer->m_originalID_value = u""; }

    void SetUp() override { GivenConfiguration({.importData = "history"}); }

    // A record of a history packet with `lines` valid entries.
    static Pairs WithLines(const std::string& sourceId, int lines = 1) {
        return {{"source_id", sourceId}, {"history", ManyHistoryLines(lines)}};
    }

    static Lines Begin() {
        return {"trace: Import is record data",
                "trace: ImportHistory begins: m_originalID=source_id"};
    }
    static Lines MapSetUp() {
        return {"trace: SetupRecordMap begins", "trace: SetupRecordMap ends"};
    }
    static Lines Found(const std::string& sourceId) {
        return Joined(Lines{"trace: GetResultSetWhere begins: filed=source_id, value=" + sourceId},
                      Search("source_id", sourceId),
                      Lines{"trace: GetResultSetWhere ends successfully", "GetRowCount()"});
    }
    static Lines Opened(const std::string& dbId) {
        return {"GetColumn(1, 0)", "ImportEntity(bug, '', " + dbId + ")", "GetFieldValue(dbid)",
                "dbid.GetValue()"};
    }
    static Lines Flushed(int entries = 1) {
        return {"trace: AddHistory begins",
                "trace: AddHistory ends",
                "trace: ReallyImportHistory begins",
                "ImportHistoryData(" + std::to_string(entries) +
                    " entries, -1, 0 problems, '', null, null)",
                "CommitImportHistory()",
                "trace: ReallyImportHistory ends"};
    }
    static std::string Update(const std::string& dbId) {
        return "UpdateImportHistoryExpiredTimestamp(bug, " + dbId + ")";
    }
    static std::string Unbuild(const std::string& sourceId) {
        return "UnbuildResultSet(source_id = " + sourceId + ")";
    }

    // The story after the packet's length; the end of the packet follows from the error text.
    void ExpectPacketStory(const Lines& lines) {
        const Lines end = {m_error.IsEmpty()
                               ? "trace: Import ends successfully."
                               : "trace: Import ends with error: " + m_error.ToUtf8()};
        const Lines story = Joined(Begin(), lines, end);
        ExpectStoryEnds(story);
        EXPECT_EQ(m_core.Log().Lines({CallLog::Kind::kCall, CallLog::Kind::kTrace}).size(),
                  story.size() + 1);
    }

    std::string ErrorTrace() { return "trace: ImportHistory ends with error: " + m_error.ToUtf8(); }

    static Obx_String NotFoundText(int id, const Obx_String& value) {
        return Message(id,
                       {{u"_datatype_", u"bug"}, {u"_field_", u"source_id"}, {u"_value_", value}});
    }
};

TEST_F(HistoryImportTest, FindsOpensImportsAndSavesTheRecord) {
    GivenRecords(u"core-1", {u"33"});
    ImportRecords({WithLines("core-1")});
    ExpectErrorText(u"");
    ExpectPacketStory(
        Joined(MapSetUp(), Found("core-1"), Opened("33"), Flushed(),
               Lines{Update("33"), "Validate()", "Commit()", Unbuild("core-1"),
                     "trace: CleanupRecordMap", "trace: ImportHistory ends successfully"}));
    ExpectCleanRecordMap();
}

TEST_F(HistoryImportTest, EachRecordIsFlushedByItself) {
    GivenRecords(u"core-1", {u"33"});
    GivenRecords(u"core-2", {u"34"});
    ImportRecords({WithLines("core-1", 2), WithLines("core-2", 3)});
    ExpectErrorText(u"");
    const auto record = [](const std::string& sourceId, const std::string& dbId, int lines) {
        return Joined(MapSetUp(), Found(sourceId), Opened(dbId), Flushed(lines),
                      Lines{Update(dbId), "Validate()", "Commit()", Unbuild(sourceId),
                            "trace: CleanupRecordMap"});
    };
    ExpectPacketStory(Joined(record("core-1", "33", 2), record("core-2", "34", 3),
                             Lines{"trace: ImportHistory ends successfully"}));
    EXPECT_EQ(m_core.ImportedHistory().at(1).recordId, 33);
    EXPECT_EQ(m_core.ImportedHistory().at(2).recordId, 34);
}

TEST_F(HistoryImportTest, APacketWithoutRecordsSucceeds) {
    ImportRecords({});
    ExpectErrorText(u"");
    ExpectPacketStory({"trace: ImportHistory ends successfully"});
}

TEST_F(HistoryImportTest, RecordsWithoutHistoryChangeNothingAndAreNotCleanedUp) {
    ImportRecords({{{"source_id", "core-1"}}, {{"source_id", "core-2"}, {"history", ""}}});
    ExpectErrorText(u"");
    ExpectPacketStory(
        Joined(MapSetUp(), MapSetUp(), Lines{"trace: ImportHistory ends successfully"}));
    ExpectRecordMapLeft(u"core-2");
}

class HistoryFieldNameTest : public HistoryImportTest,
                             public testing::WithParamInterface<std::string> {};

TEST_P(HistoryFieldNameTest, IsMatchedWithoutRegardToCase) {
    GivenRecords(u"core-1", {u"33"});
    ImportRecords({{{"source_id", "core-1"}, {GetParam(), ManyHistoryLines(1)}}});
    ExpectErrorText(u"");
    EXPECT_EQ(m_core.ImportedHistory().size(), 1U);
}

INSTANTIATE_TEST_SUITE_P(Names, HistoryFieldNameTest,
                         testing::Values("history", "History", "HISTORY"),
                         [](const auto& instance) { return instance.param; });

TEST_F(HistoryImportTest, TheFirstHistoryFieldIsTaken) {
    GivenRecords(u"core-1", {u"33"});
    ImportRecords({{{"source_id", "core-1"},
                    {"History", ManyHistoryLines(2)},
                    {"HISTORY", ManyHistoryLines(3)}}});
    EXPECT_EQ(m_core.ImportedHistory().size(), 2U);
}

TEST_F(HistoryImportTest, TheFirstHistoryFieldIsTakenEvenWhenAllItsLinesAreDropped) {
    ImportRecords({{{"source_id", "core-1"},
                    {"History", "1\t2\t3\t4\t5\t6\t7\n"},
                    {"HISTORY", ManyHistoryLines(3)}}});
    ExpectErrorText(u"");
    ExpectNoCalls();
    ExpectRecordMapLeft(u"core-1");
}

TEST_F(HistoryImportTest, ARecordWithoutHistoryKeepsItsState) {
    GivenConfiguration({.importData = "history", .importState = true});
    ImportRecords({{{"source_id", "core-1"}, {"state", "OPEN"}}});
    ExpectErrorText(u"");
    EXPECT_EQ(m_importer->m_recordState, u"OPEN");
}

TEST_F(HistoryImportTest, OnlyTheStateOfTypesOfTheKindWithStatesIsDropped) {
    GivenConfiguration({.importData = "history", .importState = true});
    GivenRecords(u"core-1", {u"33"});
    m_core.OnCall("GetType", 2).ReturnsNumber(3);
    Pairs record = WithLines("core-1");
    record.push_back({"state", "OPEN"});
    ImportRecords({record});
    EXPECT_EQ(Count(Calls(), "ImportEntity(bug, OPEN, 33)"), 1);
}

TEST_F(HistoryImportTest, OtherFieldsAreNotWritten) {
    GivenRecords(u"core-1", {u"33"});
    ImportRecords(
        {{{"source_id", "core-1"}, {"title", "Crash"}, {"history", ManyHistoryLines(1)}}});
    for (const std::string& call : Calls()) {
        EXPECT_FALSE(call.starts_with("SetFieldValue")) << call;
    }
}

TEST_F(HistoryImportTest, HistoryNeverMovesTheRecordToAnotherState) {
    GivenConfiguration({.importData = "history", .importState = true});
    GivenRecords(u"core-1", {u"33"});
    Pairs record = WithLines("core-1");
    record.push_back({"state", "OPEN"});
    ImportRecords({record});
    EXPECT_EQ(Count(Calls(), "ImportEntity(bug, '', 33)"), 1);
}

TEST_F(HistoryImportTest, TheStateIsDroppedBeforeTheRecordIsLookedUp) {
    GivenConfiguration({.importData = "history", .importState = true});
    GivenRowCount(u"core-1", -1);
    Pairs record = WithLines("core-1");
    record.push_back({"state", "OPEN"});
    ImportRecords({record});
    EXPECT_EQ(m_importer->m_recordState, u"");
}

TEST_F(HistoryImportTest, AnErrorThatIsThereAlreadyFailsTheFirstRecord) {
    GivenPacket(Record(WithLines("core-1")));
    m_error = u"earlier";
    EXPECT_EQ(m_importer->ImportHistory(m_error), 0);
    ExpectErrorText(u"earlier");
    ExpectStoryEnds(Joined(MapSetUp(), Lines{"trace: CleanupRecordMap", ErrorTrace()}));
    ExpectNoCalls();
}

TEST_F(HistoryImportTest, AnUnreadableRecordEndsThePacket) {
    GivenRecords(u"core-2", {u"34"});
    Import("<record><field name=\"title\">a</field><field</record>" + Record(WithLines("core-2")));
    ExpectXmlError(u"line 1, column 44: not well-formed (invalid token)");
    ExpectStoryEnds({"trace: CleanupRecordMap", ErrorTrace(),
                     "trace: Import ends with error: " + m_error.ToUtf8()});
    ExpectNoCalls();
}

TEST_F(HistoryImportTest, ARecordWithoutIdentityIsNotFoundWithoutASearch) {
    ImportRecords({{{"history", ManyHistoryLines(1)}}});
    ExpectErrorText(NotFoundText(message_id::kRecordNotFound, u""));
    ExpectPacketStory(Joined(MapSetUp(), Lines{"trace: CleanupRecordMap", ErrorTrace()}));
}

TEST_F(HistoryImportTest, WithoutAConfiguredIdentityNoRecordIsFound) {
    GivenConfiguration({.importData = "history", .originalId = ""});
    ImportRecords({WithLines("core-1")});
    ExpectErrorText(Message(message_id::kRecordNotFound,
                            {{u"_datatype_", u"bug"}, {u"_field_", u""}, {u"_value_", u""}}));
    ExpectNoCalls();
}

TEST_F(HistoryImportTest, ARecordThatIsNotFoundEndsThePacketWithoutCreation) {
    GivenConfiguration({.importData = "history", .updateInsert = true});
    GivenRecords(u"core-2", {u"34"});
    ImportRecords({WithLines("core-1"), WithLines("core-2")});
    ExpectErrorText(NotFoundText(message_id::kRecordNotFound, u"core-1"));
    ExpectCalls(Search("source_id", "core-1"));
    ExpectStoryEnds({"trace: GetResultSetWhere ends", "trace: CleanupRecordMap", ErrorTrace(),
                     "trace: Import ends with error: " + m_error.ToUtf8()});
    ExpectCleanRecordMap();
}

struct UnusableHistoryCount {
    long count;
    int id;
};

class UnusableCountTest : public HistoryImportTest,
                          public testing::WithParamInterface<UnusableHistoryCount> {};

TEST_P(UnusableCountTest, IsAnErrorAndTheResultSetGoesBack) {
    GivenRowCount(u"core-1", GetParam().count);
    ImportRecords({WithLines("core-1")});
    ExpectErrorText(NotFoundText(GetParam().id, u"core-1"));
    ExpectPacketStory(Joined(MapSetUp(), Found("core-1"),
                             Lines{Unbuild("core-1"), "trace: CleanupRecordMap", ErrorTrace()}));
    ExpectCleanRecordMap();
}

INSTANTIATE_TEST_SUITE_P(ZeroAndMany, UnusableCountTest,
                         testing::Values(UnusableHistoryCount{0, message_id::kRecordNotFound},
                                         UnusableHistoryCount{2, message_id::kRecordAmbiguous},
                                         UnusableHistoryCount{100, message_id::kRecordAmbiguous}),
                         [](const auto& instance) {
                             return "Count" + std::to_string(instance.param.count);
                         });

class UncountedHistoryTest : public HistoryImportTest, public testing::WithParamInterface<long> {};

TEST_P(UncountedHistoryTest, IsSkippedAndThePacketGoesOn) {
    GivenRowCount(u"core-1", GetParam());
    GivenRecords(u"core-2", {u"34"});
    ImportRecords({WithLines("core-1"), WithLines("core-2")});
    ExpectErrorText(u"");
    ExpectPacketStory(
        Joined(MapSetUp(), Found("core-1"), MapSetUp(), Found("core-2"), Opened("34"), Flushed(),
               Lines{Update("34"), "Validate()", "Commit()", Unbuild("core-2"),
                     "trace: CleanupRecordMap", "trace: ImportHistory ends successfully"}));
}

TEST_P(UncountedHistoryTest, LeavesTheRecordMap) {
    GivenRowCount(u"core-1", GetParam());
    ImportRecords({WithLines("core-1")});
    ExpectRecordMapLeft(u"core-1");
}

INSTANTIATE_TEST_SUITE_P(Counts, UncountedHistoryTest, testing::Values(-1L, -2L, -100L));

}  // namespace
