#include "tool/losses/configuration_losses.h"

#include <gtest/gtest.h>

#include <string>

#include "finding.h"

namespace {

using finding::ConfigurationLosses;

// The list stands on the sixth line of the packet.
std::string Mappings(std::string_view entries, const std::string& kind = "record") {
    const std::string list = kind + "_reference_mapping_list";
    return ConfigurationLosses("record",
                               "<" + list + ">" + std::string(entries) + "</" + list + ">");
}

TEST(ConfigurationLosses, OfAConfigurationThatIsUsedAsAWholeAreNone) {
    EXPECT_EQ(ConfigurationLosses("RECORD", ""), "");
    EXPECT_EQ(Mappings("<m target_field='owner' reference_field='email'/>\n"
                       "<m target_field='Watchers' reference_field='EMAIL'/>"),
              "");
    EXPECT_EQ(Mappings(""), "");
}

TEST(ConfigurationLosses, AreOfAnImportDataThatAsksForNothing) {
    EXPECT_EQ(ConfigurationLosses("records", ""),
              "nothing-imported, 3, , : import_data is \"records\", so that nothing of the packets "
              "that follow is imported; it must be record, history or attachments");
}

TEST(ConfigurationLosses, AreMappingsWithoutAnEffect) {
    struct Case {
        const char* mapping;
        const char* field;
        const char* why;
    };
    const Case cases[] = {
        {"<m target_field='boss' reference_field='email'/>", "boss",
         "the record type bug has no field \"boss\""},
        {"<m target_field='title' reference_field='email'/>", "title",
         "the field \"title\" points at no records"},
        {"<m target_field='owner' reference_field='phone'/>", "owner",
         "the record type user, at which the field \"owner\" points, has no field \"phone\""},
        {"<m target_field='part' reference_field='name'/>", "part",
         "the key of the record type part has several fields, and values that refer to its "
         "records are taken as they are"},
        {"<m reference_field='email'/>", "", "it has no target_field"},
        {"<m target_field='owner'/>", "owner", "it has no reference_field"},
        {"<m target_field='owner' reference_field=''/>", "owner", "it has no reference_field"},
    };
    for (const Case& one : cases) {
        EXPECT_EQ(Mappings("\n" + std::string(one.mapping)),
                  "unused-mapping, 7, , " + std::string(one.field) +
                      ": the mapping has no effect: " + one.why)
            << one.mapping;
    }
}

TEST(ConfigurationLosses, AreMappingsThatALaterOneReplaces) {
    EXPECT_EQ(Mappings("<m target_field='owner' reference_field='login'/>\n"
                       "<m target_field='owner' reference_field='email'/>"),
              "unused-mapping, 6, , owner: the mapping has no effect: another mapping of the "
              "field \"owner\" counts");
}

TEST(ConfigurationLosses, AreMappingsOfTheOtherTwoLists) {
    EXPECT_EQ(Mappings("<m target_field='owner' reference_field='login'/>", "history"),
              "unused-mapping, 6, , owner: the mapping has no effect: no import asks for a "
              "history_reference_mapping_list");
    EXPECT_EQ(Mappings("<m target_field='owner' reference_field='login'/>", "attachment"),
              "unused-mapping, 6, , owner: the mapping has no effect: no import asks for a "
              "attachment_reference_mapping_list");
}

}  // namespace
