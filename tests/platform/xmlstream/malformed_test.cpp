#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <istream>
#include <stdexcept>
#include <string>
#include <vector>

#include "tests/platform/thrown_text.h"
#include "tests/platform/xmlstream/token_reader.h"

namespace {

using namespace std::string_literals;

// Where the reading of a malformed text must stop, and what the message must say after the place.
struct Malformed {
    std::string xml;
    long line;
    long column;
    std::string what;
};

// Reads each text to its end, which must fail as its row says.
void ExpectRefused(const std::vector<Malformed>& table) {
    for (const Malformed& row : table) {
        SCOPED_TRACE(row.xml);
        const auto failure = FailureOf([&] { TokensOf(row.xml); });
        if (!failure) {
            ADD_FAILURE() << "was read without an error";
            continue;
        }
        EXPECT_EQ(failure->code, XmlException::Code::kMalformed);
        EXPECT_EQ(failure->line, row.line);
        EXPECT_EQ(failure->column, row.column);
        const std::string where = "XML, line " + std::to_string(row.line) + ", column " +
                                  std::to_string(row.column) + ": ";
        EXPECT_EQ(failure->message, where + row.what);
    }
}

TEST(MalformedXml, StartTags) {
    ExpectRefused({
        {"<", 1, 1, "unclosed token"},
        {"<a", 1, 1, "unclosed token"},
        {"<a name=\"x", 1, 1, "unclosed token"},
        {"<a>\n  <b name='x'\n", 2, 3, "unclosed token"},
        {"<a b>", 1, 5, "not well-formed (invalid token)"},
        {"<a b=c>", 1, 6, "not well-formed (invalid token)"},
        {"<a b='1'c='2'>", 1, 9, "not well-formed (invalid token)"},
        {"<a b='1' b='2'/>", 1, 10, "duplicate attribute"},
        {"<a b='<'/>", 1, 7, "not well-formed (invalid token)"},
        {"<1/>", 1, 2, "not well-formed (invalid token)"},
        {"<>", 1, 2, "not well-formed (invalid token)"},
        {"< a/>", 1, 2, "not well-formed (invalid token)"},
        {"<a/ >", 1, 4, "not well-formed (invalid token)"},
    });
}

TEST(MalformedXml, EndTags) {
    ExpectRefused({
        {"<a></b>", 1, 6, "the end tag does not match the open element \"a\""},
        {"<a>\n<b>\n</a>", 3, 3, "the end tag does not match the open element \"b\""},
        {"<a><b></b></A>", 1, 13, "the end tag does not match the open element \"a\""},
        {"<a/></a>", 1, 7, "an end tag without its start tag"},
        {"</a>", 1, 3, "an end tag without its start tag"},
        {"</fragment>", 1, 1, "an end tag without its start tag"},
        {"<a/>\n</fragment><b/>", 2, 1, "an end tag without its start tag"},
        {"<a></a b>", 1, 8, "not well-formed (invalid token)"},
        {"<a></a", 1, 4, "unclosed token"},
    });
}

TEST(MalformedXml, ElementsLeftOpen) {
    ExpectRefused({
        {"<a>", 1, 4, "the element \"a\" is not closed"},
        {"<a>text", 1, 8, "the element \"a\" is not closed"},
        {"<a><b/>\n  ", 2, 3, "the element \"a\" is not closed"},
        {"<a><b><c></c>", 1, 14, "the element \"b\" is not closed"},
        {"<größe>x", 1, 9, "the element \"größe\" is not closed"},
    });
}

TEST(MalformedXml, References) {
    ExpectRefused({
        {"<a>x & y</a>", 1, 7, "not well-formed (invalid token)"},
        {"<a>&</a>", 1, 5, "not well-formed (invalid token)"},
        {"<a>&nbsp;</a>", 1, 4, "undefined entity"},
        {"<a>&#0;</a>", 1, 4, "reference to invalid character number"},
        {"<a>&#x110000;</a>", 1, 4, "reference to invalid character number"},
        {"<a>&#x;</a>", 1, 7, "not well-formed (invalid token)"},
        {"<a b='&no;'/>", 1, 1, "undefined entity"},
        {"<a b='x & y'/>", 1, 10, "not well-formed (invalid token)"},
    });
}

TEST(MalformedXml, CharactersThatXmlDoesNotAllow) {
    ExpectRefused({
        {"<a>\x01</a>", 1, 4, "not well-formed (invalid token)"},
        {"<a>ab\0cd</a>"s, 1, 6, "not well-formed (invalid token)"},
        {"\0"s, 1, 1, "not well-formed (invalid token)"},
        {"<a>\x80</a>", 1, 4, "not well-formed (invalid token)"},
        {"<a>\xC0\x80</a>", 1, 4, "not well-formed (invalid token)"},
        {"<a>\xED\xA0\x80</a>", 1, 4, "not well-formed (invalid token)"},
        {"<a>\xEF\xBF\xBF</a>", 1, 4, "not well-formed (invalid token)"},
        {"<a>\xC3", 1, 4, "partial character"},
        {"\x80\x80\x80\x80", 1, 2, "not well-formed (invalid token)"},
        {"<?xml version='1.0'?>\x80", 1, 22, "not well-formed (invalid token)"},
        {"\xEF\xBB\xBF\x80", 1, 1, "not well-formed (invalid token)"},
        {"<a b='\xFF'/>", 1, 7, "not well-formed (invalid token)"},
    });
}

TEST(MalformedXml, CommentsInstructionsAndCdata) {
    ExpectRefused({
        {"<a><!-- x -- y --></a>", 1, 13, "not well-formed (invalid token)"},
        {"<a><!-- x", 1, 4, "unclosed token"},
        {"<a><![CDATA[x</a>", 1, 18, "unclosed CDATA section"},
        {"<a>]]></a>", 1, 6, "not well-formed (invalid token)"},
        {"<a><?x </a>", 1, 4, "unclosed token"},
        {"<a><?x</a>", 1, 7, "not well-formed (invalid token)"},
        {"<a><?xml version='1.0'?></a>", 1, 4, "XML or text declaration not at start of entity"},
        {"\n<?xml version='1.0'?><a/>", 2, 1, "XML or text declaration not at start of entity"},
    });
}

TEST(MalformedXml, DeclarationsAndDoctypes) {
    ExpectRefused({
        {"<!DOCTYPE a><a/>", 1, 3, "a DOCTYPE or another declaration is not allowed"},
        {"<!DOCTYPE a [<!ENTITY x 'y'>]><a>&x;</a>", 1, 3,
         "a DOCTYPE or another declaration is not allowed"},
        {"<?xml version='1.0'?>\n<!DOCTYPE a>", 2, 3,
         "a DOCTYPE or another declaration is not allowed"},
        {"<a>\n <!ELEMENT b ANY></a>", 2, 4, "a DOCTYPE or another declaration is not allowed"},
        {"\xEF\xBB\xBF <a>\n<!b></a>", 2, 3, "a DOCTYPE or another declaration is not allowed"},
        {"<a><![INCLUDE[x]]></a>", 1, 7, "not well-formed (invalid token)"},
        {"<?xml version='1.0'", 1, 1, "the XML declaration is not closed"},
    });
}

TEST(MalformedXml, CountsLinesAndColumnsFromTheStartOfTheStream) {
    ExpectRefused({
        {"&", 1, 1, "unclosed token"},
        {"\n&", 2, 1, "unclosed token"},
        {"\r\n\r\n &", 3, 2, "unclosed token"},
        {"\r\r&", 3, 1, "unclosed token"},
        {"äöü\xF0\x9F\x8C\x8A&", 1, 5, "unclosed token"},
        {"<?xml version='1.0'?>&", 1, 22, "unclosed token"},
        {"<?xml\nversion='1.0'\n ?>&", 3, 4, "unclosed token"},
        {"<?xml\r\nversion='1.0'\r ?>&", 3, 4, "unclosed token"},
        {"<?xml version='1.0'?>\n&", 2, 1, "unclosed token"},
        {"\xEF\xBB\xBF&", 1, 1, "unclosed token"},
        {"\xEF\xBB\xBF<?xml version='ü'?>&", 1, 20, "unclosed token"},
    });
}

// The text and the refused place are reported one after the other, and nothing is read after them.
void ExpectTextThenFailure(const std::string& xml, const std::string& text, long column) {
    SCOPED_TRACE(xml);
    TokenReader reader(xml);
    std::string first;
    EXPECT_FALSE(FailureOf([&] { first = reader.Next(); }));
    EXPECT_EQ(first, text);
    const auto failure = FailureOf([&] { reader.Next(); });
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->column, column);
}

