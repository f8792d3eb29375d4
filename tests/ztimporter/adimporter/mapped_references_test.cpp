#include <gtest/gtest.h>

#include <algorithm>

#include "platform/messages/message_ids.h"
#include "tests/ztimporter/importer_fixture.h"

// References that the configuration maps to a field of the referenced record type.

namespace {

class MappedReferencesTest : public ImporterTest {
  protected:
    int Write(const Pairs& fields) {
        GivenRecordMap(fields);
        AdEntityPtr bug = GivenOpenBug();
        return m_importer->SetupFieldValues(bug, m_error);
    }

    void GivenMapping(const char16_t* field, const char16_t* referencedField) {
        m_importer->m_recordReferenceMapping.SetAt(field, referencedField);
    }

    bool Called(const std::string& call) {
        const Lines calls = Calls();
        return std::find(calls.begin(), calls.end(), call) != calls.end();
    }

    void ExpectNoQuery() { EXPECT_FALSE(Called("Execute()")); }
};

TEST_F(MappedReferencesTest, ATypeWithOneKeyFieldIsLookedUpByIt) {
    GivenMapping(u"owner", u"mail");
    m_core.Matches(u"user", u"mail", u"a@b").rows = {u"ann"};
    EXPECT_EQ(Write({{"owner", " a@b "}}), 1);
    ExpectErrorText(u"");
    ExpectCalls({"BuildQueryDef(user, 0)", "SelectField(1, path of login)",
                 "BuildFilter(null, mail, 1, a@b, 1)", "BuildResultSet(mail = a@b)", "Prepare()",
                 "Execute()", "FetchNext(1)", "GetRowCount()", "GetColumn(1, 0)",
                 "UnbuildResultSet(mail = a@b)", "UnbuildQueryDef(mail = a@b)",
                 "SetFieldValue(owner, ann, 1)"});
}

TEST_F(MappedReferencesTest, ATypeWithStatesIsLookedUpByItsId) {
    GivenMapping(u"parent", u"source_id");
    GivenRecords(u"core-1", {u"BUG00000033"});
    EXPECT_EQ(Write({{"parent", "core-1"}}), 1);
    EXPECT_TRUE(Called("SelectField(1, path of ID)"));
    EXPECT_EQ(Calls().back(), "SetFieldValue(parent, BUG00000033, 1)");
}

TEST_F(MappedReferencesTest, ATypeWithStatesIsNotAskedForItsKey) {
    GivenMapping(u"parent", u"source_id");
    GivenRecords(u"core-1", {u"BUG00000033"});
    Write({{"parent", "core-1"}});
    for (const std::string& question : m_core.Log().Lines({CallLog::Kind::kQuestion})) {
        EXPECT_EQ(question.find("UniqueKey"), std::string::npos) << question;
    }
}

TEST_F(MappedReferencesTest, TheLookUpTracesWhatItLooksFor) {
    GivenMapping(u"owner", u"mail");
    m_core.Matches(u"user", u"mail", u"a@b").rows = {u"ann"};
    Write({{"owner", "a@b"}});
    ExpectTrace({"SetupFieldValues begins",
                 "IsReferenceIDValid begins, fieldName: owner, fieldValue: a@b, "
                 "referencedFieldName: mail, uniqueKey: login",
                 "IsReferenceIDValid ends", "SetupFieldValues ends"});
}

TEST_F(MappedReferencesTest, AFailedLookUpEndsThePass) {
    GivenMapping(u"owner", u"mail");
    EXPECT_EQ(Write({{"owner", "a@b"}, {"title", "Crash"}}), 0);
    const Obx_String text = Message(
        message_id::kReferenceNotFound,
        {{u"_entitydef_", u"bug"}, {u"_fieldname_", u"owner"}, {u"_refentitydef_", u"user"}});
    ExpectErrorText(text);
    ExpectStoryEnds({"UnbuildQueryDef(mail = a@b)",
                     "trace: IsReferenceIDValid ends with error: " + text.ToUtf8(),
                     "trace: SetupFieldValues ends with error: " + text.ToUtf8()});
}

TEST_F(MappedReferencesTest, BlankClearsAMappedReferenceWithoutALookUp) {
    GivenMapping(u"owner", u"mail");
    GivenMapping(u"parent", u"source_id");
    EXPECT_EQ(Write({{"owner", "BLANK"}, {"parent", " blank"}}), 1);
    ExpectCalls({"SetFieldValue(owner, '', 1)", "SetFieldValue(parent, '', 1)"});
}

TEST_F(MappedReferencesTest, EachListItemIsLookedUp) {
    GivenMapping(u"keywords", u"code");
    m_core.Matches(u"keyword", u"code", u"1").rows = {u"ui"};
    m_core.Matches(u"keyword", u"code", u"2").rows = {u"slow"};
    EXPECT_EQ(Write({{"keywords", "1, 2"}}), 1);
    EXPECT_TRUE(Called("SelectField(1, path of name)"));
    EXPECT_TRUE(Called("AddFieldValue(keywords, ui, 1)"));
    EXPECT_TRUE(Called("AddFieldValue(keywords, slow, 1)"));
}

TEST_F(MappedReferencesTest, AListItemThatIsNotFoundEndsThePass) {
    GivenMapping(u"keywords", u"code");
    m_core.Matches(u"keyword", u"code", u"1").rows = {u"ui"};
    EXPECT_EQ(Write({{"keywords", "1,2,1"}}), 0);
    ExpectErrorText(Message(message_id::kReferenceNotFound, {{u"_entitydef_", u"bug"},
                                                             {u"_fieldname_", u"keywords"},
                                                             {u"_refentitydef_", u"keyword"}}));
    EXPECT_EQ(Calls().back(), "UnbuildQueryDef(code = 2)");
}

TEST_F(MappedReferencesTest, TheOldListGoesEvenWhenTheFirstItemIsNotFound) {
    GivenMapping(u"keywords", u"code");
    m_importer->m_replaceRefList = 1;
    m_core.SetFieldValues(u"keywords", {u"old"});
    EXPECT_EQ(Write({{"keywords", "1"}}), 0);
    EXPECT_EQ(Calls().at(2), "DeleteFieldValue(keywords, old, 1)");
}

TEST_F(MappedReferencesTest, ABlankListItemIsLookedUpLikeAnyOther) {
    GivenMapping(u"keywords", u"code");
    m_core.Matches(u"keyword", u"code", u"BLANK").rows = {u"empty"};
    EXPECT_EQ(Write({{"keywords", "BLANK"}}), 1);
    EXPECT_EQ(Calls().back(), "AddFieldValue(keywords, empty, 1)");
}

TEST_F(MappedReferencesTest, AKeyOfSeveralPartsHasItsFirstPartLookedUpByDbId) {
    GivenMapping(u"place", u"code");
    m_core.Matches(u"place", u"code", u"17").rows = {u"33"};
    EXPECT_EQ(Write({{"place", "17 a b"}}), 1);
    EXPECT_TRUE(Called("SelectField(1, path of DBID)"));
    EXPECT_EQ(Calls().back(), "SetFieldValue(place, 33 a b, 1)");
}

TEST_F(MappedReferencesTest, AKeyOfSeveralFieldsMayBeGivenAsItsFirstPartAlone) {
    GivenMapping(u"place", u"code");
    m_core.Matches(u"place", u"code", u"17").rows = {u"33"};
    EXPECT_EQ(Write({{"place", "17"}}), 1);
    EXPECT_EQ(Calls().back(), "SetFieldValue(place, 33, 1)");
}

TEST_F(MappedReferencesTest, OnlyTypesOfTheKindWithStatesAreLookedUpByTheirId) {
    m_core.OnCall("GetType").ReturnsNumber(3);
    GivenMapping(u"owner", u"mail");
    m_core.Matches(u"user", u"mail", u"a@b").rows = {u"ann"};
    EXPECT_EQ(Write({{"owner", "a@b"}}), 1);
    EXPECT_TRUE(Called("SelectField(1, path of login)"));
}

TEST_F(MappedReferencesTest, TheNumberOfKeyFieldsDecidesAndNotThatOfTheirLabels) {
    GivenMapping(u"place", u"code");
    m_core.OnCall("NumUniqueKeyFieldDefs").ReturnsNumber(1);
    m_place.Key({u"street", u"dbid", u"town"});
    m_core.Matches(u"place", u"code", u"17 a").rows = {u"Mill Lane"};
    EXPECT_EQ(Write({{"place", "17 a"}}), 1);
    EXPECT_TRUE(Called("SelectField(1, path of street)"));
    EXPECT_EQ(Calls().back(), "SetFieldValue(place, Mill Lane, 1)");
}

TEST_F(MappedReferencesTest, SeveralKeyFieldsWithOneLabelAreOfSeveralParts) {
    GivenMapping(u"owner", u"mail");
    m_core.OnCall("NumUniqueKeyFieldDefs").ReturnsNumber(2);
    EXPECT_EQ(Write({{"owner", "a@b"}}), 1);
    ExpectCalls({"SetFieldValue(owner, a@b, 1)"});
}

TEST_F(MappedReferencesTest, AKeyOfSeveralPartsKeepsEmptyParts) {
    GivenMapping(u"place", u"code");
    m_core.Matches(u"place", u"code", u"17").rows = {u"33"};
    Write({{"place", "17  b"}});
    EXPECT_EQ(Calls().back(), "SetFieldValue(place, 33  b, 1)");
}

TEST_F(MappedReferencesTest, TheDbIdLabelCountsWhereverItStandsAndHoweverItIsWritten) {
    m_place.Key({u"street", u"DbId"});
    GivenMapping(u"place", u"code");
    m_core.Matches(u"place", u"code", u"17").rows = {u"33"};
    EXPECT_EQ(Write({{"place", "17 a"}}), 1);
    EXPECT_EQ(Calls().back(), "SetFieldValue(place, 33 a, 1)");
}

TEST_F(MappedReferencesTest, TwoDbIdLabelsLookTwiceUp) {
    m_place.Key({u"dbid", u"DBID"});
    GivenMapping(u"place", u"code");
    m_core.Matches(u"place", u"code", u"17").rows = {u"33"};
    m_core.Matches(u"place", u"code", u"33").rows = {u"44"};
    EXPECT_EQ(Write({{"place", "17 a"}}), 1);
    EXPECT_EQ(Calls().back(), "SetFieldValue(place, 44 a, 1)");
}

TEST_F(MappedReferencesTest, AFirstPartThatIsNotFoundEndsThePass) {
    GivenMapping(u"place", u"code");
    EXPECT_EQ(Write({{"place", "17 a"}, {"title", "Crash"}}), 0);
    ExpectErrorText(Message(
        message_id::kReferenceNotFound,
        {{u"_entitydef_", u"bug"}, {u"_fieldname_", u"place"}, {u"_refentitydef_", u"place"}}));
    EXPECT_EQ(Calls().back(), "UnbuildQueryDef(code = 17)");
}

TEST_F(MappedReferencesTest, SeveralKeyFieldsWithoutDbIdAreSetUnresolved) {
    m_place.Key({u"street", u"town"});
    GivenMapping(u"place", u"code");
    EXPECT_EQ(Write({{"place", "17 a"}}), 1);
    ExpectCalls({"SetFieldValue(place, 17 a, 1)"});
}

TEST_F(MappedReferencesTest, BlankWithSeveralKeyFieldsIsValidAndLooksNothingUp) {
    GivenMapping(u"place", u"code");
    EXPECT_EQ(Write({{"place", "BLANK"}}), 1);
    ExpectErrorText(u"");
    ExpectNoQuery();
    EXPECT_EQ(Calls().back(), "SetFieldValue(place, '', 1)");
}

TEST_F(MappedReferencesTest, ATypeWithoutKeyLabelsCountsAsUnmapped) {
    m_place.Key({});
    GivenMapping(u"place", u"code");
    EXPECT_EQ(Write({{"place", "17"}}), 1);
    ExpectErrorText(u"");
    ExpectNoQuery();
    EXPECT_EQ(Calls().back(), "SetFieldValue(place, 17, 1)");
}

TEST_F(MappedReferencesTest, OneKeyFieldIsUsedWhateverItsName) {
    m_place.Key({u"dbid"});
    GivenMapping(u"place", u"code");
    m_core.Matches(u"place", u"code", u"17 a").rows = {u"33"};
    EXPECT_EQ(Write({{"place", "17 a"}}), 1);
    EXPECT_TRUE(Called("SelectField(1, path of dbid)"));
    EXPECT_EQ(Calls().back(), "SetFieldValue(place, 33, 1)");
}

TEST_F(MappedReferencesTest, MappingsAreFoundByTheExactFieldName) {
    GivenMapping(u"OWNER", u"mail");
    Write({{"owner", "a@b"}});
    ExpectCalls({"SetFieldValue(owner, a@b, 1)"});
}

TEST_F(MappedReferencesTest, PlainFieldsAreNeverLookedUp) {
    GivenMapping(u"title", u"mail");
    Write({{"title", "a@b"}});
    ExpectCalls({"SetFieldValue(title, a@b, 1)"});
}

TEST_F(MappedReferencesTest, ANullRecordArrivesAsAMessage) {
    GivenRecordMap({{"owner", "a@b"}});
    m_error = u"";
    EXPECT_EQ(m_importer->SetupFieldValues(nullptr, m_error), 0);
    ExpectBadValue(u"entity != __null");
    EXPECT_EQ(Trace().back(), "SetupFieldValues ends with error: " + m_error.ToUtf8());
}

}  // namespace
