#include <gtest/gtest.h>

#include <tuple>

#include "platform/messages/message_ids.h"
#include "tests/ztimporter/history_fixture.h"
#include "tests/ztimporter/throwing_sink.h"

// A sink that throws: what it throws ends the operation that traces, and no more than that.

namespace {

enum class Way { kSuccess, kFailure };

class ThrowingTracesTest : public HistoryTest {
  protected:
    // Runs one operation by itself. On the way of failure it ends with an error that does not come
    // from a trace.
    int Run(const std::string& operation, Way way) {
        m_error = u"";
        const bool fails = way == Way::kFailure;
        if (operation == "Import") {
            m_importer->m_configurationReceived = fails ? 0 : 1;
            Import("<records/>");
            return m_error.IsEmpty() ? 1 : 0;
        }
        if (operation == "ReallyImportHistory" || operation == "AddHistory") {
            return RunOnHistory(operation, fails);
        }
        GivenRecords(u"core-1", {u"33"});
        AdEntityPtr bug = GivenOpenBug();
        if (operation == "GetResultSetWhere") {
            GivenExceptionAt("Execute", fails);
            return m_importer->GetResultSetWhere(&m_bug, u"source_id", u"core-1", m_error) ? 1 : 0;
        }
        if (operation == "AddAttachment") {
            GivenExceptionAt("GetFieldValue", fails);
            OpenImporter::EntryList none;
            m_importer->AddAttachment(bug, u"files", none, m_error);
            return m_error.IsEmpty() ? 1 : 0;
        }
        if (operation == "MarkDuplicates") {
            m_importer->m_duplicateID = u"duplicate_of";
            m_importer->m_duplicateID_value = fails ? u"core-9" : u"core-1";
            return m_importer->MarkDuplicates(bug, m_error);
        }
        if (operation == "IsReferenceIDValid") {
            Obx_String value = u"a@b";
            return m_importer->IsReferenceIDValid(bug, u"owner", value, u"mail", u"login", m_error);
        }
        return RunOnRecord(operation, bug, fails);
    }

    int RunOnHistory(const std::string& operation, bool fails) {
        m_importer->DiscardHistory();
        if (operation == "AddHistory") {
            GivenExceptionAt("GetDbId", fails);
            Add({ValidEntry("7")});
            return m_error.IsEmpty() ? 1 : 0;
        }
        Add({ValidEntry("7")});
        GivenExceptionAt("ImportHistoryData", fails);
        return m_importer->ReallyImportHistory(m_error);
    }

    int RunOnRecord(const std::string& operation, const AdEntityPtr& bug, bool fails) {
        m_importer->CleanupRecordMap();
        GivenCurrentRecord({{"source_id", "core-1"}});
        if (operation == "SetupRecordMap") {
            GivenExceptionAt("GetType", fails);
            m_importer->SetupRecordMap(m_error);
            return m_error.IsEmpty() ? 1 : 0;
        }
        if (operation == "SetupFieldValues") {
            m_importer->m_recordMap.SetAt(u"title", u"Crash");
            GivenExceptionAt("GetFieldType", fails);
            return m_importer->SetupFieldValues(bug, m_error);
        }
        m_error = fails ? u"earlier" : u"";
        if (operation == "ImportRecord") {
            return m_importer->ImportRecord(m_error);
        }
        if (operation == "UpdateRecord") {
            return m_importer->UpdateRecord(m_error);
        }
        GivenPacket("<record/>" + Record({{"source_id", "core-1"}}));
        m_error = fails ? u"earlier" : u"";
        return operation == "ImportHistory" ? m_importer->ImportHistory(m_error)
                                            : m_importer->ImportAttachment(m_error);
    }

    void GivenExceptionAt(const std::string& call, bool fails) {
        if (fails && !m_told) {
            m_told = true;
            m_core.OnCall(call).Throws(ThrownKind::kText, u"cause");
        }
    }

    // The two operations that put what a trace throws in place of the text.
    static Obx_String ReplacedText(ThrownKind kind, const std::string& operation) {
        switch (kind) {
            case ThrownKind::kFoundation:
                return u"Caught a CException: \nboom";
            case ThrownKind::kText:
                return u"Caught a CString: ";
            case ThrownKind::kMessage:
                if (operation == "ReallyImportHistory") {
                    return CoreMessage(u"boom").FullMsg();
                }
                break;
            case ThrownKind::kUnknown:
                break;
        }
        return AppendedTextOf(kind, u"boom");
    }

