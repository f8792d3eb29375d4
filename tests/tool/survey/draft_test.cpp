#include "tool/survey/draft.h"

#include "recorddb/schema.h"
#include "survey_fixture.h"
#include "tool/map/map_check.h"
#include "tool/map/map_reader.h"
#include "tool/survey/draft_text.h"

namespace tool {
namespace {

using recorddb::schema::FieldKind;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

class DraftTest : public SurveyFixture {
  protected:
    struct Drafts {
        std::string schemaText;
        std::string mapText;
        recorddb::schema::Schema schema;
        MapFile map;

        const recorddb::schema::Field& FieldOf(std::string_view type,
                                               std::string_view field) const {
            const auto* const found = schema.FindType(type);
            if (found == nullptr || found->FindField(field) == nullptr) {
                throw std::out_of_range(schemaText);
            }
            return *found->FindField(field);
        }
        std::vector<std::string> Steps() const {
            std::vector<std::string> types;
            for (const MapStep& step : map.steps) {
                types.push_back(step.type);
            }
            return types;
        }
    };

    // The drafts for all that was written, read by what reads such files.
    Drafts Make(const SurveyOptions& options = {}) const {
        const Survey survey = Look(options);
        const Draft draft = MakeDraft(survey);
        const std::string schemaText = SchemaDraft(draft);
        const std::string mapText = MapDraft(survey, draft);
        SCOPED_TRACE(schemaText + mapText);
        Drafts drafts{schemaText, mapText, recorddb::schema::ReadSchema(schemaText, "schema.yaml"),
                      ReadMap(mapText, "map.yaml")};
        CheckMap(drafts.map, drafts.schema);
        return drafts;
    }
};

TEST_F(DraftTest, MakesARecordTypeOfACsvFile) {
    Write("piers.csv", "Nr;Länge in m;gebaut\n1;20;02.05.1998 10:00\n2;21;17.11.2001 12:30\n");
    const Drafts drafts = Make();
    EXPECT_EQ(drafts.FieldOf("piers", "nr").kind, FieldKind::Text);
    EXPECT_EQ(drafts.FieldOf("piers", "lange_in_m").kind, FieldKind::Integer);
    EXPECT_EQ(drafts.FieldOf("piers", "gebaut").kind, FieldKind::DateTime);
    EXPECT_EQ(drafts.map.sources.at(0).csv.separator, ';');
    EXPECT_EQ(drafts.map.steps.at(0).key, "nr");
    EXPECT_EQ(drafts.map.steps.at(0).FindField("lange_in_m")->value.from.at(0).text, "Länge in m");
    EXPECT_THAT(drafts.map.steps.at(0).FindField("gebaut")->value.date,
                ElementsAre("%d.%m.%Y %H:%M"));
    EXPECT_THAT(drafts.mapText, HasSubstr("# decide: some times name no zone"));
}

TEST_F(DraftTest, TakesAStatusForTheStateOfTheRecords) {
    Write("bugs.csv", "id,Status,title\n1,open,x\n2,in work,y\n3,open,z\n");
    const Drafts drafts = Make();
    EXPECT_THAT(drafts.schema.FindType("bugs")->states, ElementsAre("open", "in work"));
    EXPECT_EQ(drafts.schema.FindType("bugs")->prefix, "BUGS");
    EXPECT_EQ(drafts.map.steps.at(0).key, "source_id");
    EXPECT_TRUE(drafts.FieldOf("bugs", "source_id").unique);
    EXPECT_EQ(drafts.map.steps.at(0).FindField("state")->value.from.at(0).text, "Status");
}

TEST_F(DraftTest, LetsFieldsReferToWhatStandsElsewhere) {
    Write("bugs.csv", "id,owner\nb1,ann\nb2,bob\n");
    Write("users.csv", "login,mail\nann,a@x\nbob,b@x\n");
    const Drafts drafts = Make();
    EXPECT_THAT(drafts.Steps(), ElementsAre("users", "bugs"));
    EXPECT_EQ(drafts.FieldOf("bugs", "owner").kind, FieldKind::Reference);
    EXPECT_EQ(drafts.schema.Type(drafts.FieldOf("bugs", "owner").target).name, "users");
}

TEST_F(DraftTest, FindsWhatIsReferredToByAFieldThatIsNotTheKey) {
    Write("bugs.csv", "id,owner\nb1,a@x\nb2,b@x\n");
    Write("users.csv", "login,mail\nann,a@x\nbob,b@x\n");
    const Drafts drafts = Make();
    EXPECT_EQ(drafts.map.steps.at(1).FindField("owner")->value.by, "mail");
    EXPECT_TRUE(drafts.FieldOf("users", "mail").unique);
}

TEST_F(DraftTest, SetsReferencesAmongRecordsOfOneTypeAtTheEnd) {
    Write("bugs.csv", "id,duplicate\nb1,b3\nb2,b1\nb3,\n");
    const Drafts drafts = Make();
    ASSERT_THAT(drafts.Steps(), ElementsAre("bugs", "bugs"));
    EXPECT_EQ(drafts.map.steps.at(0).FindField("duplicate"), nullptr);
    EXPECT_EQ(drafts.map.steps.at(1).mode, StepMode::Update);
    EXPECT_NE(drafts.map.steps.at(1).FindField("duplicate"), nullptr);
}

TEST_F(DraftTest, TakesSmallNumbersForReferencesOnlyWhereNamesAgree) {
    Write("bugs.csv", "id,votes\n1,2\n2,1\n3,3\n");
    Write("log.csv", "nr,bug,size\nx1,1,2\nx2,2,3\nx3,1,3\n");
    const Drafts drafts = Make();
    EXPECT_EQ(drafts.FieldOf("log", "bug").kind, FieldKind::Reference);
    EXPECT_EQ(drafts.FieldOf("log", "size").kind, FieldKind::Integer);
    EXPECT_THAT(drafts.mapText,
                HasSubstr("# decide: all values stand in id of bugs: should this refer to them?\n"
                          "      votes: votes\n"));
}

TEST_F(DraftTest, MakesRecordsOfListsAndOfTheirItems) {
    Write("bugs.jsonl",
          "{\"id\":\"b1\",\"fields\":{\"tags\":[\"x\",\"y\"]},\"log\":[{\"id\":\"l1\",\"what\":"
          "\"new\"}]}\n"
          "{\"id\":\"b2\",\"fields\":{\"tags\":[\"y\"]},\"log\":[{\"id\":\"l2\",\"what\":\"old\"}]}"
          "\n");
    const Drafts drafts = Make();
    EXPECT_THAT(drafts.Steps(), ElementsAre("bugs_tags", "bugs", "bugs_log"));
    EXPECT_EQ(drafts.FieldOf("bugs", "tags").kind, FieldKind::ReferenceList);
    EXPECT_EQ(drafts.FieldOf("bugs_log", "bugs").kind, FieldKind::Reference);
    EXPECT_EQ(drafts.map.steps.at(0).sameKey, SameKey::First);
    EXPECT_EQ(drafts.map.steps.at(2).each.at(0).from.text, "log/*");
    EXPECT_EQ(drafts.map.steps.at(2).FindField("bugs")->value.from.at(0).text, "/id");
    EXPECT_EQ(drafts.map.steps.at(2).FindField("what")->value.from.at(0).text, "what");
}

TEST_F(DraftTest, MakesHistoryOfItemsThatNameATimeAndSomebody) {
    Write("bugs.jsonl",
          R"({"nr":"b1","log":[{"at":"2020-01-02","who":"ann","from":null,"to":"new"}]}
{"nr":"b2","log":[{"at":"2020-01-03","who":"bob","from":"new","to":"old"}]}
)");
    const Drafts drafts = Make();
    EXPECT_EQ(drafts.FieldOf("bugs", "log").kind, FieldKind::History);
    EXPECT_THAT(drafts.Steps(), ElementsAre("bugs", "bugs"));
    EXPECT_THAT(drafts.mapText,
                HasSubstr("  - history: bugs\n    source: bugs\n    each: log/*\n    key: nr\n"
                          "    fields:\n      nr: \"/nr\"\n      when: at\n      who: who\n"
                          "      action: {value: log}\n"
                          "      before: {from: from, default: none}\n      after: to\n"));
}

TEST_F(DraftTest, SaysThatHistoryKeepsNoIds) {
    Write("bugs.jsonl", R"({"nr":"b1","log":[{"id":"l1","at":"2020-01-02","who":"ann"}]}
{"nr":"b2","log":[{"id":"l2","at":"2020-01-03","who":"bob"}]}
)");
    const Drafts drafts = Make();
    EXPECT_THAT(drafts.Steps(), ElementsAre("bugs", "bugs"));
    EXPECT_THAT(drafts.mapText,
                HasSubstr("# decide: log/*/id names entries in messages and is not kept"));
    EXPECT_THAT(drafts.mapText, HasSubstr("      id: id\n      when: at\n"));
}

TEST_F(DraftTest, TakesNoIdOfSomethingElseForThatOfAnEntry) {
    Write("bugs.jsonl",
          R"({"nr":"b1","log":[{"at":"2020-01-02","who":{"id":7,"name":"ann"}}]}
{"nr":"b2","log":[{"at":"2020-01-03","who":{"id":7,"name":"ann"}}]}
)");
    const Drafts drafts = Make();
    EXPECT_THAT(drafts.mapText, HasSubstr("nr: \"/nr\"\n      when: at\n      who: who/name\n"));
    EXPECT_EQ(drafts.map.sources.at(0).ignore.at(0).text, "log/*/who/id");
}

TEST_F(DraftTest, KeepsRecordsOfWhatHistoryCannotHold) {
    Write("bugs.jsonl", R"({"nr":"b1","log":[{"id":"l1","at":"2020-01-02","who":"ann","text":"x"}]}
{"nr":"b2","log":[{"id":"l2","at":"2020-01-03","who":"bob","text":"y"}]}
)");
    const Drafts drafts = Make();
    EXPECT_THAT(drafts.Steps(), ElementsAre("bugs", "bugs_log", "bugs"));
    EXPECT_EQ(drafts.map.steps.at(2).kind, StepKind::History);
    EXPECT_THAT(drafts.mapText, HasSubstr("cannot hold, such as log/*/text. Where"));
    EXPECT_THAT(drafts.mapText, Not(HasSubstr("not kept"))) << "the records have the ids";
}

TEST_F(DraftTest, LeavesOutWhatHistoryCannotHoldWhereItHasNoKey) {
    Write("bugs.jsonl", R"({"nr":"b1","log":[{"at":"2020-01-02","who":"ann","text":"x"}]}
{"nr":"b2","log":[{"at":"2020-01-03","who":"ann","text":"x"}]}
)");
    const Drafts drafts = Make();
    EXPECT_THAT(drafts.Steps(), ElementsAre("bugs", "bugs"));
    EXPECT_EQ(drafts.map.sources.at(0).ignore.at(0).text, "log/*/text");
}

TEST_F(DraftTest, LeavesOutWithANoteWhatNobodyCouldKnowAgain) {
    Write("bugs.jsonl",
          "{\"id\":\"b1\",\"log\":[{\"what\":\"new\"},{\"what\":\"new\"}],\"odd\":1}\n"
          "{\"id\":\"b2\",\"log\":[],\"odd\":{\"a\":2}}\n");
    const Drafts drafts = Make();
    ASSERT_EQ(drafts.map.sources.at(0).ignore.size(), 2U);
    EXPECT_EQ(drafts.map.sources.at(0).ignore.at(0).text, "log");
    EXPECT_EQ(drafts.map.sources.at(0).ignore.at(1).text, "odd");
    EXPECT_THAT(drafts.mapText,
                AllOf(HasSubstr("# decide: a list of objects without a value"),
                      HasSubstr("# decide: different kinds of values stand here: whole number, "
                                "object")));
}

TEST_F(DraftTest, SaysWhereNoColumnTellsRowsApart) {
    Write("log.csv", "who,what\nann,x\nann,x\nbob,y\n");
    EXPECT_THAT(Make().mapText, HasSubstr("# decide: no column tells all rows apart"));
}

TEST_F(DraftTest, PutsAKeyTogetherOfTwoColumns) {
    Write("a.jsonl", R"({"project":"pier","number":1,"parts":[{"id":"p1"}]}
{"project":"pier","number":2,"parts":[{"id":"p2"}]}
{"project":"deck","number":1,"parts":[{"id":"p3"}]}
)");
    const Drafts drafts = Make();
    EXPECT_EQ(drafts.map.steps.at(0).key, "key");
    EXPECT_THAT(drafts.mapText, HasSubstr("key: {text: \"{project}-{number}\"}"));
    EXPECT_THAT(drafts.mapText, HasSubstr("a: {text: \"{/project}-{/number}\"}"));
    EXPECT_THAT(drafts.mapText, HasSubstr("# decide: no address tells all rows apart, but project "
                                          "and number together do"));
}

TEST_F(DraftTest, SaysWhatElseIsToBeDecided) {
    Write("bugs.csv", "id,when,day,kind\n1,2020-01-02,01/02/2020,n/a\n2,2020-01-03,03/02/2020,x\n");
    const Drafts drafts = Make();
    EXPECT_EQ(drafts.FieldOf("bugs", "day").kind, FieldKind::Text);
    EXPECT_THAT(drafts.mapText,
                AllOf(HasSubstr("# decide: dates of which it is not clear which number is the day"),
                      HasSubstr("# decide: 1 value \"n/a\": if that means no value")));
}

TEST_F(DraftTest, AsksWhetherCommasPartValues) {
    Write("bugs.csv", "id,words\n1,\"a, b\"\n2,c\n");
    EXPECT_THAT(Make().mapText, HasSubstr("# decide: 1 value with commas: where they part several "
                                          "values, split: \",\" takes these apart"));
}

TEST_F(DraftTest, GivesEverythingANameThatASchemaTakes) {
    Write("1 zt_ Vorgänge!.csv",
          "dbid,,.,7,a b,a-b,ТЕСТ,xmin,state,id\n1,2,3,4,5,6,7,8,9,10\n2,3,4,5,6,7,8,9,10,11\n");
    Write("data.jsonl",
          "{\"id\":\"x\",\"a/b\":1,\"~\":2,\"*\":3,\"\":4,\"a\\nb: #\":5,\"yes\":\"no\"}\n"
          "{\"id\":\"y\"}\n");
    const Drafts drafts = Make();
    EXPECT_EQ(drafts.schema.Types().size(), 2U);
    EXPECT_THAT(drafts.mapText, HasSubstr("cannot be named in a map"));
}

TEST_F(DraftTest, KeepsCommentsComments) {
    Write("a.jsonl", "{\"id\":\"x\",\"a\\nevil: 1\":[1,{}]}\n{\"id\":\"y\"}\n");
    const Drafts drafts = Make();
    EXPECT_EQ(drafts.map.sources.size(), 1U);
    EXPECT_THAT(drafts.mapText, Not(HasSubstr("\nevil")));
}

TEST_F(DraftTest, NamesAllThatAMapMustKnowOfAFile) {
    Write("a.csv", "id\tname\n1\tF\xE4hre\n2\tSteg\n");
    Write("b.json", R"({"total": 2, "items": [{"id": "p"}, {"id": "q"}]})");
    const Drafts drafts = Make();
    EXPECT_EQ(drafts.map.sources.at(0).csv.separator, '\t');
    EXPECT_EQ(drafts.map.sources.at(0).csv.charset, "windows-1252");
    EXPECT_THAT(drafts.map.sources.at(1).rows, testing::Optional(ElementsAre("items")));
    EXPECT_THAT(drafts.mapText, AllOf(HasSubstr("is a guess"), HasSubstr("/total stands beside")));
}

TEST_F(DraftTest, LeavesFilesWithoutRowsOut) {
    Write("a.csv", "id,name\n");
    Write("b.csv", "id\n1\n2\n");
    const Drafts drafts = Make();
    EXPECT_EQ(drafts.map.sources.size(), 1U);
    EXPECT_THAT(drafts.mapText, HasSubstr("a.csv is not in the map"));
}

}  // namespace
}  // namespace tool
