#include "tool/load/records/expected_searches.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "load_fixture.h"
#include "tool/guarded/guarded_text.h"
#include "tool/packet/record_packet.h"

namespace tool {
namespace {

constexpr const char* kExpectedTypes = R"(record_types:
  user:
    key: [login]
    fields:
      login: {type: text}
      email: {type: text, unique: true}
  place:
    key: [town, street]
    fields:
      town: {type: text}
      street: {type: text}
  bug:
    prefix: BUG
    states: [NEW]
    fields:
      source_id: {type: text, unique: true}
      title: {type: text}
      owner: {type: reference, to: user}
      parent: {type: reference, to: bug}
      place: {type: reference, to: place}
      watchers: {type: reference_list, to: user}
      files: {type: attachments}
      log: {type: history}
)";

class ExpectedSearchesTest : public testing::Test {
  protected:
    static ImportConfiguration InForce(const std::string& configuration) {
        ImportConfiguration inForce;
        inForce.Apply("<?xml version=\"1.0\" encoding=\"UTF-8\"?><configuration>" + configuration +
                          "</configuration>",
                      "configuration");
        return inForce;
    }

    // The searches that are expected of a record, "TYPE FIELD=VALUE +WHAT", in order.
    std::vector<std::string> Of(const std::string& configuration, const Fields& fields,
                                bool guarded = false) {
        SourceRecord record;
        BuildRecordPacket(RecordXml(fields), {}, record.packet);
        record.guarded = guarded;
        ExpectedSearches expected(m_schema);
        expected.Add(record, InForce(configuration));
        std::vector<std::string> texts;
        for (const recorddb::ExpectedSearch& search : expected.All()) {
            std::string& text = texts.emplace_back(search.type->name);
            for (const auto& [field, value] : search.values) {
                text += fmt::format(" {}={}", field->name, value);
            }
            text += search.fields ? " +fields" : "";
            text += search.listKeys ? " +keys" : "";
            text += search.history ? " +history" : "";
            text += search.attachments ? " +attachments" : "";
            text += search.original ? " +original" : "";
        }
        std::sort(texts.begin(), texts.end());
        return texts;
    }

    // The fields that are searched whatever the records are, "TYPE.FIELD", in order.
    std::vector<std::string> FieldsOf(const std::string& configuration) const {
        std::vector<std::string> texts;
        for (const auto& [type, field] : FieldsSearchedBy(InForce(configuration), m_schema)) {
            texts.push_back(type->name + "." + field->name);
        }
        return texts;
    }

    static std::string Configured(const char* data, const char* type, const char* key,
                                  const std::string& more = "") {
        return fmt::format(
            "<import_data name=\"{}\"/><record_type name=\"{}\"/><original_id name=\"{}\"/>{}",
            data, type, key, more);
    }