  private:
    bool m_told = false;
};

using Case = std::tuple<std::string, ThrownKind>;

std::string NameOfTrace(const testing::TestParamInfo<Case>& instance) {
    return std::get<0>(instance.param) + "_" + NameOf(std::get<1>(instance.param));
}

class BeginTraceTest : public ThrowingTracesTest, public testing::WithParamInterface<Case> {};

TEST_P(BeginTraceTest, EndsTheOperationAtItsBoundary) {
    const auto& [operation, kind] = GetParam();
    int result = 1;
    {
        ThrowingSink sink(m_core.Log(), kind, operation + " begins");
        EXPECT_NO_THROW(result = Run(operation, Way::kSuccess));
        EXPECT_EQ(sink.Thrown(), 1);
    }
    EXPECT_EQ(result, 0);
    const bool replaces = operation == "ReallyImportHistory" || operation == "GetResultSetWhere";
    ExpectErrorText(replaces ? ReplacedText(kind, operation) : AppendedTextOf(kind, u"boom"));
    const bool own = operation == "ReallyImportHistory" && kind == ThrownKind::kMessage;
    EXPECT_EQ(Trace().back(),
              operation + (own ? " error: " : " ends with error: ") + m_error.ToUtf8());
}

INSTANTIATE_TEST_SUITE_P(
    Operations, BeginTraceTest,
    testing::Combine(testing::Values("Import", "SetupRecordMap", "SetupFieldValues", "ImportRecord",
                                     "UpdateRecord", "MarkDuplicates", "ImportHistory",
                                     "AddHistory", "ReallyImportHistory", "ImportAttachment",
                                     "AddAttachment", "GetResultSetWhere"),
                     testing::ValuesIn(kThrownKinds)),
    NameOfTrace);

class FinalTraceTest : public ThrowingTracesTest, public testing::WithParamInterface<Case> {
  protected:
    // Runs the operation so that it fails; its last trace throws that often.
    void RunWithThrowingEnd(int times) {
        const auto& [operation, kind] = GetParam();
        Run(operation, Way::kFailure);
        m_cause = m_error;
        EXPECT_FALSE(m_cause.IsEmpty());
        m_core.ForgetCalls();
        int result = 1;
        ThrowingSink sink(m_core.Log(), kind, operation + " ends with error", times);
        EXPECT_NO_THROW(result = Run(operation, Way::kFailure));
        EXPECT_EQ(result, 0);
        EXPECT_GE(sink.Thrown(), 1);
    }

