// Plain packets are read without a token stream. What is read of them, and whether that fails, is
// the same with the stream, which an instruction in the text calls for.
#include "ztimporter/plainrecord.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "platform/foundation/cexception.h"
#include "ztimporter/importconfigurationparser.h"
#include "ztimporter/importrecordparser.h"

namespace {

std::string FieldsIn(std::string_view packet) {
    std::vector<PlainField> fields;
    if (!ReadPlainRecord(packet, fields)) {
        return "not plain";
    }
    std::string told;
    for (const PlainField& field : fields) {
        told += std::string(field.name) + '=' + std::string(field.text) + ';';
    }
    return told;
}

TEST(PlainRecord, HasTheFieldsUpToTheEndOfTheRecord) {
    EXPECT_EQ(FieldsIn("<record>\n <field name=\"a\">x</field>\n <f name=\"b\"> </f></record><"),
              "a=x;b= ;");
    EXPECT_EQ(FieldsIn("<record><field name=\"\">&amp;\xC3\xA9</field></record>"),
              "=&amp;\xC3\xA9;");
}

TEST(PlainRecord, LeavesWhatIsNotPlainToTheStream) {
    for (const char* const packet :
         {"", "<record>", "<record></record>", "<record> x<f name=\"a\">x</f></record>",
          "<record><f name=\"a\">x</f> x</record>", "<record><f name=\"a\"><b>x</b></f></record>",
          "<record><f name=\"a\">x</g></record>", "<record><f name=\"a\">x</f></records>",
          "<record><f>x</f></record>", "<record><f title=\"a\">x</f></record>",
          "<record><f name=\"a\"/></record>", "<record a=\"b\"><f name=\"a\">x</f></record>",
          "<record><f name=\"a\">x</f><!-- --></record>", "<f name=\"a\">x</f></record>",
          "</record><f name=\"a\">x</f></record>"}) {
        EXPECT_EQ(FieldsIn(packet), "not plain") << packet;
    }
}

TEST(PlainRecord, ConfigurationIsToldByTheFirstStartTags) {
    EXPECT_EQ(IsPlainConfiguration("<configuration><a>", "configuration"), true);
    EXPECT_EQ(IsPlainConfiguration("\n<a>\n<configuration>", "configuration"), true);
    EXPECT_EQ(IsPlainConfiguration("<record><field name=\"a\">x</field>", "configuration"), false);
    EXPECT_EQ(IsPlainConfiguration("<record></record>", "configuration"), std::nullopt);
    EXPECT_EQ(IsPlainConfiguration("<a/><configuration>", "configuration"), std::nullopt);
    EXPECT_EQ(IsPlainConfiguration("<a>", "configuration"), std::nullopt);
}

// What a parser says of a packet, or that it throws.
template <typename Ask>
std::string Told(Ask ask) {
    try {
        return ask();
    } catch (CException* exception) {
        exception->Delete();
        return "refused";
    }
}

std::string RecordIn(const std::string& packet) {
    CMapStringToString map;
    std::string told = Told([&] {
        AdImportRecordParser parser;
        parser.SetInputData(packet.c_str());
        parser.NextRecord();
        return std::to_string(parser.GetRecordMap(map));
    });
    Obx_String key;
    Obx_String value;
    for (CMapStringToString::Position position = map.GetStartPosition(); position != nullptr;) {
        map.GetNextAssoc(position, key, value);
        told += ";" + key.ToUtf8() + "=" + value.ToUtf8();
    }
    return told;
}

std::string KindOf(const std::string& packet) {
    return Told([&] {
        AdImportConfigurationDataParser parser;
        parser.SetInputData(packet.c_str());
        return std::to_string(parser.IsConfigurationData());
    });
}

class RandomPacket {
  public:
    explicit RandomPacket(std::uint64_t seed) : m_state(seed * 2 + 1) {}

    std::string Text() {
        std::string text = "<record>\n";
        for (std::size_t fields = Below(4); fields > 0; --fields) {
            text += Below(8) == 0 ? Piece() : "";
            // One by one, so that every compiler draws the same numbers for the same pieces.
            text += "  <field name=\"a" + std::to_string(Below(3)) + "\">";
            text += Piece();
            text += Piece();
            text += "</field>\n";
        }
        return text + (Below(8) == 0 ? Piece() : "") + "</record>\n<rest";
    }

  private:
    std::size_t Below(std::size_t bound) {
        m_state ^= m_state << 13U;
        m_state ^= m_state >> 7U;
        m_state ^= m_state << 17U;
        return static_cast<std::size_t>((m_state >> 11U) % bound);
    }

    std::string Piece() {
        static const std::vector<std::string> kPieces = {
            "",      "some text",      " ",    "&amp;lt;", "\n\t", "\xC3\xA9",  "<b>",
            "</b>",  "<c name=\"d\">", "</c>", "<c/>",     "]]>",  "]",         "<!-- -->",
            "&#65;", "&nbsp;",         "\r\n", "\x02",     "\xFF", "<a b='c'>", "<configuration>"};
        const std::size_t bound = Below(3) == 0 ? kPieces.size() : 6;
        return kPieces[Below(bound)];
    }

    std::uint64_t m_state;
};

TEST(PlainRecord, PacketsAtRandomAreReadAsByTheStreamAlone) {
    constexpr std::uint64_t kSeeds = 2000;
    const std::string instruction = "<?p?>";
    int plain = 0;
    for (std::uint64_t seed = 1; seed <= kSeeds; ++seed) {
        const std::string packet = RandomPacket(seed).Text();
        std::string odd = packet;
        odd.insert(std::string("<record>").size(), instruction);
        ASSERT_EQ(RecordIn(packet), RecordIn(odd)) << "seed " << seed << '\n' << packet;
        ASSERT_EQ(KindOf(packet), KindOf(instruction + packet)) << "seed " << seed << '\n'
                                                                << packet;
        plain += FieldsIn(packet) != "not plain" ? 1 : 0;
        ASSERT_EQ(FieldsIn(odd), "not plain");
    }
    EXPECT_GT(plain, 300);
}

}  // namespace
