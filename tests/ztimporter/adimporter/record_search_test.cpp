#include <gtest/gtest.h>

#include "tests/ztimporter/importer_fixture.h"
#include "tests/ztimporter/thrown_cases.h"

// GetResultSetWhere: the search by which records are found through a field.

namespace {

class RecordSearchTest : public ImporterTest {
  protected:
    // Whether the search gave a result set.
    bool SearchFor(const Obx_String& sourceId) {
        m_found = m_importer->GetResultSetWhere(&m_bug, u"source_id", sourceId, m_error);
        return m_found.GetPtr() != nullptr;
    }

    void TearDown() override {
        m_found.SetPtr(nullptr);
        ImporterTest::TearDown();
    }

    AdResultSetPtr m_found;
};

TEST_F(RecordSearchTest, GivesTheResultSetOnItsFirstRow) {
    GivenRecords(u"core-1", {u"33"});
    ASSERT_TRUE(SearchFor(u"core-1"));
    Obx_String dbId;
    m_found->GetColumn(1, dbId, 0);
    EXPECT_EQ(dbId, u"33");
}

TEST_F(RecordSearchTest, SelectsTheIdentifierAndLimitsTheRows) {
    GivenRecords(u"core-1", {u"33"});
    SearchFor(u"core-1");
    ExpectCalls(Search("source_id", "core-1"));
}

TEST_F(RecordSearchTest, LeavesTheRowsUncounted) {
    GivenRecords(u"core-1", {u"33", u"34"});
    EXPECT_TRUE(SearchFor(u"core-1"));
    ExpectErrorText(u"");
    ExpectCalls(Search("source_id", "core-1"));
}

TEST_F(RecordSearchTest, TracesFieldAndValue) {
    GivenRecords(u"core-1", {u"33"});
    SearchFor(u"core-1");
    ExpectStory(Joined(Lines{"trace: GetResultSetWhere begins: filed=source_id, value=core-1"},
                       Search("source_id", "core-1"),
                       Lines{"trace: GetResultSetWhere ends successfully"}));
}

TEST_F(RecordSearchTest, NothingFoundIsNoError) {
    m_error = u"earlier";
    EXPECT_FALSE(SearchFor(u"core-1"));
    ExpectErrorText(u"earlier");
    ExpectStory(Joined(Lines{"trace: GetResultSetWhere begins: filed=source_id, value=core-1"},
                       Search("source_id", "core-1"), Lines{"trace: GetResultSetWhere ends"}));
}

TEST_F(RecordSearchTest, AResultSetWithoutRowsIsReleasedBeforeTheEndTrace) {
    SearchFor(u"core-1");
    const Lines lines = m_core.Log().Lines({CallLog::Kind::kRelease, CallLog::Kind::kTrace});
    EXPECT_EQ(
        Lines(lines.end() - 2, lines.end()),
        (Lines{"release: result set of source_id = core-1", "trace: GetResultSetWhere ends"}));
}

TEST_F(RecordSearchTest, ARowThatCannotBeFetchedIsNotFound) {
    m_core.Matches(u"bug", u"source_id", u"core-1") = {.rows = {u"33"}, .count = 1, .status = 2};
    EXPECT_FALSE(SearchFor(u"core-1"));
    ExpectErrorText(u"");
}

TEST_F(RecordSearchTest, TheFieldIsFilteredByItsOwnName) {
    m_core.Matches(u"bug", u"source_id", u"core-1").rows = {u"33"};
    m_found = m_importer->GetResultSetWhere(&m_bug, u"Source_ID", u"core-1", m_error);
    EXPECT_NE(m_found.GetPtr(), nullptr);
    EXPECT_EQ(Trace().front(), "GetResultSetWhere begins: filed=Source_ID, value=core-1");
    ExpectCalls(Search("source_id", "core-1"));
}

TEST_F(RecordSearchTest, TheFieldIsLookedUpBeforeTheQueryIsBuilt) {
    SearchFor(u"core-1");
    const Lines lines = m_core.Log().Lines({CallLog::Kind::kCall, CallLog::Kind::kQuestion});
    EXPECT_EQ(lines.at(0), "bug.GetFieldDef(source_id, 0)");
    EXPECT_EQ(lines.at(1), "BuildQueryDef(bug, 0)");
}

TEST_F(RecordSearchTest, AFieldThatTheTypeDoesNotHaveIsAnError) {
    m_found = m_importer->GetResultSetWhere(&m_bug, u"nosuch", u"core-1", m_error);
    EXPECT_EQ(m_found.GetPtr(), nullptr);
    ExpectErrorText(u"\n" + CoreMessage(u"no field nosuch").FullMsg());
    ExpectNoCalls();
}

TEST_F(RecordSearchTest, ACoreWithoutAResultSetFailsAnAssertion) {
    m_core.OnCall("BuildResultSet").ReturnsNull();
    EXPECT_FALSE(SearchFor(u"core-1"));
    ExpectErrorText(u"Caught a CException: \nAssertion failed: adResultSetPtr != NULL");
    EXPECT_EQ(Calls().back(), "BuildResultSet(source_id = core-1)");
}

TEST_F(RecordSearchTest, ANullFieldIsReported) {
    m_core.OnCall("GetFieldDef").ReturnsNull();
    EXPECT_FALSE(SearchFor(u"core-1"));
    ExpectBadValue(u"fieldDef != __null");
    ExpectNoCalls();
}

TEST_F(RecordSearchTest, ANullRecordTypeIsReported) {
    m_found = m_importer->GetResultSetWhere(nullptr, u"source_id", u"core-1", m_error);
    EXPECT_EQ(m_found.GetPtr(), nullptr);
    ExpectBadValue(u"recordType != __null");
    ExpectNoCalls();
}

class RecordSearchThrowsTest : public RecordSearchTest,
                               public testing::WithParamInterface<ThrownCase> {
  protected:
    // This operation has texts of its own: two kinds of exception replace what was there.
    static Obx_String ExpectedText(const char16_t* earlier) {
        switch (GetParam().kind) {
            case ThrownKind::kMessage:
                return earlier + (u"\n" + CoreMessage(u"boom").FullMsg());
            case ThrownKind::kFoundation:
                return u"Caught a CException: \nboom";
            case ThrownKind::kText:
                return u"Caught a CString: ";
            case ThrownKind::kUnknown:
                break;
        }
        return earlier + Obx_String(u"\nCaught an unknown exception");
    }
};

TEST_P(RecordSearchThrowsTest, GivesNoResultSetAndItsOwnText) {
    GivenRecords(u"core-1", {u"33"});
    m_core.OnCall(GetParam().call.name, GetParam().call.occurrence).Throws(GetParam().kind);
    m_error = u"earlier";
    EXPECT_FALSE(SearchFor(u"core-1"));
    const Obx_String text = ExpectedText(u"earlier");
    ExpectErrorText(text);
    ExpectTrace({"GetResultSetWhere begins: filed=source_id, value=core-1",
                 "GetResultSetWhere ends with error: " + text.ToUtf8()});
    const bool triedToUnbuild = Calls().size() == 9U;
    EXPECT_EQ(triedToUnbuild, GetParam().call.name == "UnbuildQueryDef");
}

INSTANTIATE_TEST_SUITE_P(EveryCall, RecordSearchThrowsTest,
                         testing::ValuesIn(EachKindAt({{"GetFieldDef"},
                                                       {"BuildQueryDef"},
                                                       {"SelectDbId"},
                                                       {"GetName"},
                                                       {"BuildFilter"},
                                                       {"BuildResultSet"},
                                                       {"SetRowLimit"},
                                                       {"Prepare"},
                                                       {"Execute"},
                                                       {"FetchNext"},
                                                       {"UnbuildQueryDef"}})),
                         NameOfCase);

}  // namespace
