#include "recorddb/schemafile/spread_rule.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "recorddb/errors.h"
#include "recorddb/schema.h"

namespace recorddb::schema {

namespace {

using ::testing::ElementsAre;

// The types that are spread, with `spread: ...` or nothing in three places.
std::vector<std::string> SpreadTypes(const std::string& note, const std::string& place = "",
                                     const std::string& bug = "") {
    const Schema schema = ReadSchema(
        "record_types:\n"
        "  note: {key: [name], " +
            note +
            "fields: {\n"
            "    name: {type: text}, place: {type: reference, to: place}}}\n"
            "  place: {key: [name], " +
            place +
            "fields: {name: {type: text}}}\n"
            "  remark: {key: [name], fields: {\n"
            "    name: {type: text},\n"
            "    notes: {type: reference_list, to: note}}}\n"
            "  bug: {prefix: B, states: [NEW], " +
            bug +
            "fields: {\n"
            "    place: {type: reference, to: place}}}\n",
        "s.yaml");
    std::vector<std::string> names;
    for (const RecordType& type : schema.Types()) {
        if (type.spread) {
            names.push_back(type.name);
        }
    }
    return names;
}

std::string Refusal(const std::string& note, const std::string& place, const std::string& bug) {
    try {
        SpreadTypes(note, place, bug);
    } catch (const SchemaError& error) {
        return error.what();
    }
    return {};
}

TEST(SpreadRuleTest, TypesWithStatesAreSpreadAndWhatTheyReferToIsNot) {
    EXPECT_THAT(SpreadTypes(""), ElementsAre("bug"));
    EXPECT_THAT(SpreadTypes("spread: false, "), ElementsAre("bug"));
}

TEST(SpreadRuleTest, WhatRefersToASpreadTypeIsSpreadOverAnyNumberOfSteps) {
    EXPECT_THAT(SpreadTypes("spread: true, "), ElementsAre("note", "remark", "bug"));
    EXPECT_THAT(SpreadTypes("", "spread: true, "), ElementsAre("note", "place", "remark", "bug"));
}

TEST(SpreadRuleTest, TypeThatHasToBeSpreadCannotBeDenied) {
    EXPECT_EQ(Refusal("", "", "spread: false, "),
              "s.yaml:8:43: record type 'bug' has to be spread: it has states; leave 'spread' out");
    EXPECT_EQ(Refusal("spread: false, ", "spread: true, ", ""),
              "s.yaml:2:31: record type 'note' has to be spread: its field 'place' refers to the "
              "record type 'place', which is; leave 'spread' out");
}

}  // namespace

}  // namespace recorddb::schema
