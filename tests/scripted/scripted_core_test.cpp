#include "tests/scripted/scripted_core.h"

#include <gmock/gmock.h>

#include "platform/messages/pamsgexception.h"
#include "tests/scripted/scripted_session.h"
#include "tests/scripted/trace_lines.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class ScriptedCoreTest : public testing::Test {
  protected:
    std::vector<std::string> Calls() { return m_core.Log().Lines({CallLog::Kind::kCall}); }

    // Searches for the record and leaves the result set on its first row; the status of the fetch.
    int Search(const Obx_String& value, AdResultSetPtr& found) {
        AdQueryDefPtr query = BuildQueryDef(m_session, &m_bug, 0);
        query->BuildFilter(nullptr, u"source_id", AdCompOp_t::kEqual, value, 1);
        found = BuildResultSet(m_session, query);
        int status = 1;
        found->FetchNext(status);
        return status;
    }

    ScriptedCore m_core;
    ScriptedEntityDef& m_bug = m_core.AddRecordType(u"bug").Field(u"title", 1);
    AdSessionPtr m_session{new ScriptedSession(m_core)};
};

TEST_F(ScriptedCoreTest, WritesDownEachCallWithItsArguments) {
    AdEntityPtr bug = ImportEntity(m_session, &m_bug, Obx_String(u"NEW").Units(), nullptr);
    bug->SetFieldValue(u"title", u"", 1);
    UpdateImportHistoryExpiredTimestamp(m_session, &m_bug, 33);
    EXPECT_THAT(Calls(), ElementsAre("ImportEntity(bug, NEW, null)", "SetFieldValue(title, '', 1)",
                                     "UpdateImportHistoryExpiredTimestamp(bug, 33)"));
}

TEST_F(ScriptedCoreTest, KeepsQuestionsAboutDefinitionsApart) {
    GetEntityDef(m_session, u"BUG")->GetType();
    EXPECT_THAT(Calls(), ElementsAre("GetEntityDef(BUG)"));
    EXPECT_THAT(m_core.Log().Lines({CallLog::Kind::kQuestion}), ElementsAre("bug.GetType()"));
}

TEST_F(ScriptedCoreTest, PutsTracesInTheirPlaceAmongTheCalls) {
    TraceLines traces(m_core.Log());
    AdDiagnostic::Report(u"AdImporter", u"begins");
    CommitImportHistory(m_session);
    AdDiagnostic::Report(u"AdImporter", u"ends");
    EXPECT_THAT(m_core.Log().Lines({CallLog::Kind::kTrace, CallLog::Kind::kCall}),
                ElementsAre("trace: begins", "CommitImportHistory()", "trace: ends"));
}

TEST_F(ScriptedCoreTest, ASearchFindsWhatItWasTold) {
    m_core.Matches(u"bug", u"source_id", u"core-1").rows = {u"33", u"34"};
    AdResultSetPtr found;
    EXPECT_EQ(Search(u"core-1", found), 1);
    EXPECT_EQ(found->GetRowCount(), 2);
    Obx_String first;
    found->GetColumn(1, first, 0);
    EXPECT_EQ(first, u"33");
}

TEST_F(ScriptedCoreTest, ASearchThatWasNotToldFindsNothing) {
    AdResultSetPtr found;
    EXPECT_EQ(Search(u"core-1", found), 0);
    EXPECT_EQ(found->GetRowCount(), 0);
}

TEST_F(ScriptedCoreTest, ARowCountCanBeTold) {
    m_core.Matches(u"bug", u"source_id", u"core-1") = {.rows = {u"33"}, .count = -1, .status = 1};
    AdResultSetPtr found;
    EXPECT_EQ(Search(u"core-1", found), 1);
    EXPECT_EQ(found->GetRowCount(), -1);
}

TEST_F(ScriptedCoreTest, OnlyTheToldOccurrenceAnswers) {
    m_core.OnCall("SetFieldValue", 2).ReturnsText(u"refused");
    AdEntityPtr bug = ImportEntity(m_session, &m_bug, nullptr, nullptr);
    EXPECT_EQ(bug->SetFieldValue(u"title", u"a", 1), u"");
    EXPECT_EQ(bug->SetFieldValue(u"title", u"b", 1), u"refused");
    EXPECT_EQ(bug->SetFieldValue(u"title", u"c", 1), u"");
}

TEST_F(ScriptedCoreTest, CommitReportsTheToldMessage) {
    m_core.OnCall("Commit").Reports(CoreMessage(u"disk full"));
    AdEntityPtr bug = ImportEntity(m_session, &m_bug, nullptr, nullptr);
    PaMessage message;
    bug->Validate(message);
    EXPECT_EQ(message.ID(), 0);
    bug->Commit(message);
    EXPECT_EQ(message.FullMsg(), CoreMessage(u"disk full").FullMsg());
}

TEST_F(ScriptedCoreTest, TellsWhichAnswersWereNeverAskedFor) {
    m_core.OnCall("CommitImportHistory", 2).ReturnsNumber(1);
    CommitImportHistory(m_session);
    EXPECT_THAT(m_core.Answers().NeverAsked(), ElementsAre("CommitImportHistory 2"));
    CommitImportHistory(m_session);
    EXPECT_THAT(m_core.Answers().NeverAsked(), IsEmpty());
}

TEST_F(ScriptedCoreTest, CountsTheHandlesThatAreHeld) {
    AdEntityPtr bug = ImportEntity(m_session, &m_bug, nullptr, nullptr);
    EXPECT_EQ(m_core.HandlesHeld(), 1);
    bug.SetPtr(nullptr);
    EXPECT_EQ(m_core.HandlesHeld(), 0);
    EXPECT_THAT(m_core.Log().Lines({CallLog::Kind::kRelease}), ElementsAre("release: bug 101"));
}

TEST_F(ScriptedCoreTest, ThrowsAMessageExceptionWhoseFirstMessageIsTheCause) {
    m_core.OnCall("CommitImportHistory").Throws(ThrownKind::kMessage, u"disk full");
    try {
        CommitImportHistory(m_session);
        FAIL() << "nothing was thrown";
    } catch (PaMsgException* exception) {
        EXPECT_EQ(exception->Messages().size(), 2U);
        EXPECT_EQ(AdExtractFirstMsgAndDeleteException(exception),
                  CoreMessage(u"disk full").FullMsg());
    }
}

TEST_F(ScriptedCoreTest, ThrowsAFoundationException) {
    m_core.OnCall("CommitImportHistory").Throws(ThrownKind::kFoundation, u"disk full");
    try {
        CommitImportHistory(m_session);
        FAIL() << "nothing was thrown";
    } catch (CException* exception) {
        EXPECT_EQ(dynamic_cast<PaMsgException*>(exception), nullptr);
        char16_t text[100];
        exception->GetErrorMessage(text, 100);
        EXPECT_EQ(Obx_String(text), u"disk full");
        exception->Delete();
    }
}

TEST_F(ScriptedCoreTest, ThrowsAText) {
    m_core.OnCall("CommitImportHistory").Throws(ThrownKind::kText, u"disk full");
    try {
        CommitImportHistory(m_session);
        FAIL() << "nothing was thrown";
    } catch (Obx_String* text) {
        EXPECT_EQ(*text, u"disk full");
        delete text;
    }
}

TEST_F(ScriptedCoreTest, ThrowsWhatNobodyKnows) {
    m_core.OnCall("CommitImportHistory").Throws(ThrownKind::kUnknown);
    EXPECT_THROW(CommitImportHistory(m_session), int);
}

}  // namespace
