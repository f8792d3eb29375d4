#include <gtest/gtest.h>

#include "platform/messages/message_ids.h"
#include "tests/ztimporter/importer_fixture.h"
#include "tests/ztimporter/thrown_cases.h"

// Attachments packets whose record was found and opened, and then something fails.

namespace {

class AttachmentImportFailureTest : public ImporterTest {
  protected:
    void SetUp() override {
        GivenConfiguration({.importData = "attachments"});
        GivenRecords(u"core-1", {u"33"});
        GivenRecords(u"core-2", {u"34"});
    }

    // Imports two records with two attachment fields each.
    void ImportFiles() {
        std::vector<Pairs> records;
        for (const char* sourceId : {"core-1", "core-2"}) {
            records.push_back({{"source_id", sourceId},
                               {"files", AttachmentLines("7", "a.txt", "about")},
                               {"pictures", AttachmentLines("8", "b.png", "about")}});
        }
        ImportRecords(records);
    }

    static std::string Unbuild() { return "UnbuildResultSet(source_id = core-1)"; }
    Lines EndTraces() {
        return {"trace: ImportAttachment ends with error: " + m_error.ToUtf8(),
                "trace: Import ends with error: " + m_error.ToUtf8()};
    }
};

TEST_F(AttachmentImportFailureTest, ARefusedFileRevertsTheRecordAfterAllFields) {
    m_core.OnCall("AddAttachment", 1).ReturnsText(u"no such file");
    ImportFiles();
    ExpectErrorText(Message(message_id::kAttachmentFailed, {{u"_attachmentid_", u"7"}}) + u"\n");
    ExpectStoryEnds(
        Joined(Lines{"AddAttachment(pictures, b.png, about)", "trace: AddAttachment ends",
                     Unbuild(), "Revert()", "trace: CleanupRecordMap"},
               EndTraces()));
    ExpectCleanRecordMap();
}

TEST_F(AttachmentImportFailureTest, OfSeveralRefusalsTheLastOneIsReported) {
    m_core.OnCall("AddAttachment").ReturnsText(u"no such file");
    ImportFiles();
    ExpectErrorText(Message(message_id::kAttachmentFailed, {{u"_attachmentid_", u"8"}}) + u"\n");
}

TEST_F(AttachmentImportFailureTest, AnInvalidRecordIsRevertedAndThenUnbuilt) {
    m_core.OnCall("Validate").Reports(CoreMessage(u"too many files"));
    ImportFiles();
    ExpectErrorText(Message(message_id::kValidationFailed,
                            {{u"_coreinfo_", CoreMessage(u"too many files").FullMsg()}}));
    ExpectStoryEnds(
        Joined(Lines{"Validate()", "Revert()", "trace: CleanupRecordMap", Unbuild()}, EndTraces()));
    ExpectCleanRecordMap();
}

TEST_F(AttachmentImportFailureTest, AFailedCommitIsRevertedAndThenUnbuilt) {
    m_core.OnCall("Commit").Reports(CoreMessage(u"disk full"));
    ImportFiles();
    ExpectErrorText(
        Message(message_id::kCommitFailed, {{u"_coreinfo_", CoreMessage(u"disk full").FullMsg()}}));
    ExpectStoryEnds(
        Joined(Lines{"Validate()", "Commit()", "Revert()", "trace: CleanupRecordMap", Unbuild()},
               EndTraces()));
    ExpectCleanRecordMap();
}

class AttachmentRevertThrowsTest : public AttachmentImportFailureTest,
                                   public testing::WithParamInterface<std::string> {};

TEST_P(AttachmentRevertThrowsTest, AppendsToTheFailureThatWasBeingCleanedUp) {
    m_core.OnCall("Revert").Throws(ThrownKind::kText);
    Obx_String cause = Message(message_id::kAttachmentFailed, {{u"_attachmentid_", u"8"}}) + u"\n";
    if (GetParam() == "AddAttachment") {
        m_core.OnCall(GetParam()).ReturnsText(u"no such file");
    } else {
        m_core.OnCall(GetParam()).Reports(CoreMessage(u"bad"));
        cause = Message(
            GetParam() == "Validate" ? message_id::kValidationFailed : message_id::kCommitFailed,
            {{u"_coreinfo_", CoreMessage(u"bad").FullMsg()}});
    }
    ImportFiles();
    ExpectErrorText(cause + u"\nCaught a CString: boom");
    ExpectStoryEnds(Joined(Lines{"Revert()"}, EndTraces()));
    // Only files that were refused give the result set back first.
    EXPECT_EQ(Count(Calls(), Unbuild()), GetParam() == "AddAttachment" ? 1 : 0);
    ExpectRecordMapLeft(u"core-1");
}

INSTANTIATE_TEST_SUITE_P(Causes, AttachmentRevertThrowsTest,
                         testing::Values("AddAttachment", "Validate", "Commit"),
                         [](const auto& instance) { return instance.param; });

TEST_F(AttachmentImportFailureTest, RecordsBeforeAFailureStayCommitted) {
    m_core.OnCall("Validate", 2).Reports(CoreMessage(u"too many files"));
    ImportFiles();
    EXPECT_EQ(Count(Calls(), "Commit()"), 1);
    EXPECT_EQ(Count(Calls(), "Revert()"), 1);
    EXPECT_EQ(Calls().back(), "UnbuildResultSet(source_id = core-2)");
}

class AttachmentImportThrowsTest : public AttachmentImportFailureTest,
                                   public testing::WithParamInterface<ThrownCase> {};

TEST_P(AttachmentImportThrowsTest, AppendsToTheErrorTextAndNeitherRevertsNorCleansUp) {
    const CoreCall& call = GetParam().call;
    m_core.OnCall(call.name, call.occurrence).Throws(GetParam().kind);
    ImportFiles();
    ExpectErrorText(AppendedTextOf(GetParam().kind, u"boom"));
    ExpectStoryEnds(EndTraces());
    EXPECT_EQ(Count(Trace(), "CleanupRecordMap"), 0);
    EXPECT_EQ(Count(Calls(), "Revert()"), 0);
    ExpectRecordMapLeft(u"core-1");
}

INSTANTIATE_TEST_SUITE_P(EveryCall, AttachmentImportThrowsTest,
                         testing::ValuesIn(EachKindAt({{"GetAttachmentFieldDefNames"},
                                                       {"GetType", 2},
                                                       {"GetRowCount"},
                                                       {"GetColumn"},
                                                       {"ImportEntity"},
                                                       {"Validate"},
                                                       {"Commit"},
                                                       {"UnbuildResultSet"}})),
                         NameOfCase);

class AttachmentFieldThrowsTest : public AttachmentImportFailureTest,
                                  public testing::WithParamInterface<ThrownCase> {};

TEST_P(AttachmentFieldThrowsTest, LetsTheOtherFieldsGoOnAndRevertsTheRecord) {
    m_core.OnCall(GetParam().call.name, GetParam().call.occurrence).Throws(GetParam().kind);
    ImportFiles();
    ExpectErrorText(AppendedTextOf(GetParam().kind, u"boom"));
    ExpectStoryEnds(
        Joined(Lines{"AddAttachment(pictures, b.png, about)", "trace: AddAttachment ends",
                     Unbuild(), "Revert()", "trace: CleanupRecordMap"},
               EndTraces()));
    ExpectCleanRecordMap();
}

INSTANTIATE_TEST_SUITE_P(
    EveryCall, AttachmentFieldThrowsTest,
    testing::ValuesIn(EachKindAt({{"GetFieldValue"}, {"GetValueStatus"}, {"AddAttachment"}})),
    NameOfCase);

class AttachmentSearchThrowsTest : public AttachmentImportFailureTest,
                                   public testing::WithParamInterface<ThrownKind> {};

TEST_P(AttachmentSearchThrowsTest, IsHiddenByTheNotFoundMessage) {
    m_core.OnCall("Execute").Throws(GetParam());
    ImportFiles();
    ExpectErrorText(
        Message(message_id::kRecordNotFound,
                {{u"_datatype_", u"bug"}, {u"_field_", u"source_id"}, {u"_value_", u"core-1"}}));
    ExpectCleanRecordMap();
}

INSTANTIATE_TEST_SUITE_P(AllKinds, AttachmentSearchThrowsTest, testing::ValuesIn(kThrownKinds),
                         NameOfKind);

}  // namespace
