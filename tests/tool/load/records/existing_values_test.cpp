#include "tool/load/records/existing_values.h"

#include <gmock/gmock.h>

#include "check_fixture.h"

namespace tool {
namespace {

using testing::HasSubstr;

constexpr const char* kYardSchema = R"(record_types:
  yard:
    key: [name]
    fields:
      name: {type: text}
  part:
    key: [yard, name]
    fields:
      yard: {type: reference, to: yard}
      name: {type: text}
  boat:
    key: [name]
    fields:
      name: {type: text}
      keel: {type: reference, to: part}
      parts: {type: reference_list, to: part}
)";

class YardFixture : public CheckFixture {
  protected:
    explicit YardFixture(Engine engine) : CheckFixture(engine, kYardSchema) {
        Execute("INSERT INTO yard (dbid, name) VALUES (1, 'north'), (2, 'old yard')");
        Execute(
            "INSERT INTO part (dbid, yard, name) VALUES (1, 1, 'plank'), (2, 1, 'plank '), "
            "(3, 2, 'rope,thin')");
    }

    int CheckBoat(const Fields& fields, std::vector<std::string> before = {}) {
        before.push_back(Configuration("boats-configuration.xml", "record", "boat", "name"));
        before.push_back(Records("boats.xml", {fields}));
        return Check(std::move(before));
    }
};

// What the search for losses finds of the records in a database.
class ExistingValuesTest : public OnEachEngine<YardFixture> {};

TEST_P(ExistingValuesTest, KnowsKeysOfSeveralFieldsAsTheyStand) {
    EXPECT_EQ(CheckBoat({{"name", "a"}, {"keel", "north plank"}}), 0) << Said();
    EXPECT_EQ(CheckBoat({{"name", "a"}, {"keel", " north plank"}}), 0) << Said();
    EXPECT_EQ(CheckBoat({{"name", "a"}, {"keel", "north plank "}}), 1);
    EXPECT_THAT(Said(), HasSubstr("field keel: \"north plank \" is taken for \"north plank\", and "
                                  "there is a part whose key is \"north plank \", which no "
                                  "reference can name"));
    EXPECT_THAT(Said(), HasSubstr("1 would be created"));
}

TEST_P(ExistingValuesTest, FindsRunsOfItemsAmongKeysOfSeveralFields) {
    CheckBoat({{"name", "a"}, {"parts", "north plank,old yard rope,thin"}});
    EXPECT_THAT(Said(), HasSubstr("field parts: \"old yard rope,thin\" is taken for several items, "
                                  "and there is a part whose key is"));
}

TEST_P(ExistingValuesTest, KnowsWhatTheRehearsalItselfHasWritten) {
    const std::vector<std::string> parts = {
        Configuration("parts-configuration.xml", "record", "part", "name"),
        Records("parts.xml",
                {{{"yard", "north"}, {"name", "oar "}}, {{"yard", "north"}, {"name", "oar"}}})};
    EXPECT_EQ(CheckBoat({{"name", "a"}, {"keel", "north oar "}}, parts), 1);
    EXPECT_THAT(Said(), HasSubstr("field keel: \"north oar \" is taken for \"north oar\""));
}

ON_EACH_ENGINE(ExistingValuesTest);

}  // namespace
}  // namespace tool
