#include "tool/survey/survey.h"

#include "survey_fixture.h"
#include "tool/survey/key_rules.h"

namespace tool {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

class SurveyTest : public SurveyFixture {};

TEST_F(SurveyTest, CountsValuesEmptyTextsAndNulls) {
    const SourceSurvey source =
        LookAt("a.jsonl", "{\"x\": \"one\"}\n{\"x\": null}\n{\"x\": \"\"}\n{}\n{\"x\": 5}\n");
    const AddressSurvey& x = At(source, "x");
    EXPECT_EQ(source.rows, 5U);
    EXPECT_EQ(x.Values(), 2U);
    EXPECT_EQ(x.rows, 2U);
    EXPECT_EQ(x.texts, 1U);
    EXPECT_EQ(x.numbers, 1U);
    EXPECT_EQ(x.nulls, 1U);
    EXPECT_EQ(x.empties, 1U);
    EXPECT_EQ(x.longest, 3U);
}

TEST_F(SurveyTest, ListsAddressesBehindWhatTheyArePartsOf) {
    const SourceSurvey source =
        LookAt("a.jsonl",
               "{\"id\": 1, \"in\": {\"a/b\": true}, \"tags\": [\"x\", \"y\"]}\n"
               "{\"id\": 2, \"in\": {\"~\": false}, \"log\": [{\"at\": 1}]}\n");
    EXPECT_THAT(AddressesOf(source), ElementsAre("id", "in", "in/a~1b", "in/~0", "tags", "tags/*",
                                                 "log", "log/*", "log/*/at"));
    EXPECT_EQ(At(source, "tags/*").Values(), 2U);
    EXPECT_EQ(At(source, "tags/*").rows, 1U);
    EXPECT_EQ(At(source, "log/*").objects, 1U);
}

TEST_F(SurveyTest, CountsLengthsInCharacters) {
    EXPECT_EQ(At(LookAt("a.csv", "a,b\n\xC3\xA4\xE2\x82\xAC,x\n"), "a").longest, 2U);
}

TEST_F(SurveyTest, KnowsColumnsOfOneNameByTheirPlaces) {
    const SourceSurvey source = LookAt("a.csv", "a,b,a\n1,2,3\n4,5,\n");
    EXPECT_THAT(AddressesOf(source), ElementsAre("a", "b", "a"));
    EXPECT_EQ(source.addresses[0].Values(), 2U);
    EXPECT_EQ(source.addresses[2].Values(), 1U);
    EXPECT_EQ(source.addresses[2].column, 2U);
    EXPECT_FALSE(source.addresses[1].column);
}

TEST_F(SurveyTest, TellsOfCharactersAndLineEndsThatBite) {
    const SourceSurvey source =
        LookAt("a.jsonl",
               "{\"x\": \"a\\r\\nb\"}\n{\"x\": \"\\u000c\"}\n{\"x\": \" y\"}\n"
               "{\"x\": \"\\t-\\uffff\"}\n{\"x\": \"plain\"}\n");
    const AddressSurvey& x = At(source, "x");
    EXPECT_EQ(x.severalLines, 1U);
    EXPECT_EQ(x.carriageReturns, 1U);
    EXPECT_EQ(x.forbidden, 2U);
    EXPECT_EQ(x.outerBlanks, 2U);
}

TEST_F(SurveyTest, KnowsKeysOfFewRows) {
    const SourceSurvey source = LookAt("a.csv", "id,name,part\n1,x,\n2,x,p\n3,y,q\n");
    EXPECT_TRUE(IsKey(source, At(source, "id")));
    EXPECT_FALSE(IsKey(source, At(source, "name")));
    EXPECT_FALSE(IsKey(source, At(source, "part")));
    EXPECT_TRUE(At(source, "part").IsUnique());
}

// More values than are kept in memory.
TEST_F(SurveyTest, KnowsKeysOfManyRowsExactly) {
    std::string rows = "id,near,often\n";
    constexpr int count = 3000;
    for (int i = 0; i < count; ++i) {
        rows += std::to_string(i) + ',' + std::to_string(i == 7 ? count - 1 : i) + ',' +
                std::to_string(i % 700) + '\n';
    }
    const SourceSurvey source = LookAt("a.csv", rows);
    EXPECT_TRUE(IsKey(source, At(source, "id")));
    EXPECT_EQ(At(source, "id").distinct, 3000U);
    EXPECT_FALSE(IsKey(source, At(source, "near")));
    EXPECT_EQ(At(source, "near").distinct, 2999U);
    EXPECT_FALSE(At(source, "often").distinct);
    EXPECT_EQ(At(source, "often").values.Distinct(), ValueCounts::kLimit);
}

TEST_F(SurveyTest, FindsPairsThatTellRowsApartWhereNoColumnDoes) {
    const SourceSurvey source = LookAt("a.csv",
                                       "project,number,by\npier,1,ann\npier,2,ann\n"
                                       "deck,1,ann\ndeck,2,bob\n");
    EXPECT_THAT(PairsOf(source), ElementsAre("project number"));
    EXPECT_THAT(Remarks(source),
                ElementsAre("project and number together could be the key: no two rows have the "
                            "same"));
}

TEST_F(SurveyTest, LooksForNoPairsWhereAColumnIsTheKey) {
    EXPECT_THAT(PairsOf(LookAt("a.csv", "id,a,b\n1,x,1\n2,x,2\n3,y,1\n")), IsEmpty());
}

TEST_F(SurveyTest, TakesNoPairWhoseValuesRunTogether) {
    EXPECT_THAT(PairsOf(LookAt("a.csv", "a,b\n1,2-3\n1-2,3\n1,9\n7,3\n7,9\n")), IsEmpty());
}

TEST_F(SurveyTest, KnowsPairsOfManyRowsExactly) {
    std::string rows = "a,b\n";
    for (int i = 0; i < 5000; ++i) {
        rows += std::to_string(i / 100) + ',' + std::to_string(i % 100) + '\n';
    }
    EXPECT_THAT(PairsOf(LookAt("a.csv", rows)), ElementsAre("a b"));
    EXPECT_THAT(PairsOf(LookAt("b.csv", rows + "49,99\n")), IsEmpty());
}

TEST_F(SurveyTest, FindsValuesAgainInOtherFiles) {
    Write("bugs.csv", "nr,owner,seen\n1,ann,2\n2,bob,2\n3,ann,9\n");
    Write("users.csv", "login\nann\nbob\ncid\n");
    const Survey survey = Look();
    ASSERT_EQ(survey.elsewhere.size(), 1U);
    EXPECT_EQ(survey.elsewhere[0].from, RefOf(survey, 0, "owner"));
    EXPECT_EQ(survey.elsewhere[0].in, RefOf(survey, 1, "login"));
    EXPECT_TRUE(survey.elsewhere[0].AreAll());
}

TEST_F(SurveyTest, FindsValuesAgainAmongManyKeys) {
    std::string users = "login\n";
    std::string bugs = "nr,owner\n";
    for (int i = 0; i < 2000; ++i) {
        users += "user" + std::to_string(i) + '\n';
        bugs += "bug" + std::to_string(i) + ",user" + std::to_string(i % 300) + '\n';
    }
    Write("bugs.csv", bugs);
    Write("users.csv", users);
    const Survey survey = Look();
    ASSERT_EQ(survey.elsewhere.size(), 1U);
    EXPECT_EQ(survey.elsewhere[0].in, RefOf(survey, 1, "login"));
    EXPECT_EQ(survey.elsewhere[0].lookedFor, 300U);
    EXPECT_TRUE(survey.elsewhere[0].AreAll());
}

TEST_F(SurveyTest, NamesRowsThatCannotBeUsedAndGoesOn) {
    const SourceSurvey source = LookAt("a.csv", "a,b\n1,2\n3\n4,5\n");
    EXPECT_EQ(source.rows, 2U);
    EXPECT_EQ(source.badRows, 1U);
    ASSERT_EQ(source.shownBadRows.size(), 1U);
    EXPECT_EQ(source.shownBadRows[0].place.row, 2U);
    EXPECT_EQ(source.shownBadRows[0].place.line, 3U);
}

TEST_F(SurveyTest, SaysWhatADamagedDocumentHides) {
    const SourceSurvey source = LookAt("a.json", "[{\"a\":1}, {\"a\": ");
    EXPECT_EQ(source.rows, 1U);
    EXPECT_TRUE(source.endsEarly);
}

TEST_F(SurveyTest, TellsSoManyAddressesApartAndCountsTheRest) {
    std::string row = "{";
    for (std::size_t i = 0; i < SourceSurvey::kMaxAddresses + 10; ++i) {
        row += (i == 0 ? "\"m" : ",\"m") + std::to_string(i) + "\":1";
    }
    const SourceSurvey source = LookAt("a.jsonl", row + "}\n");
    EXPECT_EQ(source.addresses.size(), SourceSurvey::kMaxAddresses);
    EXPECT_EQ(source.valuesBeyond, 10U);
    EXPECT_THAT(Remarks(source), Contains(HasSubstr("10 values at further ones")));
}

TEST_F(SurveyTest, CountsMembersThatAreNamedTwice) {
    const SourceSurvey source = LookAt("a.jsonl", "{\"a\":1,\"a\":2}\n");
    EXPECT_EQ(source.repeatedMembers, 1U);
    EXPECT_EQ(source.repeatedName, "a");
}

TEST_F(SurveyTest, RemarksOnWordsForNoValue) {
    Write("a.csv", "a,b\nn/a,x\n1,x\nn/a,y\n");
    const Survey survey = Look();
    EXPECT_THAT(Remarks(survey, RefOf(survey, 0, "a")),
                Contains(testing::Field(&Remark::text, "2 values \"n/a\"")));
    EXPECT_THAT(Remarks(survey, RefOf(survey, 0, "b")), IsEmpty());
}

TEST_F(SurveyTest, NamesKinds) {
    const SourceSurvey source = LookAt(
        "a.jsonl",
        "{\"text\":\"x\",\"lines\":\"a\\nb\",\"whole\":12,\"number\":1.5,\"word\":true,"
        "\"when\":\"2020-01-02T03:04:05Z\",\"digits\":\"7\",\"zero\":\"007\",\"none\":null}\n");
    const auto kind = [&](std::string_view address) { return KindText(At(source, address)); };
    EXPECT_EQ(kind("text"), "text");
    EXPECT_EQ(kind("lines"), "text of several lines");
    EXPECT_EQ(kind("whole"), "whole number");
    EXPECT_EQ(kind("number"), "number");
    EXPECT_EQ(kind("word"), "true or false");
    EXPECT_EQ(kind("when"), "date (ISO 8601)");
    EXPECT_EQ(kind("digits"), "whole number");
    EXPECT_EQ(kind("zero"), "text");
    EXPECT_EQ(kind("none"), "no value");
}

}  // namespace
}  // namespace tool
