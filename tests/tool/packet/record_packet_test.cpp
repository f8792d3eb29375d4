#include "tool/packet/record_packet.h"

#include <expat.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "random_records.h"
#include "reading.h"

namespace {

using tool::Section;
using tool::SectionKind;

std::string Packet(std::string_view record, const std::vector<Section>& disguised = {}) {
    std::string packet = "left from before";
    tool::BuildRecordPacket(record, disguised, packet);
    return packet;
}

TEST(RecordPacket, IsTheDeclarationAndTheRecord) {
    EXPECT_EQ(Packet("<record>a</record>"),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?><record>a</record>");
}

TEST(RecordPacket, SplitsACDataSectionInsideTheTag) {
    EXPECT_EQ(Packet("<record><![CDATA[<record>]]></record>", {{SectionKind::CData, 8, 28}}),
              reading::PacketOf("<record><![CDATA[<rec]]><![CDATA[ord>]]></record>"));
}

TEST(RecordPacket, TakesTheBracketFromTagsInComments) {
    EXPECT_EQ(Packet("<record><!--<record><record>--></record>", {{SectionKind::Comment, 8, 31}}),
              reading::PacketOf("<record><!--<record <record --></record>"));
}

TEST(RecordPacket, DoesNotPassForConfiguration) {
    for (const char* record :
         {"<record><configuration/></record>", "<record>\n<a name='x'><configuration>"}) {
        EXPECT_EQ(Packet(record), reading::PacketOf("<records/>" + std::string(record)));
    }
}

// What an XML reader sees of `text`: tags, and text with nothing between them taken as one.
std::string Seen(const std::string& text) {
    std::unique_ptr<XML_ParserStruct, decltype(&XML_ParserFree)> parser(XML_ParserCreate("UTF-8"),
                                                                        XML_ParserFree);
    std::string seen;
    XML_SetUserData(parser.get(), &seen);
    XML_SetElementHandler(
        parser.get(),
        [](void* out, const char* name, const char** attributes) {
            auto& text = *static_cast<std::string*>(out);
            text += std::string("[") + name;
            for (; *attributes != nullptr; ++attributes) {
                text += std::string(" ") + *attributes;
            }
            text += "]";
        },
        [](void* out, const char* name) {
            *static_cast<std::string*>(out) += std::string("[/") + name + "]";
        });
    XML_SetCharacterDataHandler(parser.get(), [](void* out, const char* data, int size) {
        static_cast<std::string*>(out)->append(data, static_cast<std::size_t>(size));
    });
    if (XML_Parse(parser.get(), text.data(), static_cast<int>(text.size()), 1) != XML_STATUS_OK) {
        return std::string("error: ") + XML_ErrorString(XML_GetErrorCode(parser.get()));
    }
    return seen;
}

TEST(RecordPacket, MeansTheSameToAnXmlReaderAsTheRecord) {
    unsigned seed = reading::NewSeed();
    SCOPED_TRACE("seed " + std::to_string(seed));
    reading::RandomText random(seed);
    int disguised = 0;
    for (int round = 0; round < 2000; ++round) {
        std::string record = random.Record();
        std::vector<reading::Read> read = reading::ReadRecords(record);
        ASSERT_EQ(read.size(), 1U) << record;
        std::string seen = Seen(record);
        ASSERT_TRUE(seen.starts_with("[record]")) << seen << record;
        ASSERT_EQ(Seen(read[0].packet), seen) << record;
        disguised += read[0].packet == reading::PacketOf(record) ? 0 : 1;
    }
    EXPECT_GT(disguised, 100);
}

}  // namespace
