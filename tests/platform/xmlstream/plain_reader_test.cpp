// Plain markup is read without expat. What is read, and how it fails, is the same with expat alone,
// which a declaration at the front calls for.
#include "platform/xmlstream/plain_reader.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "tests/platform/xmlstream/token_reader.h"

namespace {

using Result = PlainReader::Result;

Result ResultOf(std::string_view text) {
    TokenQueue queue;
    std::size_t at = 0;
    const Result result = PlainReader::ReadTag(text, at, queue);
    EXPECT_EQ(queue.IsEmpty(), result != Result::kRead) << text;
    EXPECT_EQ(at > 0, result == Result::kRead) << text;
    return result;
}

TEST(PlainReader, TakesPlainTags) {
    for (const char* const text :
         {"<a>", "\n\t <a>x", "<a b=\"c d\">", "<a-1.b b=\"\">", "x]]y]<a>", "&amp;&#xA;<a>",
          "\xC3\xA9 \xF0\x9F\x98\x80<a>", "it's > 5 \"q\"<a>"}) {
        EXPECT_EQ(ResultOf(text), Result::kRead) << text;
    }
}

TEST(PlainReader, NamesAreOfLettersDigitsAndAFewMarks) {
    const std::string first = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ_";
    const std::string others = first + "0123456789-.";
    for (char byte = 1; byte > 0 && byte < 0x7F; ++byte) {
        const auto isIn = [byte](const std::string& set) {
            return set.find(byte) == std::string::npos ? Result::kNotPlain : Result::kRead;
        };
        if (byte != '>') {
            EXPECT_EQ(ResultOf(std::string("<") + byte + "b>"), isIn(first)) << byte;
            EXPECT_EQ(ResultOf(std::string("<a") + byte + ">"), isIn(others)) << byte;
        }
    }
    EXPECT_EQ(ResultOf("<\x7F>"), Result::kNotPlain);
    EXPECT_EQ(ResultOf("<a\x7F>"), Result::kNotPlain);
}

TEST(PlainReader, LeavesTheRestAlone) {
    for (const char* const text : {"<a/>",
                                   "<a b='c'>",
                                   "<a b=\"c\" d=\"e\">",
                                   "<a  b=\"c\">",
                                   "<a >",
                                   "<a b=\"&lt;\">",
                                   "<a b=\"\n\">",
                                   "</a>",
                                   "<!-- c --><a>",
                                   "<?p?><a>",
                                   "<![CDATA[x]]><a>",
                                   "]]><a>",
                                   "&nbsp;<a>",
                                   "&<a>",
                                   "\r<a>",
                                   "\x01<a>",
                                   "\xFF<a>",
                                   "\xEF\xBF\xBF<a>",
                                   "\xEF\xBB\xBF<a>",
                                   "<1>",
                                   "< a>",
                                   "<a\xC3\xA9>",
                                   "<a:b>",
                                   "<>"}) {
        EXPECT_EQ(ResultOf(text), Result::kNotPlain) << text;
    }
}

TEST(PlainReader, WaitsForTheRestOfATag) {
    for (const char* const text : {"", "x", "x]]", "<", "<a", "<a b=\"c", "x</a"}) {
        EXPECT_EQ(ResultOf(text), Result::kIncomplete) << text;
    }
}

// All that a reader of tokens is told, attributes and failures with their places included.
std::string Told(const std::string& xml) {
    std::string told;
    TokenReader reader(xml);
    const auto failure = FailureOf([&] {
        for (std::string token = reader.Next(); token != "end"; token = reader.Next()) {
            told += token + '(' + reader.Attribute(u"a") + reader.Attribute(u"name") + ')';
        }
    });
    return told + (failure ? failure->message : "");
}

class PlainMarkup {
  public:
    explicit PlainMarkup(std::uint64_t seed) : m_state(seed * 2 + 1) {}

    // A text of records, with damage in some places.
    std::string Text() {
        std::string text = "\n";
        for (std::size_t records = 1 + Below(3); records > 0; --records) {
            text += "<record>\n";
            for (std::size_t fields = Below(6); fields > 0; --fields) {
                text += "  <field name=\"" + Piece() + "\">" + Piece() + Piece() + "</field>\n";
            }
            text += "</record>\n";
        }
        for (std::size_t damages = Below(3); damages > 0; --damages) {
            const std::size_t at = 1 + Below(text.size() - 1);
            switch (Below(3)) {
                case 0:
                    text.erase(at, 1 + Below(4));
                    break;
                case 1:
                    text.insert(at, Piece());
                    break;
                default:
                    text[at] = "<>&;/=\"' ]\n!?a"[Below(14)];
                    break;
            }
        }
        return text;
    }

    std::size_t Below(std::size_t bound) {
        m_state ^= m_state << 13U;
        m_state ^= m_state >> 7U;
        m_state ^= m_state << 17U;
        return static_cast<std::size_t>((m_state >> 11U) % bound);
    }

  private:
    std::string Piece() {
        static const std::vector<std::string> kPieces = {"",
                                                         "title",
                                                         " ",
                                                         "some text",
                                                         "&amp;",
                                                         "&lt;x&gt;",
                                                         "\xC3\xA9",
                                                         "\n  ",
                                                         "a]b]]c",
                                                         "<b>",
                                                         "</b>",
                                                         "<c a=\"1\"/>",
                                                         "]]>",
                                                         "<!-- -->",
                                                         "&#x9;",
                                                         "&#65;",
                                                         "<![CDATA[ y ]]>",
                                                         "\xE2\x82",
                                                         "\r\n",
                                                         "\x02",
                                                         "it's",
                                                         "x=\"y\"",
                                                         "&nbsp;",
                                                         std::string(100, 'z')};
        return kPieces[Below(Below(4) == 0 ? kPieces.size() : 7)];
    }

    std::uint64_t m_state;
};

TEST(PlainReader, MarkupAtRandomIsReadAsByExpatAlone) {
    constexpr std::uint64_t kSeeds = 3000;
    for (std::uint64_t seed = 1; seed <= kSeeds; ++seed) {
        const std::string text = PlainMarkup(seed).Text();
        ASSERT_EQ(Told(text), Told("<?xml version=\"1.0\"?>" + text)) << "seed " << seed << text;
    }
}

TEST(PlainReader, PlaceOfATokenThatIsNotExpectedIsThatOfExpat) {
    constexpr std::uint64_t kSeeds = 500;
    for (std::uint64_t seed = 1; seed <= kSeeds; ++seed) {
        PlainMarkup markup(seed);
        const std::string text = markup.Text();
        const std::size_t taken = markup.Below(12);
        const auto told = [taken](const std::string& xml) {
            TokenReader reader(xml);
            const auto failure = FailureOf([&] {
                for (std::size_t i = 0; i < taken; ++i) {
                    reader.Next();
                }
                XmlCharData data;
                reader.Xml() >> data;
                reader.Xml() >> data;
            });
            return failure ? failure->message : "";
        };
        ASSERT_EQ(told(text), told("<?xml version=\"1.0\"?>" + text)) << "seed " << seed << text;
    }
}

}  // namespace
