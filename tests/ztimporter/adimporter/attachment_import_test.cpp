#include <gtest/gtest.h>

#include "platform/messages/message_ids.h"
#include "tests/ztimporter/importer_fixture.h"
#include "tests/ztimporter/thrown_cases.h"

// ImportAttachment: a whole attachments packet.

namespace {

class AttachmentImportTest : public ImporterTest {
  protected:
    void SetUp() override { GivenConfiguration({.importData = "attachments"}); }

    static Pairs WithFile(const std::string& sourceId, const std::string& field = "files") {
        return {{"source_id", sourceId}, {field, AttachmentLines("7", "a.txt", "about")}};
    }

    static Lines Begin() {
        return {"trace: Import is record data", "trace: ImportAttachment begins"};
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
        return {"GetColumn(1, 0)", "ImportEntity(bug, '', " + dbId + ")"};
    }
    static Lines Added(const std::string& field = "files") {
        return {"trace: AddAttachment begins, field name: " + field + ", attachments size: 1",
                "GetFieldValue(" + field + ")", field + ".GetValueStatus()",
                "AddAttachment(" + field + ", a.txt, about)", "trace: AddAttachment ends"};
    }
    static std::string Unbuild(const std::string& sourceId = "core-1") {
        return "UnbuildResultSet(source_id = " + sourceId + ")";
    }
    std::string ErrorTrace() {
        return "trace: ImportAttachment ends with error: " + m_error.ToUtf8();
    }
    std::string PacketErrorTrace() { return "trace: Import ends with error: " + m_error.ToUtf8(); }

    // The story after the packet's length; the end of the packet follows from the error text.
    void ExpectPacketStory(const Lines& lines) {
        const Lines end = {m_error.IsEmpty() ? "trace: Import ends successfully."
                                             : PacketErrorTrace()};
        const Lines story = Joined(Begin(), lines, end);
        ExpectStoryEnds(story);
        EXPECT_EQ(m_core.Log().Lines({CallLog::Kind::kCall, CallLog::Kind::kTrace}).size(),
                  story.size() + 1);
    }

