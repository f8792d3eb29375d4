#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "recorddb/errors.h"
#include "recorddb/schema.h"
#include "sample_schema.h"
#include "temporary_folder.h"

namespace recorddb::schema {

namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

Schema Sample() {
    return ReadSchema(kSampleSchema, "sample.yaml");
}

std::vector<std::string> FieldNames(const RecordType& type) {
    std::vector<std::string> names;
    for (const Field& field : type.fields) {
        EXPECT_EQ(field.index, names.size());
        names.push_back(field.name);
    }
    return names;
}

TEST(SchemaFileTest, TypesComeInTheOrderOfTheFileAndAreNumberedByIt) {
    const Schema schema = Sample();
    ASSERT_EQ(schema.Types().size(), 3U);
    EXPECT_EQ(schema.Types()[0].name, "user");
    EXPECT_EQ(schema.Types()[1].name, "order");
    EXPECT_EQ(schema.Types()[2].name, "bug");
    EXPECT_EQ(schema.Types()[2].id, 3);
    EXPECT_EQ(&schema.Type(3), &schema.Types()[2]);
}

TEST(SchemaFileTest, UnknownTypeIdIsOutOfRange) {
    const Schema schema = Sample();
    EXPECT_THROW(schema.Type(0), std::out_of_range);
    EXPECT_THROW(schema.Type(4), std::out_of_range);
}

TEST(SchemaFileTest, TypeWithStatesHasItsOwnFieldsFirst) {
    const Schema schema = Sample();
    EXPECT_THAT(FieldNames(*schema.FindType("bug")),
                ElementsAre("dbid", "id", "state", "source_id", "title", "description", "severity",
                            "owner", "watchers", "files", "log"));
}

TEST(SchemaFileTest, TypeWithoutStatesHasTheDbIdFirst) {
    const Schema schema = Sample();
    EXPECT_THAT(FieldNames(*schema.FindType("order")),
                ElementsAre("dbid", "Group", "number", "dated"));
}

TEST(SchemaFileTest, KindFollowsFromStates) {
    const Schema schema = Sample();
    EXPECT_EQ(static_cast<int>(schema.FindType("bug")->kind), 1);
    EXPECT_EQ(static_cast<int>(schema.FindType("user")->kind), 2);
}

TEST(SchemaFileTest, KeyOfATypeWithStatesIsItsDisplayId) {
    const Schema schema = Sample();
    const RecordType& bug = *schema.FindType("bug");
    ASSERT_EQ(bug.key.size(), 1U);
    EXPECT_EQ(bug.fields[bug.key[0]].name, "id");
    EXPECT_EQ(bug.prefix, "BUG");
}

TEST(SchemaFileTest, KeyPartsComeInTheirOrderAndAreRequired) {
    const Schema schema = Sample();
    const RecordType& order = *schema.FindType("order");
    EXPECT_THAT(order.key, ElementsAre(1U, 2U));
    EXPECT_TRUE(order.FindField("number")->required);
}

TEST(SchemaFileTest, KeyMayNameTheDbId) {
    const Schema schema = ReadSchema(
        "record_types: {a: {key: [DBID, name], fields: {name: {type: text}}}}", "a.yaml");
    EXPECT_THAT(schema.Types()[0].key, ElementsAre(0U, 1U));
}

TEST(SchemaFileTest, StatesAndDuplicateStateAreRead) {
    const Schema schema = Sample();
    const RecordType& bug = *schema.FindType("bug");
    EXPECT_THAT(bug.states, ElementsAre("NEW", "ASSIGNED", "CLOSED"));
    EXPECT_EQ(bug.duplicateState, "CLOSED");
    EXPECT_TRUE(bug.IsState("NEW"));
    EXPECT_FALSE(bug.IsState("new"));
}

TEST(SchemaFileTest, FieldsHaveTheCodesOfTheirTypes) {
    const Schema schema = ReadSchema(R"(record_types:
  a:
    prefix: A
    states: [new]
    fields:
      f1: {type: text}
      f2: {type: multiline}
      f3: {type: integer}
      f4: {type: datetime}
      f5: {type: reference, to: a}
      f6: {type: reference_list, to: a}
      f7: {type: attachments}
      f10: {type: history}
      f12: {type: choice, choices: [x]}
)",
                                     "a.yaml");
    for (const Field& field : schema.Types()[0].fields) {
        if (field.name[0] == 'f') {
            EXPECT_EQ("f" + std::to_string(static_cast<int>(field.kind)), field.name);
        }
    }
    EXPECT_EQ(static_cast<int>(schema.Types()[0].FindField("id")->kind), 8);
    EXPECT_EQ(static_cast<int>(schema.Types()[0].FindField("state")->kind), 9);
    EXPECT_EQ(static_cast<int>(schema.Types()[0].FindField("dbid")->kind), 11);
}

