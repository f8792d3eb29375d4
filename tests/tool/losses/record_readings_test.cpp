#include "tool/losses/record_readings.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "random_records.h"
#include "reading.h"

namespace {

// A record of field elements, texts and comments, nested at random.
std::string RandomRecord(reading::RandomText& random) {
    static constexpr const char* kPieces[] = {"<f name='a'>",
                                              "<f name='b'>",
                                              "<f name='A'>",
                                              "<f>",
                                              "text",
                                              " ",
                                              "\n",
                                              "&#32;",
                                              "<!-- c -->",
                                              "<?p?>",
                                              "&amp;",
                                              "<![CDATA[ ]]>",
                                              "<g name='c'/>",
                                              "</f>",
                                              "<![CDATA[d]]>",
                                              "</f>"};
    std::string text = "<record>";
    int open = 0;
    for (std::size_t count = random.Below(16); count > 0; --count) {
        const std::string piece = kPieces[random.Below(std::size(kPieces))];
        open += piece.starts_with("<f") ? 1 : piece == "</f>" && open > 0 ? -1 : 0;
        text += piece == "</f>" && text.ends_with("<record>") ? "" : piece;
    }
    // Most of them are well-formed, some are not.
    for (; open > 0; --open) {
        text += "</f>";
    }
    return text + "</record>";
}

TEST(RecordReadings, AgreeOnWhatTheImporterReads) {
    const unsigned seed = reading::NewSeed();
    SCOPED_TRACE("seed " + std::to_string(seed));
    reading::RandomText random(seed);
    tool::RecordReadings readings;
    int read = 0;
    int stopped = 0;
    for (int round = 0; round < 5'000; ++round) {
        const std::string text = RandomRecord(random);
        tool::PacketReader reader = reading::ReaderOf(text);
        tool::SourceRecord record;
        ASSERT_TRUE(reader.NextRecord(record)) << text;
        bool readable = false;
        ASSERT_NO_THROW(readable = readings.Read(record).empty()) << text;
        read += readable ? 1 : 0;
        stopped +=
            readable && readings.Elements().Stop() != tool::RecordElements::StopCause::None ? 1 : 0;
    }
    EXPECT_GT(read, 1'000);
    EXPECT_GT(stopped, 200);
}

// Fields side by side whose texts are pieced together at random.
std::string RandomFields(reading::RandomText& random) {
    static constexpr const char* kNames[] = {"a", "b", "c", "d", "A", ""};
    static constexpr const char* kPieces[] = {
        "text",         " ",    "\n",    "\r",    "\r\n",  "&amp;",      "&lt;",           "lt;",
        "#xA;",         "amp;", "&#xA;", "&#xD;", "&#10;", "<!-- c -->", "<![CDATA[&l]]>", "t;",
        "<![CDATA[x]]>"};
    std::string text = "<record>";
    for (std::size_t count = random.Below(5); count > 0; --count) {
        text += "<f name='" + std::string(kNames[random.Below(std::size(kNames))]) + "'>";
        for (std::size_t size = random.Below(4); size > 0; --size) {
            text += kPieces[random.Below(std::size(kPieces))];
        }
        text += "</f>";
    }
    return text + "</record>";
}

TEST(RecordReadings, HoldTheFieldsThatTheImporterReads) {
    const unsigned seed = reading::NewSeed();
    SCOPED_TRACE("seed " + std::to_string(seed));
    reading::RandomText random(seed);
    tool::RecordReadings readings;
    for (int round = 0; round < 5'000; ++round) {
        const std::string text = RandomFields(random);
        tool::PacketReader reader = reading::ReaderOf(text);
        tool::SourceRecord record;
        ASSERT_TRUE(reader.NextRecord(record)) << text;
        ASSERT_EQ(readings.Read(record), "") << text;
        // A reader of its own holds nothing of the records before.
        tool::ImporterFields fields;
        ASSERT_EQ(tool::ImporterFieldReader().Read(record.packet, fields), "") << text;
        ASSERT_EQ(readings.Fields().size(), fields.size()) << text;
        for (std::size_t field = 0; field < fields.size(); ++field) {
            ASSERT_EQ(readings.Fields()[field].name, fields[field].name) << text;
            ASSERT_EQ(readings.Fields()[field].value, fields[field].value) << text;
        }
    }
}

TEST(RecordReadings, TellTheSpellingsOfANameFromOtherNames) {
    tool::PacketReader reader = reading::ReaderOf(
        "<record><f name='b'/><f name='aa'/><f name='B'/><f name='a'/><f name='AA'/></record>");
    tool::SourceRecord record;
    ASSERT_TRUE(reader.NextRecord(record));
    tool::RecordReadings readings;
    ASSERT_EQ(readings.Read(record), "");
    const std::vector<std::vector<std::size_t>> expected = {{1, 4}, {0, 2}};
    EXPECT_EQ(readings.Spellings(), expected);
}

}  // namespace
