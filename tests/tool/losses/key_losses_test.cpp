#include "tool/losses/key_losses.h"

#include <gmock/gmock.h>

#include <map>
#include <set>
#include <string>
#include <utility>

namespace tool {
namespace {

using recorddb::schema::Field;
using recorddb::schema::RecordType;
using recorddb::schema::Schema;
using testing::HasSubstr;
using testing::StartsWith;

constexpr const char* kKeySchema = R"(record_types:
  user:
    key: [login]
    fields:
      login: {type: text}
      email: {type: text, unique: true}
  part:
    key: [name, kind]
    fields:
      name: {type: text}
      kind: {type: text}
      code: {type: text}
  file:
    key: [dbid, place]
    fields:
      place: {type: text}
      code: {type: text, unique: true}
  size:
    key: [name]
    fields:
      name: {type: choice, choices: ["a,b", c]}
  bug:
    prefix: BUG
    states: [NEW]
    fields:
      source_id: {type: text, unique: true}
      owner: {type: reference, to: user}
      watchers: {type: reference_list, to: user}
      part: {type: reference, to: part}
      parts: {type: reference_list, to: part}
      file: {type: reference, to: file}
      sizes: {type: reference_list, to: size}
      cause: {type: reference, to: bug}
)";

class KeyLossesTest : public testing::Test {
  protected:
    // Records are in the database: by type and key, by type and value of a field.
    std::set<std::pair<std::string, std::string>> m_keys;
    std::map<std::pair<std::string, std::string>, int> m_values;
    int m_lookUps = 0;

    std::string OfReference(const std::string& field, const std::string& value,
                            const std::string& mapping = "") {
        return Losses().OfReference(field, value, Configuration("source_id", mapping),
                                    *TrackerSchema().FindType("bug"));
    }

    std::string OfKey(const std::string& type, const std::string& field, const std::string& value,
                      const std::string& originalId = "none") {
        return Losses().OfKey(field, value, Configuration(originalId, ""),
                              *TrackerSchema().FindType(type));
    }

  private:
    static const Schema& TrackerSchema() {
        static const Schema kRead = recorddb::schema::ReadSchema(kKeySchema, "schema.yaml");
        return kRead;
    }

    KeyLosses Losses() {
        return {TrackerSchema(),
                {[this](const RecordType& type, const Field& field, const std::string& value) {
                     ++m_lookUps;
                     const auto found = m_values.find({type.name + '.' + field.name, value});
                     return found != m_values.end() ? found->second : 0;
                 },
                 [this](const RecordType& type, const std::string& key) {
                     ++m_lookUps;
                     return m_keys.contains({type.name, key});
                 }}};
    }