TEST(SchemaFileTest, FieldOptionsAreRead) {
    const Schema schema = Sample();
    const RecordType& bug = *schema.FindType("bug");
    EXPECT_TRUE(bug.FindField("source_id")->unique);
    EXPECT_FALSE(bug.FindField("source_id")->required);
    EXPECT_TRUE(bug.FindField("title")->required);
    EXPECT_EQ(bug.FindField("title")->maxLength, 255);
    EXPECT_EQ(bug.FindField("description")->maxLength, 0);
    EXPECT_THAT(bug.FindField("severity")->choices, ElementsAre("minor", "major"));
}

TEST(SchemaFileTest, ReferencesLeadToTheirTypeInAnyCase) {
    const Schema schema = Sample();
    EXPECT_EQ(schema.FindType("bug")->FindField("owner")->target, schema.FindType("user")->id);
    EXPECT_EQ(schema.FindType("bug")->FindField("title")->target, 0);
}

TEST(SchemaFileTest, ReferencesMayPointAheadAndAtTheTypeItself) {
    const Schema schema = ReadSchema(
        "record_types: {a: {key: [b], fields: {b: {type: reference, to: b},"
        " self: {type: reference, to: a}}}, b: {key: [dbid], fields: {n: {type: text}}}}",
        "a.yaml");
    EXPECT_EQ(schema.Types()[0].FindField("b")->target, 2);
    EXPECT_EQ(schema.Types()[0].FindField("self")->target, 1);
}

TEST(SchemaFileTest, NamesAreFoundInAnyCaseAndKeptAsWritten) {
    const Schema schema = Sample();
    ASSERT_NE(schema.FindType("ORDER"), nullptr);
    ASSERT_NE(schema.FindType("order")->FindField("gROUP"), nullptr);
    EXPECT_EQ(schema.FindType("order")->FindField("gROUP")->name, "Group");
    EXPECT_EQ(schema.FindType("orde"), nullptr);
    EXPECT_EQ(schema.FindType("order")->FindField("groups"), nullptr);
}

TEST(SchemaFileTest, TextOfTheFileIsKept) {
    EXPECT_EQ(Sample().Text(), kSampleSchema);
}

TEST(SchemaFileTest, StatesOfThirtyCharactersFitWhateverTheirBytes) {
    std::string state;
    for (int count = 0; count < 30; ++count) {
        state += "\xC3\xA4";
    }
    EXPECT_NO_THROW(ReadSchema(
        "record_types: {a: {prefix: A, states: [\"" + state + "\"], fields: {n: {type: text}}}}",
        "a.yaml"));
}

TEST(SchemaFileTest, FileIsReadAndNamedInErrors) {
    const TemporaryFolder folder;
    EXPECT_EQ(ReadSchemaFile(folder.Write("good.yaml", kSampleSchema)).Types().size(), 3U);
    try {
        ReadSchemaFile(folder.Write("bad.yaml", "record_types:\n  bad name: {}\n"));
        ADD_FAILURE() << "accepted";
    } catch (const SchemaError& error) {
        EXPECT_THAT(error.what(), HasSubstr(folder.File("bad.yaml") + ":2:3: "));
    }
}

TEST(SchemaFileTest, EndlessFileIsAnError) {
    try {
        ReadSchemaFile("/dev/zero");
        ADD_FAILURE() << "read";
    } catch (const SchemaError& error) {
        EXPECT_STREQ(error.what(),
                     "/dev/zero: the file has more than 16 MiB; is it a schema file?");
    }
}

TEST(SchemaFileTest, UnreadableFileIsAnError) {
    const TemporaryFolder folder;
    for (const std::string& path : {folder.File("missing.yaml"), folder.Path().string()}) {
        try {
            ReadSchemaFile(path);
            ADD_FAILURE() << "read";
        } catch (const SchemaError& error) {
            EXPECT_EQ(error.File(), path);
            EXPECT_EQ(error.Line(), 0);
            EXPECT_THAT(error.Text(), HasSubstr("cannot be read"));
        }
    }
}

}  // namespace

}  // namespace recorddb::schema