    static Obx_String NotFoundText(int id, const Obx_String& value) {
        return Message(id,
                       {{u"_datatype_", u"bug"}, {u"_field_", u"source_id"}, {u"_value_", value}});
    }
};

TEST_F(AttachmentImportTest, FindsOpensAddsAndSavesTheRecord) {
    GivenRecords(u"core-1", {u"33"});
    ImportRecords({WithFile("core-1")});
    ExpectErrorText(u"");
    ExpectPacketStory(Joined(MapSetUp(), Found("core-1"), Opened("33"), Added(),
                             Lines{"Validate()", "Commit()", Unbuild(), "trace: CleanupRecordMap",
                                   "trace: ImportAttachment ends successfully"}));
    ExpectCleanRecordMap();
}

TEST_F(AttachmentImportTest, EachRecordIsSavedByItself) {
    GivenRecords(u"core-1", {u"33"});
    GivenRecords(u"core-2", {u"34"});
    ImportRecords({WithFile("core-1"), WithFile("core-2", "pictures")});
    ExpectErrorText(u"");
    const auto record = [](const std::string& sourceId, const std::string& dbId,
                           const std::string& field) {
        return Joined(
            MapSetUp(), Found(sourceId), Opened(dbId), Added(field),
            Lines{"Validate()", "Commit()", Unbuild(sourceId), "trace: CleanupRecordMap"});
    };
    ExpectPacketStory(Joined(record("core-1", "33", "files"), record("core-2", "34", "pictures"),
                             Lines{"trace: ImportAttachment ends successfully"}));
}

TEST_F(AttachmentImportTest, RecordsWithoutAttachmentFieldsTouchNothingAndAreNotCleanedUp) {
    ImportRecords({{{"source_id", "core-1"}, {"title", "Crash"}}});
    ExpectErrorText(u"");
    ExpectPacketStory(Joined(MapSetUp(), Lines{"trace: ImportAttachment ends successfully"}));
    ExpectRecordMapLeft(u"core-1");
}

TEST_F(AttachmentImportTest, APacketWithoutRecordsSucceeds) {
    ImportRecords({});
    ExpectErrorText(u"");
    ExpectPacketStory({"trace: ImportAttachment ends successfully"});
}

TEST_F(AttachmentImportTest, FieldsAreAddedInTheMapsOrderUnderTheNamesOfThePacket) {
    GivenRecords(u"core-1", {u"33"});
    Pairs record = WithFile("core-1", "PICTURES");
    record.push_back(WithFile("core-1", "Files").back());
    ImportRecords({record});
    ExpectErrorText(u"");
    ExpectCalls(Joined(Search("source_id", "core-1"), Lines{"GetRowCount()"}, Opened("33"),
                       Lines{"GetFieldValue(PICTURES)", "PICTURES.GetValueStatus()",
                             "AddAttachment(PICTURES, a.txt, about)", "GetFieldValue(Files)",
                             "Files.GetValueStatus()", "AddAttachment(Files, a.txt, about)",
                             "Validate()", "Commit()", Unbuild()}));
}

TEST_F(AttachmentImportTest, AFieldThatTwoNamesMatchIsAddedTwice) {
    m_bug.Field(u"FILES", ad_field_type::kAttachments);
    GivenRecords(u"core-1", {u"33"});
    ImportRecords({WithFile("core-1")});
    ExpectErrorText(u"");
    EXPECT_EQ(Count(Calls(), "AddAttachment(files, a.txt, about)"), 2);
}

TEST_F(AttachmentImportTest, ARecordWithoutFilesKeepsItsState) {
    GivenConfiguration({.importData = "attachments", .importState = true});
    ImportRecords({{{"source_id", "core-1"}, {"state", "OPEN"}}});
    ExpectErrorText(u"");
    EXPECT_EQ(m_importer->m_recordState, u"OPEN");
}

TEST_F(AttachmentImportTest, AFieldWithoutAWholeAttachmentStillOpensTheRecord) {
    GivenRecords(u"core-1", {u"33"});
    ImportRecords({{{"source_id", "core-1"}, {"files", "7\na.txt\n12"}}});
    ExpectErrorText(u"");
    EXPECT_EQ(Count(Trace(), "AddAttachment begins, field name: files, attachments size: 0"), 1);
    EXPECT_EQ(Count(Calls(), "Commit()"), 1);
}

TEST_F(AttachmentImportTest, SevenLinesAreOneAttachment) {
    GivenRecords(u"core-1", {u"33"});
    ImportRecords({{{"source_id", "core-1"},
                    {"files", AttachmentLines("7", "a.txt", "about") + "8\nb.txt\n12"}}});
    EXPECT_EQ(Count(Calls(), "AddAttachment(files, a.txt, about)"), 1);
    EXPECT_EQ(Count(Calls(), "AddAttachment(files, b.txt, '')"), 0);
}

TEST_F(AttachmentImportTest, FilesNeverMoveTheRecordToAnotherState) {
    GivenConfiguration({.importData = "attachments", .importState = true});
    GivenRecords(u"core-1", {u"33"});
    Pairs record = WithFile("core-1");
    record.push_back({"state", "OPEN"});
    ImportRecords({record});
    EXPECT_EQ(Count(Calls(), "ImportEntity(bug, '', 33)"), 1);
}

TEST_F(AttachmentImportTest, NoHistoryIsImportedAndNoDuplicateIsMarked) {
    GivenConfiguration({.importData = "attachments", .duplicateId = "duplicate_of"});
    GivenRecords(u"core-1", {u"33"});
    Pairs record = WithFile("core-1");
    record.push_back({"duplicate_of", "core-9"});
    ImportRecords({record});
    ExpectErrorText(u"");
    EXPECT_EQ(Count(Trace(), "ReallyImportHistory begins"), 0);
    EXPECT_EQ(Count(Trace(), "MarkDuplicates begins"), 0);
}

TEST_F(AttachmentImportTest, AnErrorThatIsThereAlreadyFailsTheFirstRecord) {
    GivenPacket(Record(WithFile("core-1")));
    m_error = u"earlier";
    EXPECT_EQ(m_importer->ImportAttachment(m_error), 0);
    ExpectErrorText(u"earlier");
    ExpectStoryEnds(Joined(MapSetUp(), Lines{"trace: CleanupRecordMap", ErrorTrace()}));
    ExpectNoCalls();
}

TEST_F(AttachmentImportTest, ReturnsWhetherEveryRecordWasHandled) {
    GivenRecords(u"core-1", {u"33"});
    GivenPacket(Record(WithFile("core-1")));
    EXPECT_EQ(m_importer->ImportAttachment(m_error), 1);
    GivenPacket(Record(WithFile("core-2")));
    EXPECT_EQ(m_importer->ImportAttachment(m_error), 0);
}

TEST_F(AttachmentImportTest, ARecordWithoutIdentityIsNotFoundWithoutASearch) {
    ImportRecords({{{"files", AttachmentLines("7", "a.txt", "about")}}});
    ExpectErrorText(NotFoundText(message_id::kRecordNotFound, u""));
    ExpectPacketStory(Joined(MapSetUp(), Lines{"trace: CleanupRecordMap", ErrorTrace()}));
}

TEST_F(AttachmentImportTest, ARecordThatIsNotFoundEndsThePacketWithoutCreation) {
    GivenConfiguration({.importData = "attachments", .updateInsert = true});
    GivenRecords(u"core-2", {u"34"});
    ImportRecords({WithFile("core-1"), WithFile("core-2")});
    ExpectErrorText(NotFoundText(message_id::kRecordNotFound, u"core-1"));
    ExpectCalls(Search("source_id", "core-1"));
    ExpectStoryEnds({"trace: GetResultSetWhere ends", "trace: CleanupRecordMap", ErrorTrace(),
                     PacketErrorTrace()});
    ExpectCleanRecordMap();
}

struct UnusableAttachmentCount {
    long count;
    int id;
};

class UnusableAttachmentCountTest : public AttachmentImportTest,
                                    public testing::WithParamInterface<UnusableAttachmentCount> {};

TEST_P(UnusableAttachmentCountTest, IsAnErrorAndTheResultSetGoesBack) {
    GivenRowCount(u"core-1", GetParam().count);
    ImportRecords({WithFile("core-1")});
    ExpectErrorText(NotFoundText(GetParam().id, u"core-1"));
    ExpectPacketStory(Joined(MapSetUp(), Found("core-1"),
                             Lines{Unbuild(), "trace: CleanupRecordMap", ErrorTrace()}));
    ExpectCleanRecordMap();
}

INSTANTIATE_TEST_SUITE_P(
    ZeroAndMany, UnusableAttachmentCountTest,
    testing::Values(UnusableAttachmentCount{0, message_id::kRecordNotFound},
                    UnusableAttachmentCount{2, message_id::kRecordAmbiguous},
                    UnusableAttachmentCount{100, message_id::kRecordAmbiguous}),
    [](const auto& instance) { return "Count" + std::to_string(instance.param.count); });

class UncountedAttachmentsTest : public AttachmentImportTest,
                                 public testing::WithParamInterface<long> {};

TEST_P(UncountedAttachmentsTest, AreSkippedAndNotCleanedUp) {
    GivenRowCount(u"core-1", GetParam());
    ImportRecords({WithFile("core-1")});
    ExpectErrorText(u"");
    ExpectPacketStory(
        Joined(MapSetUp(), Found("core-1"), Lines{"trace: ImportAttachment ends successfully"}));
    ExpectRecordMapLeft(u"core-1");
}

INSTANTIATE_TEST_SUITE_P(Counts, UncountedAttachmentsTest, testing::Values(-1L, -2L, -100L));

}  // namespace