    static ImportConfiguration Configuration(const std::string& originalId,
                                             const std::string& mapping) {
        ImportConfiguration configuration;
        configuration.Apply(
            "<configuration><import_data name='record'/><record_type name='bug'/>"
            "<original_id name='" +
                originalId + "'/><record_reference_mapping_list>" + mapping +
                "</record_reference_mapping_list></configuration>",
            "configuration.xml");
        return configuration;
    }
};

TEST_F(KeyLossesTest, AReferenceThatIsTakenAsItStandsMeansNoOtherRecord) {
    m_keys = {{"user", "ann"}, {"user", "bob"}, {"part", "deck plank"}};
    EXPECT_EQ(OfReference("owner", "ann"), "");
    EXPECT_EQ(OfReference("owner", " ann "), "");
    EXPECT_EQ(OfReference("owner", "BLANK"), "");
    EXPECT_EQ(OfReference("watchers", "ann, bob,,BLANK"), "");
    EXPECT_EQ(OfReference("part", " deck plank"), "");
    EXPECT_EQ(OfReference("title", "ann"), "");
}

TEST_F(KeyLossesTest, TellsOfAReferenceWhoseBlanksAreTrimmed) {
    m_keys = {{"user", "ann "}};
    EXPECT_EQ(OfReference("owner", "ann "),
              "\"ann \" is taken for \"ann\", and there is a user whose login is \"ann \", which "
              "no reference can name");
    EXPECT_EQ(OfReference("owner", " ann"), "");
    EXPECT_THAT(OfReference("watchers", "bob,ann ,eve"),
                StartsWith("\"ann \" is taken for \"ann\""));
}

TEST_F(KeyLossesTest, TellsOfTrimmedReferencesToKeysOfSeveralFields) {
    m_keys = {{"part", " deck plank"}, {"part", "hull plank "}};
    EXPECT_EQ(OfReference("part", " deck plank"),
              "\" deck plank\" is taken for \"deck plank\", and there is a part whose key is "
              "\" deck plank\", which no reference can name");
    EXPECT_THAT(OfReference("parts", "a b,hull plank ,c d"),
                StartsWith("\"hull plank \" is taken"));
    EXPECT_EQ(OfReference("part", "deck plank "), "");
    // A mapping leaves such a reference as it is.
    m_values[{"part.code", "x "}] = 1;
    const char* const mapping = "<m target_field='part' reference_field='code'/>";
    EXPECT_EQ(OfReference("part", "x ", mapping), "");
    EXPECT_THAT(OfReference("part", "hull plank ", mapping), HasSubstr("a part whose key is"));
}

TEST_F(KeyLossesTest, TellsOfRunsOfItemsThatAreTheKeyOfOneRecord) {
    m_keys = {{"user", "b,c"}, {"part", "x y,z"}};
    EXPECT_EQ(OfReference("watchers", "a,b,c,d"),
              "\"b,c\" is taken for several items, and there is a user whose login is \"b,c\", "
              "which no reference can name");
    for (const char* const list : {"b,c", "a,b,c", "b,c,a", "a, b,c ,d"}) {
        EXPECT_THAT(OfReference("watchers", list), StartsWith("\"b,c\" is taken for several"))
            << list;
    }
    for (const char* const list : {"b", "c,b", "b,,c", "b, c", "ab,c", "b,cd"}) {
        EXPECT_EQ(OfReference("watchers", list), "") << list;
    }
    EXPECT_THAT(OfReference("parts", "a b,x y,z"),
                HasSubstr("there is a part whose key is \"x y,z\""));
    EXPECT_EQ(OfReference("owner", "b,c"), "") << "it is no list";
}

TEST_F(KeyLossesTest, TriesRunsWithTheBlanksAroundThem) {
    m_keys = {{"user", " b,c"}};
    EXPECT_THAT(OfReference("watchers", "a, b,c"),
                StartsWith("\" b,c\" is taken for several items"));
}

TEST_F(KeyLossesTest, TriesAllRunsOfAnOrdinaryListAndShortOnesOfALongOne) {
    const auto list = [](int items) {
        std::string text = "0";
        for (int i = 1; i < items; ++i) {
            text += ',' + std::to_string(i);
        }
        return text;
    };
    m_keys = {{"user", "1,2,3,4,5,6,7,8"}};
    EXPECT_NE(OfReference("watchers", list(10)), "");
    m_keys = {{"user", "48,49"}};
    EXPECT_NE(OfReference("watchers", list(1000)), "");
    m_keys = {{"user", list(1000)}};
    EXPECT_NE(OfReference("watchers", list(1000)), "");
    m_keys = {{"user", "998,999"}};
    m_lookUps = 0;
    EXPECT_EQ(OfReference("watchers", list(1000)), "");
    EXPECT_EQ(m_lookUps, 50);
}

TEST_F(KeyLossesTest, TellsOfTheWordThatEmptiesAReference) {
    m_keys = {{"user", "Blank"}};
    EXPECT_THAT(OfReference("owner", " Blank"), StartsWith("\"Blank\" is taken for no value"));
    EXPECT_EQ(OfReference("watchers", "Blank"), "");
}

TEST_F(KeyLossesTest, LooksWhereAMappingDoes) {
    const char* const mapping =
        "<m target_field='owner' reference_field='email'/>"
        "<m target_field='cause' reference_field='source_id'/>";
    m_keys = {{"user", "ann "}};
    EXPECT_EQ(OfReference("owner", "ann ", mapping), "");
    EXPECT_EQ(OfReference("cause", " 7"), "") << "display ids have no blanks";
    m_values[{"user.email", "ann "}] = 1;
    m_values[{"bug.source_id", " 7"}] = 1;
    EXPECT_THAT(OfReference("owner", "ann ", mapping), HasSubstr("a user whose email is \"ann \""));
    EXPECT_THAT(OfReference("cause", " 7", mapping), HasSubstr("a bug whose source_id is \" 7\""));
}

TEST_F(KeyLossesTest, LooksForTheNumberThatAMappingPutsInFrontOfAKey) {
    const char* const mapping = "<m target_field='file' reference_field='code'/>";
    m_values[{"file.code", "17"}] = 33;
    m_values[{"file.code", " 17"}] = 34;
    m_keys = {{"file", "33 a"}, {"file", "33 b "}, {"file", "34 c"}};
    EXPECT_EQ(OfReference("file", "17 a", mapping), "");
    EXPECT_THAT(OfReference("file", "17 b ", mapping),
                StartsWith("\"17 b \" is taken for \"17 b\", and there is a file whose key is"));
    EXPECT_THAT(OfReference("file", " 17 c", mapping), StartsWith("\" 17 c\" is taken for"));
    EXPECT_EQ(OfReference("file", " 17 a", mapping), "");
    EXPECT_EQ(OfReference("file", "  ", mapping), "");
}

TEST_F(KeyLossesTest, TellsOfKeysThatTrimmingAndSplittingPutOutOfReach) {
    EXPECT_THAT(OfKey("user", "login", " ann"), HasSubstr("has blanks around it"));
    EXPECT_THAT(OfKey("user", "login", "a,b"), HasSubstr("holds a comma"));
    EXPECT_THAT(OfKey("size", "name", "a,b"), HasSubstr("holds a comma"));
    EXPECT_EQ(OfKey("user", "login", "a b"), "");
    EXPECT_EQ(OfKey("user", "email", " ann"), "");
    EXPECT_THAT(OfKey("user", "email", " ann", "EMAIL"), HasSubstr("has blanks around it"));
    EXPECT_THAT(OfKey("bug", "source_id", "7 ", "source_id"), HasSubstr("has blanks around it"));
    EXPECT_EQ(OfKey("bug", "source_id", "7,8", "source_id"), "") << "no list refers to bugs";
}

TEST_F(KeyLossesTest, OnlyTheOuterBlanksOfAKeyOfSeveralFieldsAreTrimmed) {
    EXPECT_THAT(OfKey("part", "name", " deck"), HasSubstr("has blanks around it"));
    EXPECT_THAT(OfKey("part", "kind", "plank "), HasSubstr("has blanks around it"));
    EXPECT_EQ(OfKey("part", "name", "deck "), "");
    EXPECT_EQ(OfKey("part", "kind", " plank"), "");
    EXPECT_THAT(OfKey("part", "kind", "a,b"), HasSubstr("holds a comma"));
}

TEST_F(KeyLossesTest, AnOriginalIdThatNoMappingIsUsedForMayBeAnything) {
    EXPECT_EQ(OfKey("part", "code", " x", "code"), "");
    EXPECT_THAT(OfKey("file", "code", " x", "code"), HasSubstr("has blanks around it"));
}

}  // namespace
}  // namespace tool
