#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ostream>
#include <string>

#include "recorddb/errors.h"
#include "recorddb/model/names.h"
#include "recorddb/schema.h"

namespace recorddb::schema {

namespace {

using ::testing::HasSubstr;

// A schema with a mistake in it, and the place and the text of its error.
struct Mistake {
    const char* name;
    std::string yaml;
    int line;
    int column;
    const char* text;
};

// A schema of the one type `a`, whose map is given; it begins in line 2, column 6.
std::string TypeA(const std::string& map) {
    return "record_types:\n  a: " + map + "\n";
}

// A schema of the one type `a` with the one more field `f`, whose name stands in line 4, column 5.
std::string FieldF(const std::string& field) {
    return "record_types:\n  a: {key: [k], fields: {\n    k: {type: text},\n    " + field + "}}\n";
}

class SchemaMistakeTest : public testing::TestWithParam<Mistake> {};

TEST_P(SchemaMistakeTest, IsRefusedWithItsPlace) {
    const Mistake& mistake = GetParam();
    try {
        ReadSchema(mistake.yaml, "test.yaml");
        ADD_FAILURE() << "accepted:\n" << mistake.yaml;
    } catch (const SchemaError& error) {
        EXPECT_THAT(error.Text(), HasSubstr(mistake.text));
        EXPECT_EQ(error.Line(), mistake.line) << error.what();
        EXPECT_EQ(error.Column(), mistake.column) << error.what();
        EXPECT_EQ(error.File(), "test.yaml");
    }
}

void PrintTo(const Mistake& mistake, std::ostream* stream) {
    *stream << mistake.yaml;
}

std::string NameOf(const testing::TestParamInfo<Mistake>& mistake) {
    return mistake.param.name;
}

const std::string kValidField = "fields: {n: {type: text}}";

INSTANTIATE_TEST_SUITE_P(
    Document, SchemaMistakeTest,
    testing::Values(
        Mistake{"Empty", "", 0, 0, "the schema is empty"},
        Mistake{"CommentOnly", "# nothing\n", 0, 0, "the schema is empty"},
        Mistake{"NotAMap", "- record_types\n", 1, 1, "must be a map"},
        Mistake{"BrokenYaml", "record_types:\n  a: {key: [n\n", 3, 1, "not valid YAML"},
        // The library finds document after document in such a text, without end.
        Mistake{"CommaThatSeparatesNothing", ", a: b\n", 1, 1, "one YAML document"},
        Mistake{"TwoDocuments", "record_types: {}\n---\nmore: {}\n", 3, 1, "one YAML document"},
        Mistake{"NulByte", std::string("record_types:\n  a:\0 {}\n", 23), 2, 5, "a NUL byte"},
        Mistake{"UnknownKey", "record_type:\n  a: {}\n", 1, 1,
                "unknown key 'record_type' in the schema; known keys are record_types"},
        Mistake{"NoTypes", "record_types:\n", 1, 1, "must be a map of at least one key"},
        Mistake{"EmptyTypes", "record_types: {}\n", 1, 15, "must be a map of at least one key"},
        Mistake{"RecursiveAlias", "record_types: &r {a: *r}\n", 1, 19, "unknown key 'a'"}),
    NameOf);

INSTANTIATE_TEST_SUITE_P(
    Type, SchemaMistakeTest,
    testing::Values(
        Mistake{"Scalar", TypeA("text"), 2, 6, "record type 'a' must be a map"},
        Mistake{"Nothing", TypeA(""), 2, 3, "record type 'a' must be a map"},
        Mistake{"UnknownKey", TypeA("{keys: [n], " + kValidField + "}"), 2, 7,
                "unknown key 'keys' in record type 'a'; known keys are key, prefix, states, "
                "duplicate_state, spread, fields"},
        Mistake{"KeyInOtherCase", TypeA("{Key: [n], " + kValidField + "}"), 2, 7,
                "unknown key 'Key'"},
        Mistake{"NumberAsName", "record_types:\n  1a: {key: [n]}\n", 2, 3,
                "record type name '1a' must be a letter"},
        Mistake{"BlankInName", "record_types:\n  a b: {key: [n]}\n", 2, 3, "'a b' must be"},
        Mistake{"LongName",
                "record_types:\n  abcdefghijklmnopqrstuvwxyzabcde: {" + kValidField + "}\n", 2, 3,
                "longer than 30 characters"},
        Mistake{"OwnName", "record_types:\n  ZT_history: {}\n", 2, 3, "is reserved"},
        Mistake{"EngineName", "record_types:\n  sqlite_a: {}\n", 2, 3, "is reserved"},
        Mistake{"OtherEngineName", "record_types:\n  pg_a: {}\n", 2, 3, "is reserved"},
        Mistake{"Twice",
                "record_types:\n  a: {key: [n], " + kValidField + "}\n  A: {key: [n], " +
                    kValidField + "}\n",
                3, 3, "'A' stands twice in 'record_types' of the schema, first in line 2 as 'a'"},
        Mistake{"NoFields", TypeA("{key: [n]}"), 2, 3, "record type 'a' lacks 'fields'"},
        Mistake{"EmptyFields", TypeA("{key: [n], fields: {}}"), 2, 25, "must be a map"},
        Mistake{"NeitherKeyNorStates", TypeA("{" + kValidField + "}"), 2, 3, "lacks 'key'"},
        Mistake{"PrefixWithoutStates", TypeA("{key: [n], prefix: A, " + kValidField + "}"), 2, 17,
                "'prefix' of record type 'a' is out of place"},
        Mistake{"DuplicateStateWithoutStates",
                TypeA("{key: [n], duplicate_state: A, " + kValidField + "}"), 2, 17,
                "'duplicate_state' of record type 'a' is out of place"}),
    NameOf);

INSTANTIATE_TEST_SUITE_P(
    Key, SchemaMistakeTest,
    testing::Values(
        Mistake{"Scalar", TypeA("{key: n, " + kValidField + "}"), 2, 12, "must be a list"},
        Mistake{"Empty", TypeA("{key: [], " + kValidField + "}"), 2, 12, "at least one text"},
        Mistake{"Nothing", TypeA("{key: , " + kValidField + "}"), 2, 7, "must be a list"},
        Mistake{"UnknownField", TypeA("{key: [n, m], " + kValidField + "}"), 2, 16,
                "names 'm', which is not a field of the type"},
        Mistake{"FieldTwice", TypeA("{key: [n, N], " + kValidField + "}"), 2, 16,
                "'N' stands twice"},
        Mistake{"List", TypeA("{key: [n], fields: {n: {type: reference_list, to: a}}}"), 2, 13,
                "'n', a field of type reference_list, which cannot be part of a key"},
        Mistake{"Multiline", TypeA("{key: [n], fields: {n: {type: multiline}}}"), 2, 13,
                "cannot be part of a key"}),
    NameOf);

INSTANTIATE_TEST_SUITE_P(
    States, SchemaMistakeTest,
    testing::Values(
        Mistake{"NoPrefix", TypeA("{states: [new], " + kValidField + "}"), 2, 3, "lacks 'prefix'"},
        Mistake{"WithKey", TypeA("{prefix: A, states: [new], key: [n], " + kValidField + "}"), 2,
                33, "'key' of record type 'a' is out of place"},
        Mistake{"Empty", TypeA("{prefix: A, states: [], " + kValidField + "}"), 2, 26,
                "at least one text"},
        Mistake{"Scalar", TypeA("{prefix: A, states: new, " + kValidField + "}"), 2, 26,
                "must be a list"},
        Mistake{"Nothing", TypeA("{prefix: A, states: [new, ~], " + kValidField + "}"), 2, 32,
                "has no value"},
        Mistake{"Nul", TypeA("{prefix: A, states: [new, \"a\\0b\"], " + kValidField + "}"), 2, 32,
                "holds a NUL character"},
        Mistake{"EmptyText", TypeA("{prefix: A, states: [new, \"\"], " + kValidField + "}"), 2, 32,
                "is empty"},
        Mistake{"Map", TypeA("{prefix: A, states: [{a: b}], " + kValidField + "}"), 2, 27,
                "must be a text"},
        Mistake{"Twice", TypeA("{prefix: A, states: [new, new], " + kValidField + "}"), 2, 32,
                "'new' stands twice"},
        Mistake{
            "LongState",
            TypeA("{prefix: A, states: [abcdefghijklmnopqrstuvwxyzabcde], " + kValidField + "}"), 2,
            27, "longer than 30 characters"},
        Mistake{"UnknownDuplicateState",
                TypeA("{prefix: A, states: [new, old], duplicate_state: New, " + kValidField + "}"),
                2, 55, "'New', which is not among the states new, old"},
        Mistake{"PrefixEndingInADigit", TypeA("{prefix: A1, states: [new], " + kValidField + "}"),
                2, 15, "do not end in a digit, not 'A1'"},
        Mistake{"PrefixWithABlank", TypeA("{prefix: A B, states: [new], " + kValidField + "}"), 2,
                15, "not 'A B'"},
        Mistake{"SamePrefix",
                "record_types:\n  a: {prefix: BUG, states: [new], " + kValidField +
                    "}\n  b: {prefix: Bug, states: [new], " + kValidField + "}\n",
                3, 15, "record type 'a' has the prefix 'BUG' already"},
        Mistake{"FieldId", TypeA("{prefix: A, states: [new], fields: {ID: {type: text}}}"), 2, 42,
                "field name 'ID' is reserved"},
        Mistake{"FieldState", TypeA("{prefix: A, states: [new], fields: {state: {type: text}}}"), 2,
                42, "field name 'state' is reserved"}),
    NameOf);

INSTANTIATE_TEST_SUITE_P(
    Field, SchemaMistakeTest,
    testing::Values(
        Mistake{"UnknownKey", FieldF("f: {type: text, requird: true}"), 4, 21,
                "unknown key 'requird' in field 'f' of record type 'a'; known keys are type, "
                "max_length, required, unique, choices, to"},
        Mistake{"Scalar", FieldF("f: text"), 4, 8, "must be a map such as {type: text}"},
        Mistake{"Nothing", FieldF("f: "), 4, 5, "must be a map such as {type: text}"},
        Mistake{"NoType", FieldF("f: {required: true}"), 4, 5,
                "lacks 'type'; types are text, multiline, integer, datetime, reference, "
                "reference_list, attachments, history, choice"},
        Mistake{"UnknownType", FieldF("f: {type: string}"), 4, 15,
                "unknown type 'string' of field 'f' of record type 'a'; types are text"},
        Mistake{"TypeInOtherCase", FieldF("f: {type: Text}"), 4, 15, "unknown type 'Text'"},
        Mistake{"OwnType", FieldF("f: {type: dbid}"), 4, 15, "unknown type 'dbid'"},
        Mistake{"DbId", FieldF("DbId: {type: text}"), 4, 5, "field name 'DbId' is reserved"},
        Mistake{"OwnName", FieldF("zt_version: {type: text}"), 4, 5, "is reserved"},
        Mistake{"SystemColumn", FieldF("xmin: {type: text}"), 4, 5, "is reserved"},
        Mistake{"BadName", FieldF("f-1: {type: text}"), 4, 5, "field name 'f-1' must be"},
        Mistake{"NonAsciiName", FieldF("f\xC3\xA4: {type: text}"), 4, 5, "must be a letter"},
        Mistake{"LongName", FieldF(std::string(64, 'f') + ": {type: text}"), 4, 5,
                "longer than 63 characters"},
        Mistake{"Twice", FieldF("K: {type: text}"), 4, 5, "first in line 3 as 'k'"},
        Mistake{"OptionTwice", FieldF("f: {type: text, type: text}"), 4, 21, "stands twice"},
        Mistake{"ZeroLength", FieldF("f: {type: text, max_length: 0}"), 4, 33,
                "whole number of at least 1, not '0'"},
        Mistake{"NegativeLength", FieldF("f: {type: text, max_length: -5}"), 4, 33, "not '-5'"},
        Mistake{"FractionalLength", FieldF("f: {type: text, max_length: 1.5}"), 4, 33, "not '1.5'"},
        Mistake{"HugeLength", FieldF("f: {type: text, max_length: 99999999999999999999}"), 4, 33,
                "whole number"},
        Mistake{"NoBool", FieldF("f: {type: text, required: yes}"), 4, 31,
                "must be true or false, not 'yes'"},
        Mistake{"LengthOfAnInteger", FieldF("f: {type: integer, max_length: 5}"), 4, 24,
                "does not go with type integer; it goes with text, multiline"},
        Mistake{"UniqueMultiline", FieldF("f: {type: multiline, unique: true}"), 4, 26,
                "does not go with type multiline"},
        Mistake{"RequiredHistory", FieldF("f: {type: history, required: true}"), 4, 24,
                "does not go with type history"},
        Mistake{"NulInAChoice", FieldF("f: {type: choice, choices: [\"a\\0\"]}"), 4, 33,
                "holds a NUL character"},
        Mistake{"ChoicesOfAText", FieldF("f: {type: text, choices: [a]}"), 4, 21,
                "does not go with type text; it goes with choice"},
        Mistake{"NoChoices", FieldF("f: {type: choice}"), 4, 5, "lacks 'choices'"},
        Mistake{"EmptyChoices", FieldF("f: {type: choice, choices: []}"), 4, 32,
                "at least one text"},
        Mistake{"ChoiceTwice", FieldF("f: {type: choice, choices: [a, a]}"), 4, 36,
                "'a' stands twice"}),
    NameOf);

INSTANTIATE_TEST_SUITE_P(
    Reference, SchemaMistakeTest,
    testing::Values(
        Mistake{"NoTarget", FieldF("f: {type: reference}"), 4, 5, "lacks 'to'"},
        Mistake{"TargetOfAText", FieldF("f: {type: text, to: a}"), 4, 21,
                "it goes with reference, reference_list"},
        Mistake{"UnknownTarget", FieldF("f: {type: reference, to: b}"), 4, 30,
                "field 'f' of record type 'a' refers to the unknown record type 'b'; record types "
                "are a"},
        Mistake{"UnknownListTarget", FieldF("f: {type: reference_list, to: b}"), 4, 35,
                "unknown record type 'b'"},
        Mistake{"ListNamedAsAType",
                "record_types:\n  a: {key: [dbid], fields: {f: {type: reference_list, to: a}}}\n"
                "  A__F: {key: [dbid], fields: {n: {type: text}}}\n",
                2, 59, "would be named 'a__f', and so is another one"},
        Mistake{"ListsNamedAlike",
                "record_types:\n  a: {key: [dbid], fields: {b__f: {type: reference_list, to: a}}}\n"
                "  a__b: {key: [dbid], fields: {f: {type: reference_list, to: a}}}\n",
                3, 62, "would be named 'a__b__f', and so is another one"},
        Mistake{"LongListName", FieldF(std::string(61, 'f') + ": {type: reference_list, to: a}"), 4,
                95, "longer than 63 characters"}),
    NameOf);

TEST(SchemaErrorTest, TextBeginsWithThePlace) {
    EXPECT_STREQ(SchemaError("a.yaml", 3, 7, "wrong").what(), "a.yaml:3:7: wrong");
    EXPECT_STREQ(SchemaError("a.yaml", 0, 0, "wrong").what(), "a.yaml: wrong");
}

// Fields f1, f2 ... one a line from line 5 on, where names stand in column 7.
std::string Fields(std::size_t count) {
    std::string fields;
    for (std::size_t field = 1; field <= count; ++field) {
        fields += "      f" + std::to_string(field) + ": {type: text}\n";
    }
    return fields;
}

TEST(SchemaLimitTest, OneFieldTooManyIsRefused) {
    const std::string head = "record_types:\n  a:\n    key: [f1]\n    fields:\n";
    try {
        ReadSchema(head + Fields(kMaxColumnFields + 1), "test.yaml");
        ADD_FAILURE() << "accepted";
    } catch (const SchemaError& error) {
        EXPECT_STREQ(error.what(),
                     "test.yaml:2003:7: field 'f1999' of record type 'a' is one too many: a record "
                     "type has at most 1998 fields that hold a value, id and state included; "
                     "spread them over several types");
    }
}

TEST(SchemaLimitTest, FieldsWithoutAColumnDoNotCount) {
    const std::string head = "record_types:\n  a:\n    key: [f1]\n    fields:\n";
    EXPECT_NO_THROW(ReadSchema(
        head + "      files: {type: attachments}\n" + Fields(kMaxColumnFields), "test.yaml"));
}

TEST(SchemaLimitTest, OneKeyFieldTooManyIsRefused) {
    std::string key = "f1";
    for (std::size_t part = 2; part <= kMaxKeyFields + 1; ++part) {
        key += ", f" + std::to_string(part);
    }
    try {
        ReadSchema("record_types:\n  a:\n    key: [" + key + "]\n    fields:\n" +
                       Fields(kMaxKeyFields + 1),
                   "test.yaml");
        ADD_FAILURE() << "accepted";
    } catch (const SchemaError& error) {
        EXPECT_EQ(error.Line(), 3);
        EXPECT_THAT(error.Text(), HasSubstr("'f33' is one too many"));
    }
}

}  // namespace

}  // namespace recorddb::schema
