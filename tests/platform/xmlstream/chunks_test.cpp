#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <istream>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "tests/platform/xmlstream/token_reader.h"

namespace {

using testing::ElementsAre;

// Hands out a text in pieces of a given size, and counts what it has handed out.
class PieceBuffer : public std::streambuf {
  public:
    PieceBuffer(std::string text, std::size_t size) : m_text(std::move(text)), m_size(size) {}
    std::size_t HandedOut() const { return m_position; }

  protected:
    int_type underflow() override {
        if (m_position == m_text.size()) {
            return traits_type::eof();
        }
        char* begin = m_text.data() + m_position;
        m_position += std::min(m_size, m_text.size() - m_position);
        setg(begin, begin, m_text.data() + m_position);
        return traits_type::to_int_type(*begin);
    }

  private:
    std::string m_text;
    std::size_t m_size;
    std::size_t m_position = 0;
};

std::vector<std::string> TokensOfPieces(const std::string& xml, std::size_t size) {
    PieceBuffer buffer(xml, size);
    std::istream input(&buffer);
    IXmlStream stream(input, false, false);
    std::vector<std::string> tokens;
    for (int type = stream.GetNextTokenType(); type != IXmlStream::kEnd;
         type = stream.GetNextTokenType()) {
        Obx_String name;
        if (stream.GetNextTokenName(name) == 0) {
            XmlCharData data;
            stream >> data;
            tokens.push_back("'" + data.GetImage(nullptr).ToUtf8() + "'");
        } else if (type == IXmlStream::kStartTag) {
            XmlSTag tag;
            stream >> tag;
            tokens.push_back("<" + name.ToUtf8() + ">");
        } else {
            XmlETag tag;
            stream >> tag;
            tokens.push_back("</" + name.ToUtf8() + ">");
        }
    }
    return tokens;
}

const std::string kSample =
    "<a><b name='größe &amp; x'>one\r\ntwo]] &#xA; \xF0\x9F\x8C\x8A</b>\r\n<!-- c --><c>  </c>"
    "<d/><?pi x?><e><![CDATA[<x>]]]]></e> tail <f>&lt;</f></a>";
const std::vector<std::string> kTokensOfSample = {
    "<a>",      "<b>",     "'one\r\ntwo]] &#xA; \xF0\x9F\x8C\x8A'",
    "</b>",     "<c>",     "'  '",
    "</c>",     "<d>",     "</d>",
    "<e>",      "'<x>]]'", "</e>",
    "' tail '", "<f>",     "'&lt;'",
    "</f>",     "</a>"};

TEST(Chunks, DoNotShowInTheTokensOfAnInputThatComesInPieces) {
    for (std::size_t size = 1; size <= 20; ++size) {
        EXPECT_EQ(TokensOfPieces("<?xml version='1.0'?>" + kSample, size), kTokensOfSample) << size;
    }
}

// The stream reads 2048 bytes, then 4096: the padding moves every byte of the sample across the
// ends of both.
TEST(Chunks, DoNotShowInTheTokensAtTheirBorders) {
    for (const std::size_t border : {2048U, 6144U}) {
        for (std::size_t before = 0; before <= kSample.size(); ++before) {
            const std::string padding(border - before, ' ');
            ASSERT_EQ(TokensOf(padding + kSample), kTokensOfSample) << border << " " << before;
        }
    }
}

// What is after a token may be anything, as long as it is not asked for.
TEST(Laziness, DoesNotFailAtWhatStandsAfterTheToken) {
    TokenReader reader("<record><f name='a'>1</f></record><broken <&& \x01");
    EXPECT_EQ(reader.Next(), "<record>");
    EXPECT_EQ(reader.Next(), "<f>");
    EXPECT_EQ(reader.Next(), "'1'");
    EXPECT_EQ(reader.Next(), "</f>");
    EXPECT_EQ(reader.Next(), "</record>");
    EXPECT_TRUE(FailureOf([&] { reader.Next(); }));
}

TEST(Laziness, DoesNotFailWhileTheNextTokenIsOnlyLookedAt) {
    TokenReader reader("<a><&");
    EXPECT_EQ(reader.Xml().GetNextTokenType(), IXmlStream::kStartTag);
    EXPECT_EQ(reader.Next(), "<a>");
    EXPECT_TRUE(FailureOf([&] { reader.Xml().GetNextTokenType(); }));
}

TEST(Laziness, ReadsNothingBeforeTheFirstQuestion) {
    PieceBuffer buffer("<a/>", 1);
    std::istream input(&buffer);
    IXmlStream stream(input, false, false);
    EXPECT_EQ(buffer.HandedOut(), 0U);
    EXPECT_EQ(stream.GetNextTokenType(), IXmlStream::kStartTag);
    EXPECT_GT(buffer.HandedOut(), 0U);
}

TEST(Laziness, ReadsLittleBeyondARecordOfALargePacket) {
    std::string record = "<record>";
    for (int i = 0; i < 16; ++i) {
        record += "<f name='field'>" + std::string(60, 'x') + "</f>";
    }
    record += "</record>";
    std::string packet;
    for (int i = 0; i < 1000; ++i) {
        packet += record;
    }
    PieceBuffer buffer(packet, 1);
    std::istream input(&buffer);
    IXmlStream stream(input, false, false);
    for (int token = 0; token < 2 + 3 * 16; ++token) {
        switch (stream.GetNextTokenType()) {
            case IXmlStream::kStartTag: {
                XmlSTag tag;
                stream >> tag;
                break;
            }
            case IXmlStream::kEndTag: {
                XmlETag tag;
                stream >> tag;
                break;
            }
            default: {
                XmlCharData data;
                stream >> data;
            }
        }
    }
    EXPECT_LE(buffer.HandedOut(), record.size() + 4096);
}

TEST(HugeToken, OfCharacterDataIsReadWhole) {
    const std::string value(10 << 20, 'x');
    EXPECT_THAT(TokensOf("<a>" + value + "</a>"), ElementsAre("<a>", "'" + value + "'", "</a>"));
}

TEST(HugeToken, OfManyEscapesIsReadWhole) {
    std::string value;
    for (int i = 0; i < 100000; ++i) {
        value += "&amp; &#xA;";
    }
    EXPECT_THAT(TokensOf("<a>" + value + "</a>"), ElementsAre("<a>", "'" + value + "'", "</a>"));
}

TEST(HugeToken, OfCdataIsReadWhole) {
    const std::string value(10 << 20, '&');
    EXPECT_THAT(TokensOf("<a><![CDATA[" + value + "]]></a>"),
                ElementsAre("<a>", "'" + value + "'", "</a>"));
}

TEST(HugeToken, OfAnAttributeIsReadWhole) {
    const std::string value(10 << 20, 'x');
    const std::string xml = "<a name='" + value + "'/>";
    TokenReader reader(xml);
    EXPECT_EQ(reader.Next(), "<a>");
    EXPECT_EQ(reader.Attribute(u"name"), value);
}

// A buffer over a text that notes how much is asked for at a time.
class NotingBuffer : public std::stringbuf {
  public:
    explicit NotingBuffer(const std::string& text) : std::stringbuf(text, std::ios::in) {}
    // What was asked for since the last call.
    std::vector<std::streamsize> TakeRequests() { return std::exchange(m_requests, {}); }