    const recorddb::schema::Schema m_schema =
        recorddb::schema::ReadSchema(kExpectedTypes, "schema.yaml");
};

using Texts = std::vector<std::string>;

constexpr const char* kMapping =
    "<record_reference_mapping_list><mapping target_field=\"owner\" reference_field=\"email\"/>"
    "</record_reference_mapping_list>";
constexpr const char* kUpdate = "<updaterecord name=\"TRUE\"/>";

TEST_F(ExpectedSearchesTest, FieldsAreThoseOfTheConfiguration) {
    const std::string bugs = Configured("record", "bug", "title");
    EXPECT_EQ(FieldsOf(bugs), Texts{});
    EXPECT_EQ(FieldsOf(Configured("record", "bug", "title", kUpdate)), Texts{"bug.title"});
    EXPECT_EQ(FieldsOf(Configured("history", "bug", "title")), Texts{"bug.title"});
    EXPECT_EQ(FieldsOf(bugs + "<duplicate_id name=\"same\"/>"), Texts{"bug.title"});
    EXPECT_EQ(FieldsOf(bugs + kMapping), Texts{"user.email"});
    // Keys of several fields are not searched through a mapping.
    EXPECT_EQ(FieldsOf(bugs + "<record_reference_mapping_list><m target_field=\"place\" "
                              "reference_field=\"town\"/></record_reference_mapping_list>"),
              Texts{});
}

TEST_F(ExpectedSearchesTest, NewRecordIsComparedByWhatMustBeUnique) {
    EXPECT_EQ(Of(Configured("record", "user", "login"), {{"login", "ann"}, {"email", "a@x"}}),
              (Texts{"user email=a@x", "user login=ann"}));
    EXPECT_EQ(Of(Configured("record", "place", "town"), {{"town", "t"}, {"street", "s"}}),
              (Texts{"place town=t street=s"}));
}

TEST_F(ExpectedSearchesTest, RecordThatIsChangedIsFoundWithItsFields) {
    EXPECT_EQ(Of(Configured("record", "bug", "source_id", kUpdate), {{"source_id", "x"}}),
              (Texts{"bug source_id=x", "bug source_id=x +fields"}));
}

TEST_F(ExpectedSearchesTest, ListsThatAreReplacedAreFoundWithTheirKeys) {
    const std::string more = std::string(kUpdate) + "<replacereflist name=\"TRUE\"/>";
    EXPECT_EQ(Of(Configured("record", "bug", "source_id", more), {{"source_id", "x"}}),
              (Texts{"bug source_id=x", "bug source_id=x +fields +keys"}));
}

TEST_F(ExpectedSearchesTest, RecordThatIsAddedToIsFoundWithWhatThereIs) {
    EXPECT_EQ(Of(Configured("history", "bug", "source_id"), {{"source_id", "x"}, {"history", "h"}}),
              (Texts{"bug source_id=x +history"}));
    EXPECT_EQ(
        Of(Configured("attachments", "bug", "source_id"), {{"source_id", "x"}, {"files", "f"}}),
        (Texts{"bug source_id=x +attachments"}));
}

TEST_F(ExpectedSearchesTest, DuplicateAndItsOriginalAreFoundWithTheirOriginals) {
    const std::string more = std::string(kUpdate) + "<duplicate_id name=\"twin_of\"/>";
    EXPECT_EQ(
        Of(Configured("record", "bug", "source_id", more), {{"source_id", "x"}, {"twin_of", "y"}}),
        (Texts{"bug source_id=x", "bug source_id=x +fields +original",
               "bug source_id=y +original"}));
}

TEST_F(ExpectedSearchesTest, ReferencesAreFoundByTheirKeysAsTheyAreTrimmedAndSplit) {
    EXPECT_EQ(Of(Configured("record", "bug", "id"),
                 {{"owner", " ann "}, {"watchers", "bob, eve,"}, {"parent", "BUG00000001"}}),
              (Texts{"bug id=BUG00000001", "user login=ann", "user login=bob", "user login=eve"}));
}

TEST_F(ExpectedSearchesTest, MappedReferenceIsFoundByTheFieldWithTheKey) {
    const Texts found = Of(Configured("record", "bug", "id", kMapping), {{"owner", "a@x"}});
    EXPECT_EQ(found, (Texts{"user email=a@x +fields"}));
}

TEST_F(ExpectedSearchesTest, NothingIsExpectedOfKeysOfSeveralFields) {
    EXPECT_EQ(Of(Configured("record", "bug", "id"), {{"place", "t s"}}), Texts());
}

TEST_F(ExpectedSearchesTest, NothingIsExpectedOfWhatCannotBeRead) {
    EXPECT_EQ(Of(Configured("record", "bug", "source_id"), {{"source_id", "&nosuch;"}}), Texts());
    EXPECT_EQ(Of(Configured("record", "nosuch", "source_id"), {{"source_id", "x"}}), Texts());
}

TEST_F(ExpectedSearchesTest, OfGuardedRecordsAreForWhatTheyMean) {
    const std::string comma = Guarded(",", PacketPlace::ListItem);
    const Fields fields = {{"source_id", "1" + comma}, {"watchers", "a" + comma + "b,c"}};
    EXPECT_EQ(
        Of(Configured("record", "bug", "source_id", "<updaterecord name=\"TRUE\"/>"), fields, true),
        (std::vector<std::string>{"bug source_id=1,", "bug source_id=1, +fields", "user login=a,b",
                                  "user login=c"}));
}

}  // namespace
}  // namespace tool