TEST(MalformedXml, ComesAfterTheTextBeforeIt) {
    ExpectTextThenFailure("tail</x><record/>", "'tail'", 7);
    ExpectTextThenFailure("tail</fragment><record/>", "'tail'", 5);
    ExpectTextThenFailure("tail<1>", "'tail'", 6);
    ExpectTextThenFailure("tail<x", "'tail'", 5);
    ExpectTextThenFailure("tail<!DOCTYPE x>", "'tail'", 7);
    ExpectTextThenFailure("AT&T <record/>", "'AT'", 5);
    ExpectTextThenFailure("tail\xC3", "'tail'", 5);
}

// A packet may be cut within a section.
TEST(MalformedXml, ComesAfterTheTextBeforeTheEndOfACutSection) {
    ExpectTextThenFailure("tail ]]></x><record/>", "'tail '", 8);
    ExpectTextThenFailure("tail]]]]>", "'tail]]'", 9);
    ExpectTextThenFailure("a\nb]]>", "'a\nb'", 4);
    ExpectTextThenFailure("a&amp;b]]>", "'a&amp;b'", 10);
    ExpectTextThenFailure("<!-- c -->tail]]>", "'tail'", 17);
    ExpectTextThenFailure("<?p?>tail]]>", "'tail'", 12);
    ExpectTextThenFailure("<![CDATA[x]]>tail]]>", "'xtail'", 20);
    const std::string tail(5000, 'x');
    ExpectTextThenFailure(tail + "]]>", "'" + tail + "'", 5003);
    for (std::size_t size = 2040; size < 2050; ++size) {
        const std::string text(size, 'x');
        ExpectTextThenFailure(text + "]]></x>", "'" + text + "'", static_cast<long>(size) + 3);
    }
}

