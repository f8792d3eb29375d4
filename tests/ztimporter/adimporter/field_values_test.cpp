#include <gtest/gtest.h>

#include "tests/ztimporter/importer_fixture.h"
#include "tests/ztimporter/thrown_cases.h"

namespace {

// Plain values, references and reference lists.
class FieldValuesTest : public ImporterTest {
  protected:
    int Write(const Pairs& fields) {
        GivenRecordMap(fields);
        AdEntityPtr bug = GivenOpenBug();
        return m_importer->SetupFieldValues(bug, m_error);
    }

    void GivenMapping(const char16_t* field, const char16_t* referencedField) {
        m_importer->m_recordReferenceMapping.SetAt(field, referencedField);
    }

    // The calls that write something into the record.
    void ExpectWrites(const Lines& lines) {
        Lines writes;
        for (const std::string& call : Calls()) {
            if (call.find("FieldValue(") != std::string::npos && !call.starts_with("Get")) {
                writes.push_back(call);
            }
        }
        EXPECT_EQ(writes, lines);
    }
};

TEST_F(FieldValuesTest, AnEmptyRecordMapTouchesNothing) {
    EXPECT_EQ(Write({}), 1);
    ExpectErrorText(u"");
    ExpectCallsAndQuestions({});
    ExpectTrace({"SetupFieldValues begins", "SetupFieldValues ends"});
}

TEST_F(FieldValuesTest, PlainValuesAreSetInTheMapsOrder) {
    EXPECT_EQ(Write({{"title", "Crash"}, {"source_id", "core-1"}}), 1);
    ExpectStory({"trace: SetupFieldValues begins", "SetFieldValue(title, Crash, 1)",
                 "SetFieldValue(source_id, core-1, 1)", "trace: SetupFieldValues ends"});
}

TEST_F(FieldValuesTest, PlainValuesAreNotTrimmed) {
    Write({{"title", "  Crash \t"}, {"notes", "   "}});
    ExpectCalls({"SetFieldValue(title,   Crash \t, 1)", "SetFieldValue(notes,    , 1)"});
}

TEST_F(FieldValuesTest, AnEmptyPlainValueIsSkipped) {
    EXPECT_EQ(Write({{"title", ""}}), 1);
    ExpectNoCalls();
}

TEST_F(FieldValuesTest, BlankClearsAPlainField) {
    Write({{"title", "BLANK"}, {"notes", "blank"}, {"source_id", "BlAnK"}});
    ExpectCalls({"SetFieldValue(title, '', 1)", "SetFieldValue(notes, '', 1)",
                 "SetFieldValue(source_id, '', 1)"});
}

TEST_F(FieldValuesTest, ABlankWithSpacesIsAnOrdinaryPlainValue) {
    Write({{"title", "  BLANK "}});
    ExpectCalls({"SetFieldValue(title,   BLANK , 1)"});
}

class PlainTypeTest : public FieldValuesTest, public testing::WithParamInterface<long> {};

TEST_P(PlainTypeTest, IsSetAsItStands) {
    m_core.OnCall("GetFieldType").ReturnsNumber(GetParam());
    EXPECT_EQ(Write({{"title", " v "}}), 1);
    ExpectCalls({"SetFieldValue(title,  v , 1)"});
}

INSTANTIATE_TEST_SUITE_P(AllButTheSpecialOnes, PlainTypeTest,
                         testing::Values(-1L, 0L, 1L, 2L, 3L, 4L, 9L, 12L, 99L));

TEST_F(FieldValuesTest, DisplayIdAndDbIdAreIgnored) {
    EXPECT_EQ(Write({{"id", "BUG1"}, {"dbid", "7"}, {"title", "Crash"}}), 1);
    ExpectCalls({"SetFieldValue(title, Crash, 1)"});
}

TEST_F(FieldValuesTest, ARefusedValueEndsThePass) {
    m_core.OnCall("SetFieldValue", 1).ReturnsText(u"too long");
    EXPECT_EQ(Write({{"title", "Crash"}, {"notes", "n"}}), 0);
    ExpectErrorText(u"too long");
    ExpectStory({"trace: SetupFieldValues begins", "SetFieldValue(title, Crash, 1)",
                 "trace: SetupFieldValues ends with error: too long"});
}

TEST_F(FieldValuesTest, FieldsWrittenBeforeARefusalStayWritten) {
    m_core.OnCall("SetFieldValue", 2).ReturnsText(u"too long");
    EXPECT_EQ(Write({{"title", "Crash"}, {"notes", "n"}, {"source_id", "1"}}), 0);
    ExpectCalls({"SetFieldValue(title, Crash, 1)", "SetFieldValue(notes, n, 1)"});
}

TEST_F(FieldValuesTest, AnAcceptedPlainValueClearsAnEarlierErrorText) {
    m_error = u"earlier";
    EXPECT_EQ(Write({{"title", "Crash"}}), 1);
    ExpectErrorText(u"");
}

TEST_F(FieldValuesTest, ARefusalReplacesAnEarlierErrorText) {
    m_error = u"earlier";
    m_core.OnCall("SetFieldValue").ReturnsText(u"too long");
    EXPECT_EQ(Write({{"title", "Crash"}}), 0);
    ExpectErrorText(u"too long");
}

TEST_F(FieldValuesTest, AnUnmappedReferenceIsSetAsItStandsButTrimmed) {
    EXPECT_EQ(Write({{"owner", " \t ann \n"}}), 1);
    ExpectCalls({"SetFieldValue(owner, ann, 1)"});
}

TEST_F(FieldValuesTest, AReferenceOfWhiteSpaceIsSkipped) {
    EXPECT_EQ(Write({{"owner", " \t\n "}}), 1);
    ExpectNoCalls();
}

TEST_F(FieldValuesTest, BlankClearsAReferenceAlsoWithSpaces) {
    Write({{"owner", " blank "}});
    ExpectCalls({"SetFieldValue(owner, '', 1)"});
}

TEST_F(FieldValuesTest, AMappingToAnEmptyFieldNameIsNone) {
    GivenMapping(u"owner", u"");
    Write({{"owner", "ann"}});
    ExpectCalls({"SetFieldValue(owner, ann, 1)"});
}

TEST_F(FieldValuesTest, ARefusedReferenceEndsThePass) {
    m_core.OnCall("SetFieldValue").ReturnsText(u"no such user");
    EXPECT_EQ(Write({{"owner", "ann"}, {"title", "Crash"}}), 0);
    ExpectErrorText(u"no such user");
    EXPECT_EQ(Trace().back(), "SetupFieldValues ends with error: no such user");
    ExpectWrites({"SetFieldValue(owner, ann, 1)"});
}

TEST_F(FieldValuesTest, ListItemsAreAddedOneByOneAndTrimmed) {
    EXPECT_EQ(Write({{"keywords", "ui , crash,\tslow"}}), 1);
    ExpectCalls({"AddFieldValue(keywords, ui, 1)", "AddFieldValue(keywords, crash, 1)",
                 "AddFieldValue(keywords, slow, 1)"});
}

TEST_F(FieldValuesTest, EmptyListItemsAreSkipped) {
    EXPECT_EQ(Write({{"keywords", ",ui,, ,crash,"}}), 1);
    ExpectCalls({"AddFieldValue(keywords, ui, 1)", "AddFieldValue(keywords, crash, 1)"});
}

TEST_F(FieldValuesTest, ABlankListItemIsAddedLiterally) {
    Write({{"keywords", "BLANK"}});
    ExpectCalls({"AddFieldValue(keywords, BLANK, 1)"});
}

TEST_F(FieldValuesTest, ARefusedListItemEndsThePass) {
    m_core.OnCall("AddFieldValue", 2).ReturnsText(u"no such keyword");
    EXPECT_EQ(Write({{"keywords", "a,b,c"}, {"title", "Crash"}}), 0);
    ExpectErrorText(u"no such keyword");
    ExpectCalls({"AddFieldValue(keywords, a, 1)", "AddFieldValue(keywords, b, 1)"});
}

TEST_F(FieldValuesTest, WithoutReplacingTheOldListIsNotRead) {
    m_core.SetFieldValues(u"keywords", {u"old"});
    Write({{"keywords", "new"}});
    ExpectCalls({"AddFieldValue(keywords, new, 1)"});
}

TEST_F(FieldValuesTest, ReplacingDeletesTheOldListFirst) {
    m_importer->m_replaceRefList = 1;
    m_core.SetFieldValues(u"keywords", {u"old", u"older"});
    EXPECT_EQ(Write({{"keywords", "new"}}), 1);
    ExpectCalls({"GetFieldValue(keywords)", "keywords.GetValues()",
                 "DeleteFieldValue(keywords, old, 1)", "DeleteFieldValue(keywords, older, 1)",
                 "AddFieldValue(keywords, new, 1)"});
}

TEST_F(FieldValuesTest, ReplacingByBlankItemsLeavesAnEmptyList) {
    m_importer->m_replaceRefList = 1;
    m_core.SetFieldValues(u"keywords", {u"old"});
    EXPECT_EQ(Write({{"keywords", " , ,"}}), 1);
    ExpectWrites({"DeleteFieldValue(keywords, old, 1)"});
}

TEST_F(FieldValuesTest, AFailedDeletionIsIgnored) {
    m_importer->m_replaceRefList = 1;
    m_core.SetFieldValues(u"keywords", {u"old", u"older"});
    m_core.OnCall("DeleteFieldValue").ReturnsText(u"cannot");
    // The list comes last and brings no item: a field or an item after it would clear a text that
    // the deletion left.
    EXPECT_EQ(Write({{"title", "Crash"}, {"keywords", " , "}}), 1);
    ExpectErrorText(u"");
    ExpectWrites({"SetFieldValue(title, Crash, 1)", "DeleteFieldValue(keywords, old, 1)",
                  "DeleteFieldValue(keywords, older, 1)"});
}

TEST_F(FieldValuesTest, ReplacingTouchesOnlyLists) {
    m_importer->m_replaceRefList = 1;
    m_core.SetFieldValues(u"owner", {u"old"});
    Write({{"owner", "ann"}});
    ExpectCalls({"SetFieldValue(owner, ann, 1)"});
}

class NullFieldTest : public FieldValuesTest, public testing::WithParamInterface<std::string> {};

TEST_P(NullFieldTest, OfTheCoreIsABadValue) {
    m_importer->m_replaceRefList = 1;
    m_core.OnCall("GetFieldValue").ReturnsNull();
    EXPECT_EQ(Write({{GetParam(), "x"}, {"title", "Crash"}}), 0);
    ExpectBadValue(u"fieldInfo != __null");
    ExpectWrites({});
}

INSTANTIATE_TEST_SUITE_P(Fields, NullFieldTest, testing::Values("keywords", "log", "files"),
                         [](const auto& instance) { return instance.param; });

TEST_F(FieldValuesTest, AnUnknownFieldIsTheCoresError) {
    EXPECT_EQ(Write({{"nosuch", "x"}, {"title", "Crash"}}), 0);
    ExpectErrorText(u"\n" + CoreMessage(u"no field nosuch").FullMsg());
    ExpectNoCalls();
}

class FieldValuesThrowsTest : public FieldValuesTest,
                              public testing::WithParamInterface<ThrownCase> {};

TEST_P(FieldValuesThrowsTest, AppendsToTheErrorTextAndEndsThePass) {
    m_importer->m_replaceRefList = 1;
    m_core.SetFieldValues(u"keywords", {u"old"});
    m_core.OnCall(GetParam().call.name, GetParam().call.occurrence).Throws(GetParam().kind);
    EXPECT_EQ(Write({{"owner", "ann"}, {"keywords", "new"}, {"title", "Crash"}}), 0);
    const Obx_String text = AppendedTextOf(GetParam().kind, u"boom");
    ExpectErrorText(text);
    EXPECT_EQ(Trace(), (Lines{"SetupFieldValues begins",
                              "SetupFieldValues ends with error: " + text.ToUtf8()}));
    EXPECT_NE(Calls(), Lines{"SetFieldValue(title, Crash, 1)"}) << "the pass did not end";
}

INSTANTIATE_TEST_SUITE_P(EveryCall, FieldValuesThrowsTest,
                         testing::ValuesIn(EachKindAt({{"GetFieldType"},
                                                       {"SetFieldValue"},
                                                       {"GetFieldValue"},
                                                       {"GetValues"},
                                                       {"DeleteFieldValue"},
                                                       {"AddFieldValue"}})),
                         NameOfCase);

}  // namespace
