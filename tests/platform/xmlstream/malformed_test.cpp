#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <istream>
#include <stdexcept>
#include <string>
#include <vector>

#include "tests/platform/xmlstream/token_reader.h"

namespace {

using testing::HasSubstr;
using testing::StartsWith;
using namespace std::string_literals;

// Where the reading of a malformed text must stop, and a part of what the message must say.
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
        EXPECT_THAT(failure->message, StartsWith(where));
        EXPECT_THAT(failure->message, HasSubstr(row.what));
    }
}

TEST(MalformedXml, StartTags) {
    ExpectRefused({
        {"<", 1, 1, "unclosed token"},
        {"<a", 1, 1, "unclosed token"},
        {"<a name=\"x", 1, 1, "unclosed token"},
        {"<a>\n  <b name='x'\n", 2, 3, "unclosed token"},
        {"<a b>", 1, 5, "not well-formed"},
        {"<a b=c>", 1, 6, "not well-formed"},
        {"<a b='1'c='2'>", 1, 9, "not well-formed"},
        {"<a b='1' b='2'/>", 1, 10, "duplicate attribute"},
        {"<a b='<'/>", 1, 7, "not well-formed"},
        {"<1/>", 1, 2, "not well-formed"},
        {"<>", 1, 2, "not well-formed"},
        {"< a/>", 1, 2, "not well-formed"},
        {"<a/ >", 1, 4, "not well-formed"},
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
        {"<a></a b>", 1, 8, "not well-formed"},
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
        {"<a>x & y</a>", 1, 7, "not well-formed"},
        {"<a>&</a>", 1, 5, "not well-formed"},
        {"<a>&nbsp;</a>", 1, 4, "undefined entity"},
        {"<a>&#0;</a>", 1, 4, "reference to invalid character number"},
        {"<a>&#x110000;</a>", 1, 4, "reference to invalid character number"},
        {"<a>&#x;</a>", 1, 7, "not well-formed"},
        {"<a b='&no;'/>", 1, 1, "undefined entity"},
        {"<a b='x & y'/>", 1, 10, "not well-formed"},
    });
}

TEST(MalformedXml, CharactersThatXmlDoesNotAllow) {
    ExpectRefused({
        {"<a>\x01</a>", 1, 4, "not well-formed"},
        {"<a>ab\0cd</a>"s, 1, 6, "not well-formed"},
        {"\0"s, 1, 1, "not well-formed"},
        {"<a>\x80</a>", 1, 4, "not well-formed"},
        {"<a>\xC0\x80</a>", 1, 4, "not well-formed"},
        {"<a>\xED\xA0\x80</a>", 1, 4, "not well-formed"},
        {"<a>\xEF\xBF\xBF</a>", 1, 4, "not well-formed"},
        {"<a>\xC3", 1, 4, "partial character"},
        {"<a b='\xFF'/>", 1, 7, "not well-formed"},
    });
}

TEST(MalformedXml, CommentsInstructionsAndCdata) {
    ExpectRefused({
        {"<a><!-- x -- y --></a>", 1, 13, "not well-formed"},
        {"<a><!-- x", 1, 4, "unclosed token"},
        {"<a><![CDATA[x</a>", 1, 18, "unclosed CDATA section"},
        {"<a>]]></a>", 1, 6, "not well-formed"},
        {"<a><?x </a>", 1, 4, "unclosed token"},
        {"<a><?x</a>", 1, 7, "not well-formed"},
        {"<a><?xml version='1.0'?></a>", 1, 4, "XML or text declaration not at start of entity"},
        {"\n<?xml version='1.0'?><a/>", 2, 1, "XML or text declaration not at start of entity"},
    });
}

TEST(MalformedXml, DeclarationsAndDoctypes) {
    ExpectRefused({
        {"<!DOCTYPE a><a/>", 1, 3, "a DOCTYPE or another declaration is not allowed"},
        {"<!DOCTYPE a [<!ENTITY x 'y'>]><a>&x;</a>", 1, 3, "a DOCTYPE or another declaration"},
        {"<?xml version='1.0'?>\n<!DOCTYPE a>", 2, 3, "a DOCTYPE or another declaration"},
        {"<a>\n <!ELEMENT b ANY></a>", 2, 4, "a DOCTYPE or another declaration"},
        {"<a><![INCLUDE[x]]></a>", 1, 7, "not well-formed"},
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

TEST(MalformedXml, IsFoundFarBehindTheFirstChunk) {
    std::string xml = "<a>";
    for (int i = 0; i < 20000; ++i) {
        xml += "<b>line</b>\n";
    }
    ExpectRefused({{xml + "  & ", 20001, 4, "not well-formed"}});
}

TEST(MalformedXml, LeavesTheStreamUnusable) {
    TokenReader reader("<a>&</a>");
    reader.Next();
    EXPECT_TRUE(FailureOf([&] { reader.Next(); }));
    EXPECT_THROW(
        {
            try {
                reader.Next();
            } catch (CException* exception) {
                exception->Delete();
                throw std::runtime_error("refused");
            }
        },
        std::runtime_error);
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
    EXPECT_EQ(failure->column, 150001);
    EXPECT_THAT(failure->message, HasSubstr("elements are nested too deeply"));
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
    EXPECT_THAT(failure->message, HasSubstr("the input cannot be read"));
}

}  // namespace