TEST(MalformedXml, ComesAtOnceWhereASectionIsClosedThatHasNoText) {
    for (const char* const xml : {"]]><a/>", " \n]]><a/>", "<!-- c -->]]>"}) {
        TokenReader reader(xml);
        EXPECT_TRUE(FailureOf([&] { reader.Next(); })) << xml;
    }
    TokenReader reader("<a>]]></a>");
    EXPECT_EQ(reader.Next(), "<a>");
    EXPECT_TRUE(FailureOf([&] { reader.Next(); }));
}

TEST(MalformedXml, ComesAfterTheTextOfAnElement) {
    TokenReader reader("<a>text</b>");
    EXPECT_EQ(reader.Next(), "<a>");
    EXPECT_EQ(reader.Next(), "'text'");
    EXPECT_TRUE(FailureOf([&] { reader.Next(); }));
}

TEST(MalformedXml, ComesAtOnceAfterWhiteSpaceBetweenTags) {
    TokenReader reader("<a> </b>");
    EXPECT_EQ(reader.Next(), "<a>");
    EXPECT_TRUE(FailureOf([&] { reader.Next(); }));
}

TEST(MalformedXml, AfterTextMayBeLeftUnread) {
    TokenReader reader("tail</x>");
    EXPECT_EQ(reader.Next(), "'tail'");
}

TEST(MalformedXml, IsFoundFarAfterTheFirstChunk) {
    std::string xml = "<a>";
    for (int i = 0; i < 20000; ++i) {
        xml += "<b>line</b>\n";
    }
    ExpectRefused({{xml + "  & ", 20001, 4, "not well-formed (invalid token)"}});
}