    Obx_String m_cause;
};

TEST_P(FinalTraceTest, JoinsTheErrorText) {
    const auto& [operation, kind] = GetParam();
    RunWithThrowingEnd(1);
    ExpectErrorText(m_cause + AppendedTextOf(kind, u"boom"));
    EXPECT_EQ(Trace().back(), operation + " ends with error: " + m_error.ToUtf8());
}

TEST_P(FinalTraceTest, IsNotTriedForEver) {
    RunWithThrowingEnd(1000);
    ExpectErrorText(m_cause + AppendedTextOf(std::get<1>(GetParam()), u"boom"));
}

INSTANTIATE_TEST_SUITE_P(
    Operations, FinalTraceTest,
    testing::Combine(testing::Values("Import", "SetupRecordMap", "SetupFieldValues", "ImportRecord",
                                     "UpdateRecord", "MarkDuplicates", "AddHistory",
                                     "ReallyImportHistory", "AddAttachment", "GetResultSetWhere",
                                     "IsReferenceIDValid"),
                     testing::ValuesIn(kThrownKinds)),
    NameOfTrace);

class PacketTraceTest : public ThrowingTracesTest,
                        public testing::WithParamInterface<ThrownKind> {};

// The walks over a packet end their failures inside their boundary, so the trace is tried again.
TEST_P(PacketTraceTest, OfAFailedRecordJoinsTheErrorText) {
    for (const std::string operation : {"ImportHistory", "ImportAttachment"}) {
        ThrowingSink sink(m_core.Log(), GetParam(), operation + " ends with error", 1);
        EXPECT_NO_THROW(EXPECT_EQ(Run(operation, Way::kFailure), 0));
        ExpectErrorText(u"earlier" + AppendedTextOf(GetParam(), u"boom"));
        EXPECT_EQ(Trace().back(), operation + " ends with error: " + m_error.ToUtf8());
    }
}

TEST_P(PacketTraceTest, OfTheLookUpsBeginningEndsTheFields) {
    m_importer->m_recordReferenceMapping.SetAt(u"owner", u"mail");
    GivenRecordMap({{"owner", "a@b"}});
    AdEntityPtr bug = GivenOpenBug();
    ThrowingSink sink(m_core.Log(), GetParam(), "IsReferenceIDValid begins");
    EXPECT_NO_THROW(EXPECT_EQ(m_importer->SetupFieldValues(bug, m_error), 0));
    ExpectErrorText(AppendedTextOf(GetParam(), u"boom"));
    EXPECT_EQ(Count(Calls(), "BuildQueryDef(user, 0)"), 0);
}

TEST_P(PacketTraceTest, OfSuccessFailsThePacketThatWentThrough) {
    GivenConfiguration();
    ThrowingSink sink(m_core.Log(), GetParam(), "Import ends successfully");
    EXPECT_NO_THROW(ImportRecords({{{"title", "Crash"}}}));
    ExpectErrorText(AppendedTextOf(GetParam(), u"boom"));
    EXPECT_EQ(Calls().back(), "Commit()");
}

TEST_P(PacketTraceTest, ThatThrowsEverywhereStillEndsInAnErrorText) {
    GivenConfiguration();
    ThrowingSink sink(m_core.Log(), GetParam(), "");
    EXPECT_NO_THROW(ImportRecords({{{"title", "Crash"}}}));
    // What both the first trace and that of the error throw is reported.
    const Obx_String text = AppendedTextOf(GetParam(), u"boom");
    ExpectErrorText(text + text);
    ExpectNoCalls();
}

// These have no error text to report in.
TEST_P(PacketTraceTest, OfLifeAndSessionIsLetGo) {
    ThrowingSink sink(m_core.Log(), GetParam(), "");
    EXPECT_NO_THROW({
        OpenImporter importer;
        const AdSessionPtr session(new ScriptedSession(m_core));
        importer.SetSession(session);
        EXPECT_EQ(importer.m_session.GetPtr(), session.GetPtr());
        EXPECT_EQ(importer.m_importDataType, u"record");
    });
    EXPECT_EQ(sink.Thrown(), 3);
}

INSTANTIATE_TEST_SUITE_P(AllKinds, PacketTraceTest, testing::ValuesIn(kThrownKinds), NameOfKind);

class FlushTraceTest : public ThrowingTracesTest, public testing::WithParamInterface<ThrownKind> {};

TEST_P(FlushTraceTest, OfProblemsIsReportedLikeAnyOtherOfTheFlush) {
    Add({ValidEntry("7")});
    m_core.OnCall("ImportHistoryData").ReturnsText(u"entry 1 is bad");
    ThrowingSink sink(m_core.Log(), GetParam(), "ReallyImportHistory error", 1);
    EXPECT_NO_THROW(EXPECT_EQ(m_importer->ReallyImportHistory(m_error), 0));
    const bool joins = GetParam() == ThrownKind::kUnknown;
    const Obx_String problems = joins ? u"entry 1 is bad" : u"";
    ExpectErrorText(problems + ReplacedText(GetParam(), "ReallyImportHistory"));
    const bool undoes = GetParam() == ThrownKind::kMessage;
    EXPECT_EQ(Count(Calls(), "RevertImportHistory()"), undoes ? 1 : 0);
    EXPECT_EQ(Trace().back(), std::string("ReallyImportHistory") +
                                  (undoes ? " error: " : " ends with error: ") + m_error.ToUtf8());
    ExpectNoPendingHistory();
}

TEST_P(FlushTraceTest, OfNothingToImportGivesTheEmptyBatchBack) {
    Add({});
    ThrowingSink sink(m_core.Log(), GetParam(), "ReallyImportHistory ends with no history");
    EXPECT_NO_THROW(EXPECT_EQ(m_importer->ReallyImportHistory(m_error), 0));
    EXPECT_FALSE(m_error.IsEmpty());
    ExpectNoPendingHistory();
}

INSTANTIATE_TEST_SUITE_P(AllKinds, FlushTraceTest, testing::ValuesIn(kThrownKinds), NameOfKind);

}  // namespace
