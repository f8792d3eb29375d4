#include "platform/core/adsession.h"

#include <gmock/gmock.h>

#include <functional>
#include <string>
#include <vector>

#include "tests/platform/thrown_text.h"
#include "tests/scripted/scripted_core.h"
#include "tests/scripted/scripted_session.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

struct NamedCall {
    const char* name;
    std::function<void(const AdSessionPtr&)> run;
};

// Each free function, to be called on a session.
std::vector<NamedCall> AllCalls(AdEntityDef* type) {
    return {
        {"GetEntityDef", [](const auto& session) { GetEntityDef(session, u"bug"); }},
        {"GetEntity", [=](const auto& session) { GetEntity(session, type, u"33"); }},
        {"ImportEntity",
         [=](const auto& session) {
             ImportEntity(session, type, Obx_String(u"NEW").Units(), Obx_String(u"33").Units());
         }},
        {"MarkEntityAsDuplicate",
         [](const auto& session) { MarkEntityAsDuplicate(session, nullptr, nullptr, nullptr, 1); }},
        {"BuildQueryDef", [=](const auto& session) { BuildQueryDef(session, type, 0); }},
        {"UnbuildQueryDef",
         [](const auto& session) {
             AdQueryDefPtr query;
             UnbuildQueryDef(session, query);
         }},
        {"BuildResultSet", [](const auto& session) { BuildResultSet(session, AdQueryDefPtr()); }},
        {"UnbuildResultSet",
         [](const auto& session) {
             AdResultSetPtr resultSet;
             UnbuildResultSet(session, resultSet);
         }},
        {"ImportHistoryData",
         [](const auto& session) {
             const AdHistory entries[2] = {};
             CEnumArray<int, int> problemEntries;
             Obx_String problems;
             ImportHistoryData(session, entries, 2, -1, problemEntries, problems, nullptr, nullptr);
         }},
        {"CommitImportHistory", [](const auto& session) { CommitImportHistory(session); }},
        {"RevertImportHistory", [](const auto& session) { RevertImportHistory(session); }},
        {"UpdateImportHistoryExpiredTimestamp",
         [=](const auto& session) { UpdateImportHistoryExpiredTimestamp(session, type, 33); }},
    };
}

class AdSessionTest : public testing::Test {
  protected:
    AdSessionTest() {
        m_core.AddRecordType(u"bug");
        // A null answer saves handing the scripted core a query of its own.
        m_core.OnCall("BuildResultSet").ReturnsNull();
    }

    ScriptedCore m_core;
    AdSessionPtr m_session{new ScriptedSession(m_core)};
};

TEST_F(AdSessionTest, EachFunctionNeedsAnOpenSession) {
    for (const NamedCall& call : AllCalls(m_core.FindRecordType(u"bug"))) {
        const std::string text = ThrownText([&] { call.run(AdSessionPtr()); });
        EXPECT_THAT(text, HasSubstr(std::string("A value cannot be used: ") + call.name +
                                    " was called without an open session (platform/core/adsession,"
                                    " line "));
    }
    EXPECT_THAT(m_core.Log().Lines({CallLog::Kind::kCall}), IsEmpty());
}

TEST_F(AdSessionTest, EachFunctionHandsItsCallToTheSession) {
    for (const NamedCall& call : AllCalls(m_core.FindRecordType(u"bug"))) {
        call.run(m_session);
    }
    EXPECT_THAT(
        m_core.Log().Lines({CallLog::Kind::kCall}),
        ElementsAre("GetEntityDef(bug)", "GetEntity(bug, 33)", "ImportEntity(bug, NEW, 33)",
                    "MarkEntityAsDuplicate(null, null, null, 1)", "BuildQueryDef(bug, 0)",
                    "UnbuildQueryDef(null)", "BuildResultSet(null)", "UnbuildResultSet(null)",
                    "ImportHistoryData(2 entries, -1, 0 problems, '', null, null)",
                    "CommitImportHistory()", "RevertImportHistory()",
                    "UpdateImportHistoryExpiredTimestamp(bug, 33)"));
}

TEST_F(AdSessionTest, FunctionsReturnWhatTheSessionAnswers) {
    EXPECT_EQ(GetEntityDef(m_session, u"BUG"), m_core.FindRecordType(u"bug"));
    EXPECT_TRUE(GetEntity(m_session, m_core.FindRecordType(u"bug"), u"33"));
    EXPECT_FALSE(BuildResultSet(m_session, AdQueryDefPtr()));
}

}  // namespace