constexpr const char* kRefusedAfterFailure =
    "Assertion failed: an XML stream is not used after it has failed";

// What a stream says that has failed already and is asked once more.
std::string TextOfASecondQuestion(IXmlStream& xml) {
    EXPECT_TRUE(FailureOf([&] { xml.GetNextTokenType(); }));
    return ThrownText([&] { xml.GetNextTokenType(); });
}

TEST(FailedStream, RefusesEveryFurtherQuestion) {
    for (const char* broken : {"&", "</a>", "</fragment>", "<?xml version='1.0'"}) {
        TokenReader reader(broken);
        EXPECT_EQ(TextOfASecondQuestion(reader.Xml()), kRefusedAfterFailure) << broken;
        Obx_String name;
        XmlSTag tag;
        EXPECT_EQ(ThrownText([&] { reader.Xml().GetNextTokenName(name); }), kRefusedAfterFailure);
        EXPECT_EQ(ThrownText([&] { reader.Xml() >> tag; }), kRefusedAfterFailure);
    }
}

TEST(FailedStream, RefusesEveryFurtherQuestionAfterItsText) {
    TokenReader reader("tail</x>");
    reader.Next();
    EXPECT_EQ(TextOfASecondQuestion(reader.Xml()), kRefusedAfterFailure);
}

TEST(Nesting, MayBeTenThousandDeep) {
    std::string xml;
    for (int i = 0; i < 10000; ++i) {
        xml += "<a>";
    }
    for (int i = 0; i < 10000; ++i) {
        xml += "</a>";
    }
    EXPECT_EQ(TokensOf(xml).size(), 20000U);
}

TEST(Nesting, IsRefusedWhenItIsAbsurd) {
    std::string xml;
    for (int i = 0; i < 1000000; ++i) {
        xml += "<a>";
    }
    const auto failure = FailureOf([&] { TokensOf(xml); });
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->code, XmlException::Code::kTooDeep);
    EXPECT_EQ(failure->message, "XML, line 1, column 150001: elements are nested too deeply");
}

TEST(Nesting, IsRefusedAfterTheTextBeforeIt) {
    std::string xml;
    for (int i = 0; i < 50000; ++i) {
        xml += "<a>";
    }
    xml += "text<b/></a>";
    TokenReader reader(xml);
    for (int i = 0; i < 50000; ++i) {
        ASSERT_EQ(reader.Next(), "<a>");
    }
    EXPECT_EQ(reader.Next(), "'text'");
    const auto failure = FailureOf([&] { reader.Next(); });
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->code, XmlException::Code::kTooDeep);
}

TEST(UnreadableInput, IsReported) {
    class BrokenBuffer : public std::streambuf {
        int_type underflow() override { throw std::runtime_error("disk on fire"); }
    };
    BrokenBuffer buffer;
    std::istream input(&buffer);
    IXmlStream xml(input, false, false);
    const auto failure = FailureOf([&] { xml.GetNextTokenType(); });
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->code, XmlException::Code::kUnreadable);
    EXPECT_EQ(failure->message, "XML, line 1, column 1: the input cannot be read");
    EXPECT_EQ(ThrownText([&] { xml.GetNextTokenType(); }), kRefusedAfterFailure);
}

// A text in which the reading broke off may be incomplete, so it is not handed out.
TEST(UnreadableInput, IsReportedInsteadOfTheTextBeforeIt) {
    class BreakingBuffer : public std::streambuf {
        int_type underflow() override {
            if (m_given) {
                throw std::runtime_error("disk on fire");
            }
            m_given = true;
            setg(m_text.data(), m_text.data(), m_text.data() + m_text.size());
            return traits_type::to_int_type(m_text.front());
        }
        std::string m_text = "<a>\n" + std::string(2043, 'x') + "y";
        bool m_given = false;
    };
    BreakingBuffer buffer;
    std::istream input(&buffer);
    IXmlStream xml(input, false, false);
    XmlSTag tag;
    xml >> tag;
    const auto failure = FailureOf([&] { xml.GetNextTokenType(); });
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->code, XmlException::Code::kUnreadable);
}

}  // namespace
