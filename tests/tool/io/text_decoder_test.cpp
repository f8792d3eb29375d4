#include "tool/io/text_decoder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "reading.h"
#include "tool/io/source_error.h"

namespace {

using namespace std::string_literals;
using reading::ToUtf16;
using tool::Encoding;

std::string Decode(std::string_view bytes, std::size_t chunk = tool::TextDecoder::kDefaultChunk) {
    tool::TextBytes source(bytes, "data.xml");
    tool::TextDecoder decoder(source, chunk);
    std::string text;
    while (decoder.Read(text)) {
    }
    EXPECT_EQ(decoder.BytesRead(), bytes.size());
    return text;
}

const std::string kSample =
    "<?xml version=\"1.0\"?>\n<a>\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80 b</a>\n";

struct EncodedCase {
    const char* what;
    std::string bytes;
    Encoding encoding;
};

class EncodedText : public testing::TestWithParam<EncodedCase> {};

TEST_P(EncodedText, ReadsAsUtf8WithoutByteOrderMark) {
    for (std::size_t chunk : reading::ChunkSizes()) {
        EXPECT_EQ(Decode(GetParam().bytes, chunk), kSample) << "chunks of " << chunk;
    }
}

TEST_P(EncodedText, IsRecognised) {
    tool::TextBytes source(GetParam().bytes);
    tool::TextDecoder decoder(source);
    EXPECT_EQ(decoder.SourceEncoding(), GetParam().encoding);
    EXPECT_EQ(decoder.TextBegin() + decoder.SourceBytes(kSample), GetParam().bytes.size());
}

const std::vector<EncodedCase> kEncodings = {
    {"Utf8", kSample, Encoding::Utf8},
    {"Utf8WithMark", "\xEF\xBB\xBF" + kSample, Encoding::Utf8},
    {"Utf16LittleEndian", ToUtf16(kSample, false), Encoding::Utf16LittleEndian},
    {"Utf16LittleEndianWithMark", "\xFF\xFE" + ToUtf16(kSample, false),
     Encoding::Utf16LittleEndian},
    {"Utf16BigEndian", ToUtf16(kSample, true), Encoding::Utf16BigEndian},
    {"Utf16BigEndianWithMark", "\xFE\xFF" + ToUtf16(kSample, true), Encoding::Utf16BigEndian},
};
INSTANTIATE_TEST_SUITE_P(In, EncodedText, testing::ValuesIn(kEncodings),
                         [](const auto& info) { return std::string(info.param.what); });

TEST(TextDecoder, ReadsAnEmptySource) {
    EXPECT_EQ(Decode(""), "");
}

TEST(TextDecoder, RecognisesUtf16AfterLeadingBlanks) {
    EXPECT_EQ(Decode(ToUtf16("\n<a/>", false)), "\n<a/>");
    EXPECT_EQ(Decode(ToUtf16("\n<a/>", true)), "\n<a/>");
}

TEST(TextDecoder, ReadsTextsLongerThanAChunkAndTheHead) {
    std::string text;
    for (int i = 0; i < 1000; ++i) {
        text += "<a>\xE2\x82\xAC" + std::to_string(i);
    }
    for (std::size_t chunk : {5U, 100U, 4096U}) {
        EXPECT_TRUE(Decode(text, chunk) == text);
        EXPECT_TRUE(Decode(ToUtf16(text, false), chunk) == text);
    }
}

std::string Declared(std::string_view encoding) {
    return "<?xml version=\"1.0\" encoding=\"" + std::string(encoding) + "\"?><a/>";
}

TEST(TextDecoder, TakesTheNamesOfTheEncodingsItReads) {
    for (const char* name : {"UTF-8", "utf-8", "US-ASCII", "UTF-16", "utf-16le", "UTF-16BE"}) {
        EXPECT_EQ(Decode(Declared(name)), Declared(name));
        EXPECT_EQ(Decode(ToUtf16(Declared(name), true)), Declared(name));
    }
}

TEST(TextDecoder, LooksForTheEncodingInTheDeclarationOnly) {
    EXPECT_EQ(Decode("<a encoding='koi8-r'?>"), "<a encoding='koi8-r'?>");
    EXPECT_EQ(Decode("<?xml version='1.0'?><a encoding='koi8-r'/>"),
              "<?xml version='1.0'?><a encoding='koi8-r'/>");
}

std::string Refusal(std::string_view bytes) {
    try {
        Decode(bytes);
    } catch (const tool::SourceError& error) {
        return error.what();
    }
    return "";
}

TEST(TextDecoder, RefusesOtherEncodingsAndSaysHowToConvert) {
    EXPECT_EQ(Refusal(Declared("ISO-8859-1")),
              "data.xml: the file is in ISO-8859-1, and packets are read in UTF-8 or UTF-16 only; "
              "convert it first, for example with iconv -f ISO-8859-1 -t UTF-8, and name UTF-8 in "
              "its XML declaration");
    EXPECT_THAT(Refusal("\n<?xml version='1.0' encoding = 'koi8-r' ?>"),
                testing::HasSubstr("is in koi8-r"));
}

TEST(TextDecoder, ShowsNoEncodingThatIsNone) {
    for (const std::string& name :
         {"\x01\0"s, "a b"s, "$(date)"s, "8859"s, "utf-8\n"s, "\xC3\xA9"s, std::string(200, ';')}) {
        EXPECT_EQ(Refusal(Declared(name)),
                  "data.xml: its XML declaration names an encoding that is none, and packets are "
                  "read in UTF-8 or UTF-16 only; name UTF-8 there when the file is in it, and "
                  "convert it first otherwise")
            << name;
    }
    EXPECT_THAT(Refusal(Declared("x-User.Defined_1")),
                testing::HasSubstr("is in x-User.Defined_1"));
}

TEST(TextDecoder, RefusesUtf32) {
    for (const std::string& bytes :
         {"\xFF\xFE\0\0<\0\0\0"s, "\0\0\xFE\xFF\0\0\0<"s, "<\0\0\0a\0\0\0"s, "\0\0\0<\0\0\0a"s}) {
        EXPECT_THAT(Refusal(bytes), testing::HasSubstr("is in UTF-32"));
    }
}

TEST(TextDecoder, MarksWhatIsNoTextWhateverTheChunks) {
    std::string bytes = "<a>\xE2\x82</a>\xF0\x9F\x98";
    for (std::size_t chunk : reading::ChunkSizes()) {
        EXPECT_EQ(Decode(bytes, chunk), "<a>\xF9\xF9</a>\xF9\xF9\xF9");
    }
}

TEST(TextDecoder, TellsWhetherItHasMarkedAnything) {
    tool::TextBytes good("<a/>");
    tool::TextDecoder goodDecoder(good);
    tool::TextBytes bad("<a\xFF>");
    tool::TextDecoder badDecoder(bad);
    std::string text;
    goodDecoder.Read(text);
    badDecoder.Read(text);
    EXPECT_FALSE(goodDecoder.Marked());
    EXPECT_TRUE(badDecoder.Marked());
}

}  // namespace
