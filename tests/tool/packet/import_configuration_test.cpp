#include "tool/packet/import_configuration.h"

#include <gtest/gtest.h>

#include "tool/io/source_error.h"

namespace tool {
namespace {

bool AnyField(std::string_view) {
    return true;
}

ImportConfiguration Configured(const std::string& elements) {
    ImportConfiguration configuration;
    configuration.Apply("<configuration>" + elements + "</configuration>", "test");
    return configuration;
}

std::string Mapping(const std::string& target, const std::string& reference) {
    return "<record_reference_mapping_list><mapping target_field=\"" + target +
           "\" reference_field=\"" + reference + "\"/></record_reference_mapping_list>";
}

TEST(ImportConfigurationTest, ALaterPacketReplacesEveryItem) {
    auto configuration = Configured("<record_type name=\"bug\"/><importstate name=\"TRUE\"/>");
    configuration.Apply("<configuration><original_id name=\"id\"/></configuration>", "later");
    EXPECT_EQ(configuration.RecordType(), "");
    EXPECT_EQ(configuration.OriginalId(), "id");
    EXPECT_FALSE(configuration.ImportState());
}

TEST(ImportConfigurationTest, MappingsAddUpAndTheLaterOneOfAFieldCounts) {
    auto configuration = Configured(Mapping("owner", "login"));
    configuration.Apply("<configuration>" + Mapping("product", "code") + "</configuration>", "b");
    configuration.Apply("<configuration>" + Mapping("owner", "email") + "</configuration>", "c");
    EXPECT_EQ(configuration.Mapping(),
              (std::map<std::string, std::string>{{"owner", "email"}, {"product", "code"}}));
}

TEST(ImportConfigurationTest, ItsPacketGivesTheSameConfiguration) {
    const auto configuration = Configured(
        "<import_data name=\"record\"/><record_type name=\"bug\"/>"
        "<duplicate_id name=\"a &amp; &quot;b&quot; &lt;\"/><updaterecord name=\"true\"/>" +
        Mapping("owner", "login"));
    ImportConfiguration copy;
    copy.Apply(configuration.ToPacket(), "copy");
    EXPECT_EQ(copy.ToPacket(), configuration.ToPacket());
    EXPECT_EQ(copy.DuplicateId(), "a & \"b\" <");
    EXPECT_TRUE(copy.UpdateRecord());
}

TEST(ImportConfigurationTest, DataTypesAreReadWithoutRegardToCase) {
    EXPECT_EQ(Configured("<import_data name=\"RECORD\"/>").Data(), ImportedData::Records);
    EXPECT_EQ(Configured("<import_data name=\"History\"/>").Data(), ImportedData::History);
    EXPECT_EQ(Configured("<import_data name=\"attachmentS\"/>").Data(), ImportedData::Attachments);
    EXPECT_EQ(Configured("<import_data name=\"records\"/>").Data(), ImportedData::Nothing);
    EXPECT_EQ(Configured("").Data(), ImportedData::Nothing);
}

TEST(ImportConfigurationTest, TheFingerprintIsThatOfWhatSteersTheImport) {
    const auto base = Configured("<record_type name=\"bug\"/>");
    EXPECT_EQ(
        base.Fingerprint(AnyField),
        Configured("<!-- x --><record_type name=\"BUG\">text</record_type>").Fingerprint(AnyField));
    EXPECT_NE(base.Fingerprint(AnyField),
              Configured("<record_type name=\"bug\"/><updaterecord name=\"TRUE\"/>")
                  .Fingerprint(AnyField));
    EXPECT_NE(base.Fingerprint(AnyField),
              Configured("<record_type name=\"bug\"/>" + Mapping("owner", "login"))
                  .Fingerprint(AnyField));
}

TEST(ImportConfigurationTest, MappingsOfOtherTypesFieldsAreLeftOutOfTheFingerprint) {
    const auto isField = [](std::string_view name) { return name == "owner"; };
    EXPECT_EQ(Configured(Mapping("owner", "login")).Fingerprint(isField),
              Configured("<record_reference_mapping_list>"
                         "<m target_field=\"owner\" reference_field=\"login\"/>"
                         "<m target_field=\"boss\" reference_field=\"login\"/>"
                         "</record_reference_mapping_list>")
                  .Fingerprint(isField));
}

TEST(ImportConfigurationTest, AMalformedPacketIsRefusedByNameAndChangesNothing) {
    auto configuration = Configured("<record_type name=\"bug\"/>");
    try {
        configuration.Apply("<configuration><record_type name=\"x\"</configuration>", "bad.xml");
        FAIL() << "no error";
    } catch (const SourceError& error) {
        EXPECT_NE(std::string(error.what()).find("bad.xml"), std::string::npos);
    }
    EXPECT_EQ(configuration.RecordType(), "bug");
}

}  // namespace
}  // namespace tool