  protected:
    std::streamsize xsgetn(char* to, std::streamsize count) override {
        m_requests.push_back(count);
        return std::stringbuf::xsgetn(to, count);
    }

  private:
    std::vector<std::streamsize> m_requests;
};

// Takes tokens up to the first one of that type.
void TakeUpTo(IXmlStream& xml, int type) {
    for (int next = -1; next != type;) {
        next = xml.GetNextTokenType();
        if (next == IXmlStream::kStartTag) {
            XmlSTag tag;
            xml >> tag;
        } else if (next == IXmlStream::kEndTag) {
            XmlETag tag;
            xml >> tag;
        } else {
            XmlCharData data;
            xml >> data;
        }
    }
}

TEST(ChunkSize, DoublesUpToALimitWhileTextGoesOn) {
    NotingBuffer buffer("<a>" + std::string(300000, 'x') + "</a>");
    std::istream input(&buffer);
    IXmlStream xml(input, false, false);
    TakeUpTo(xml, IXmlStream::kStartTag);
    EXPECT_THAT(buffer.TakeRequests(), ElementsAre(2048));
    TakeUpTo(xml, IXmlStream::kCharData);
    EXPECT_THAT(buffer.TakeRequests(),
                ElementsAre(4096, 8192, 16384, 32768, 65536, 65536, 65536, 65536));
}

TEST(ChunkSize, IsSmallAgainAfterATag) {
    std::string xml = "<a>" + std::string(100000, 'x') + "</a>";
    for (int i = 0; i < 50000; ++i) {
        xml += "<b/>";
    }
    NotingBuffer buffer(xml);
    std::istream input(&buffer);
    IXmlStream stream(input, false, false);
    TakeUpTo(stream, IXmlStream::kEndTag);
    EXPECT_THAT(buffer.TakeRequests(), testing::Contains(65536));
    for (int i = 0; i < 50000; ++i) {
        TakeUpTo(stream, IXmlStream::kEndTag);
    }
    EXPECT_THAT(buffer.TakeRequests(), testing::Each(4096));
}

// expat looks at an incomplete tag or comment again from its beginning with every chunk.
TEST(ChunkSize, GrowsWithAnIncompleteTagSoThatTheWorkIsInProportionToItsLength) {
    const std::size_t length = std::size_t{4} << 20;
    for (const std::string& xml : {"<a><!--" + std::string(length, 'x') + "--></a>",
                                   "<a name='" + std::string(length, 'x') + "'/>"}) {
        NotingBuffer buffer(xml);
        std::istream input(&buffer);
        IXmlStream stream(input, false, false);
        TakeUpTo(stream, IXmlStream::kEndTag);
        std::streamsize read = 0;
        std::streamsize lookedAt = 0;
        for (const std::streamsize request : buffer.TakeRequests()) {
            read += request;
            lookedAt += read;
        }
        EXPECT_LT(lookedAt, static_cast<std::streamsize>(5 * length));
    }
}

}  // namespace
