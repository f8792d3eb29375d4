#include <gtest/gtest.h>

#include "platform/messages/message_ids.h"
#include "tests/ztimporter/importer_fixture.h"
#include "tests/ztimporter/thrown_cases.h"

// What of a record reaches the next one where the record map is not cleaned up. Callers that do not
// want it start afresh with a new importer.

namespace {

class CarryOverTest : public ImporterTest {
  protected:
    // Imports a record that ends in an exception at its commit.
    void GivenARecordThatEndedInAnException(const Pairs& fields) {
        m_core.OnCall("Commit", 1).Throws(ThrownKind::kUnknown);
        ImportRecords({fields});
        ExpectErrorText(u"\nCaught an unknown exception");
        m_core.Log().Clear();
    }

    bool Wrote(const std::string& field, const std::string& value) {
        return Count(Calls(), "SetFieldValue(" + field + ", " + value + ", 1)") == 1;
    }
};

TEST_F(CarryOverTest, AfterAnExceptionTheFieldsReachTheNextPacketsRecord) {
    GivenConfiguration();
    GivenARecordThatEndedInAnException({{"source_id", "core-1"}, {"notes", "old"}});
    ImportRecords({{{"title", "Crash"}}});
    ExpectErrorText(u"");
    ExpectCalls({"ImportEntity(bug, '', null)", "SetFieldValue(source_id, core-1, 1)",
                 "SetFieldValue(notes, old, 1)", "SetFieldValue(title, Crash, 1)", "Validate()",
                 "Commit()"});
}

TEST_F(CarryOverTest, FieldsOfTheNextRecordWinOverThoseCarriedOver) {
    GivenConfiguration();
    GivenARecordThatEndedInAnException({{"title", "old"}});
    ImportRecords({{{"title", "new"}}});
    EXPECT_TRUE(Wrote("title", "new"));
    EXPECT_FALSE(Wrote("title", "old"));
}

TEST_F(CarryOverTest, AnEmptyFieldOfTheNextRecordRemovesTheOneCarriedOver) {
    GivenConfiguration();
    GivenARecordThatEndedInAnException({{"title", "old"}, {"notes", "old"}});
    ImportRecords({{{"title", ""}}});
    ExpectCalls(
        {"ImportEntity(bug, '', null)", "SetFieldValue(notes, old, 1)", "Validate()", "Commit()"});
}

TEST_F(CarryOverTest, IsOverOnceARecordEndsOrderly) {
    GivenConfiguration();
    GivenARecordThatEndedInAnException({{"notes", "old"}});
    ImportRecords({{{"title", "a"}}});
    m_core.Log().Clear();
    ImportRecords({{{"title", "b"}}});
    EXPECT_FALSE(Wrote("notes", "old"));
}

TEST_F(CarryOverTest, TheNextRecordOfTheSamePacketGivesUpAndCleansUp) {
    GivenConfiguration();
    m_core.OnCall("Commit", 1).Throws(ThrownKind::kUnknown);
    ImportRecords({{{"notes", "old"}}, {{"title", "Crash"}}});
    ExpectErrorText(u"\nCaught an unknown exception");
    ExpectCleanRecordMap();
    m_core.Log().Clear();
    ImportRecords({{{"title", "Hang"}}});
    EXPECT_FALSE(Wrote("notes", "old"));
}

TEST_F(CarryOverTest, AConfigurationPacketInBetweenDoesNotStopIt) {
    GivenConfiguration();
    GivenARecordThatEndedInAnException({{"notes", "old"}});
    Import(Configuration{}.Packet());
    ImportRecords({{{"title", "Crash"}}});
    EXPECT_TRUE(Wrote("notes", "old"));
}

TEST_F(CarryOverTest, TheIdentityCarriedOverFindsTheWrongRecord) {
    GivenConfiguration({.updateRecord = true});
    GivenRecords(u"core-1", {u"33"});
    GivenARecordThatEndedInAnException({{"source_id", "core-1"}});
    ImportRecords({{{"title", "Crash"}}});
    ExpectErrorText(u"");
    EXPECT_EQ(Count(Calls(), "ImportEntity(bug, '', 33)"), 1);
    EXPECT_TRUE(Wrote("title", "Crash"));
}

TEST_F(CarryOverTest, AnIdentityCarriedOverIsNotSearchedForWithoutAConfiguredField) {
    GivenConfiguration();
    GivenARecordThatEndedInAnException({{"source_id", "core-1"}});
    const Pairs record = {{"history", ManyHistoryLines(1)},
                          {"files", AttachmentLines("7", "a.txt", "")}};
    for (const char* importData : {"record", "history", "attachments"}) {
        GivenConfiguration({.importData = importData, .originalId = "", .updateRecord = true});
        m_importer->m_originalID_value = u"core-1";
        ImportRecords({record});
        ExpectErrorText(
            Message(message_id::kRecordNotFound,
                    {{u"_datatype_", u"bug"}, {u"_field_", u""}, {u"_value_", u"core-1"}}));
        ExpectNoCalls();
    }
}

TEST_F(CarryOverTest, TheDuplicateReferenceIsCarriedOver) {
    GivenConfiguration({.duplicateId = "duplicate_of"});
    GivenRecords(u"core-9", {u"33"});
    GivenARecordThatEndedInAnException({{"source_id", "core-1"}, {"duplicate_of", "core-9"}});
    ImportRecords({{{"source_id", "core-2"}}});
    ExpectErrorText(u"");
    EXPECT_EQ(Count(Calls(), "MarkEntityAsDuplicate(bug 102, bug 33, duplicate, 1)"), 1);
}

TEST_F(CarryOverTest, TheStateIsNotCarriedOver) {
    GivenConfiguration({.importState = true});
    GivenARecordThatEndedInAnException({{"state", "OPEN"}});
    ImportRecords({{{"title", "Crash"}}});
    EXPECT_EQ(Calls().front(), "ImportEntity(bug, '', null)");
}

TEST_F(CarryOverTest, AnotherImporterKnowsNothingOfIt) {
    GivenConfiguration();
    GivenARecordThatEndedInAnException({{"notes", "old"}});
    AdSessionPtr session = m_importer->m_session;
    m_importer = std::make_unique<OpenImporter>();
    m_importer->SetSession(session);
    Import(Configuration{}.Packet());
    ImportRecords({{{"title", "Crash"}}});
    ExpectErrorText(u"");
    EXPECT_FALSE(Wrote("notes", "old"));
}

TEST_F(CarryOverTest, UpdatesOfAnUncountedRecordLeaveNothing) {
    GivenConfiguration({.updateRecord = true});
    GivenRowCount(u"core-1", -1);
    GivenRecords(u"core-2", {u"34"});
    ImportRecords({{{"source_id", "core-1"}, {"notes", "old"}}, {{"source_id", "core-2"}}});
    ExpectErrorText(u"");
    EXPECT_FALSE(Wrote("notes", "old"));
    EXPECT_TRUE(Wrote("source_id", "core-2"));
}

// A history or attachments packet with records that are skipped silently.
class SilentSkipTest : public ImporterTest {
  protected:
    static std::string File(const std::string& name) { return AttachmentLines("7", name, "about"); }
};

TEST_F(SilentSkipTest, WithoutAttachmentsLeavesTheIdentityToTheNextRecord) {
    GivenConfiguration({.importData = "attachments"});
    GivenRecords(u"core-1", {u"33"});
    ImportRecords({{{"source_id", "core-1"}}, {{"files", File("a.txt")}}});
    ExpectErrorText(u"");
    EXPECT_EQ(Count(Calls(), "ImportEntity(bug, '', 33)"), 1);
    EXPECT_EQ(Count(Calls(), "AddAttachment(files, a.txt, about)"), 1);
}

TEST_F(SilentSkipTest, WithoutAttachmentsReachesTheNextPacket) {
    GivenConfiguration({.importData = "attachments"});
    GivenRecords(u"core-1", {u"33"});
    ImportRecords({{{"source_id", "core-1"}}});
    ImportRecords({{{"files", File("a.txt")}}});
    ExpectErrorText(u"");
    EXPECT_EQ(Count(Calls(), "ImportEntity(bug, '', 33)"), 1);
}

TEST_F(SilentSkipTest, OfUncountedAttachmentsOffersThemAgainWithTheNextRecord) {
    GivenConfiguration({.importData = "attachments"});
    GivenRowCount(u"core-1", -1);
    GivenRecords(u"core-2", {u"34"});
    ImportRecords({{{"source_id", "core-1"}, {"files", File("a.txt")}},
                   {{"source_id", "core-2"}, {"pictures", File("b.png")}}});
    ExpectErrorText(u"");
    EXPECT_EQ(Count(Calls(), "ImportEntity(bug, '', 34)"), 1);
    EXPECT_EQ(Count(Calls(), "AddAttachment(files, a.txt, about)"), 1);
    EXPECT_EQ(Count(Calls(), "AddAttachment(pictures, b.png, about)"), 1);
}

TEST_F(SilentSkipTest, OfUncountedAttachmentsLooksTheSkippedRecordUpAgain) {
    GivenConfiguration({.importData = "attachments"});
    GivenRowCount(u"core-1", -1);
    ImportRecords({{{"source_id", "core-1"}, {"files", File("a.txt")}}, {{"title", "Crash"}}});
    ExpectErrorText(u"");
    EXPECT_EQ(Count(Calls(), "BuildFilter(null, source_id, 1, core-1, 1)"), 2);
}

TEST_F(SilentSkipTest, WithoutHistoryLeavesTheIdentityToTheNextRecord) {
    GivenConfiguration({.importData = "history"});
    GivenRecords(u"core-1", {u"33"});
    ImportRecords({{{"source_id", "core-1"}}, {{"history", ManyHistoryLines(1)}}});
    ExpectErrorText(u"");
    EXPECT_EQ(Count(Calls(), "ImportEntity(bug, '', 33)"), 1);
}

TEST_F(SilentSkipTest, WithoutHistoryReachesTheNextPacket) {
    GivenConfiguration({.importData = "history"});
    GivenRecords(u"core-1", {u"33"});
    ImportRecords({{{"source_id", "core-1"}, {"history", ""}}});
    ImportRecords({{{"history", ManyHistoryLines(1)}}});
    ExpectErrorText(u"");
    EXPECT_EQ(Count(Calls(), "ImportEntity(bug, '', 33)"), 1);
}

TEST_F(SilentSkipTest, OfUncountedHistoryOffersItAgainWithTheNextRecord) {
    GivenConfiguration({.importData = "history"});
    GivenRowCount(u"core-1", -1);
    GivenRecords(u"core-2", {u"34"});
    ImportRecords(
        {{{"source_id", "core-1"}, {"history", ManyHistoryLines(2)}}, {{"source_id", "core-2"}}});
    ExpectErrorText(u"");
    ASSERT_EQ(m_core.ImportedHistory().size(), 2U);
    EXPECT_EQ(m_core.ImportedHistory().front().recordId, 34);
}

TEST_F(SilentSkipTest, ExceptionsInAHistoryPacketLeaveTheRecordForTheNextPacket) {
    GivenConfiguration({.importData = "history"});
    GivenRecords(u"core-1", {u"33"});
    GivenRecords(u"core-2", {u"34"});
    m_core.OnCall("Validate", 1).Throws(ThrownKind::kText);
    ImportRecords({{{"source_id", "core-1"}, {"history", ManyHistoryLines(2)}}});
    ImportRecords({{{"source_id", "core-2"}}});
    ExpectErrorText(u"");
    ASSERT_EQ(m_core.ImportedHistory().size(), 4U);
    EXPECT_EQ(m_core.ImportedHistory().back().recordId, 34);
}

TEST_F(SilentSkipTest, ExceptionsInAnAttachmentsPacketLeaveTheRecordForTheNextPacket) {
    GivenConfiguration({.importData = "attachments"});
    GivenRecords(u"core-1", {u"33"});
    GivenRecords(u"core-2", {u"34"});
    m_core.OnCall("Validate", 1).Throws(ThrownKind::kText);
    ImportRecords({{{"source_id", "core-1"}, {"files", File("a.txt")}}});
    ImportRecords({{{"source_id", "core-2"}}});
    ExpectErrorText(u"");
    EXPECT_EQ(Count(Calls(), "AddAttachment(files, a.txt, about)"), 2);
}

}  // namespace
