#include "importer_view.h"

#include <gtest/gtest.h>

#include <string>

#include "platform/foundation/cmapstringtostring.h"
#include "random_records.h"
#include "reading.h"
#include "tool/packet/packet_head.h"
#include "ztimporter/importrecordparser.h"

// The tool decides what is configuration and cuts out records on its own; these tests hold its
// answers against those of the importer's parsers.
namespace {

using importer_view::CountRecords;
using importer_view::TakesAsConfiguration;

std::string RandomHead(reading::RandomText& random) {
    static constexpr const char* kPieces[] = {"<configuration>",
                                              "<configuration/>",
                                              "<a>",
                                              "<b c='>'>",
                                              "</a>",
                                              "<d/>",
                                              "<!-- e -->",
                                              "<?f g?>",
                                              " ",
                                              "\n",
                                              "h",
                                              "<configuration i=\"1\"\n>"};
    std::string text;
    for (std::size_t count = random.Below(8); count > 0; --count) {
        text += kPieces[random.Below(std::size(kPieces))];
    }
    return text;
}

TEST(ImporterView, OfConfigurationIsTheReaders) {
    unsigned seed = reading::NewSeed();
    SCOPED_TRACE("seed " + std::to_string(seed));
    reading::RandomText random(seed);
    int configurations = 0;
    for (int round = 0; round < 5000; ++round) {
        std::string text = RandomHead(random);
        const auto taken = TakesAsConfiguration(tool::WithPacketDeclaration(text));
        bool isConfiguration = reading::ReaderOf(text).IsConfiguration();
        configurations += taken.value_or(false) ? 1 : 0;
        ASSERT_TRUE(!taken || isConfiguration == *taken) << text;
    }
    EXPECT_GT(configurations, 500);
}

TEST(ImporterView, OfEachPacketIsOneRecord) {
    unsigned seed = reading::NewSeed();
    SCOPED_TRACE("seed " + std::to_string(seed));
    reading::RandomText random(seed);
    for (int round = 0; round < 2000; ++round) {
        std::string text = random.Below(2) == 0 ? random.Soup() : random.Record();
        for (const reading::Read& record : reading::ReadRecords(text)) {
            ASSERT_EQ(CountRecords(record.packet), record.packet.empty() ? 0 : 1) << text;
            ASSERT_FALSE(TakesAsConfiguration(record.packet).value_or(false)) << text;
        }
    }
}

TEST(ImporterView, OfARecordWithAFieldElementCalledConfigurationIsARecord) {
    std::string packet =
        reading::ReadRecords("<record><configuration name=\"a\">x</configuration></record>")
            .at(0)
            .packet;
    EXPECT_EQ(TakesAsConfiguration(packet), false);
    AdImportRecordParser parser;
    parser.SetInputData(packet.c_str());
    ASSERT_EQ(parser.NextRecord(), 1);
    CMapStringToString fields;
    EXPECT_EQ(parser.GetRecordMap(fields), 1);
}

}  // namespace
