#include "platform/xmlstream/ixmlstream.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <sstream>
#include <utility>
#include <vector>

#include "tests/platform/xmlstream/token_reader.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(XmlStream, DeliversTagsAndTextInOrder) {
    EXPECT_THAT(TokensOf("<a><b>one</b><c>two</c></a>"),
                ElementsAre("<a>", "<b>", "'one'", "</b>", "<c>", "'two'", "</c>", "</a>"));
}

TEST(XmlStream, DeliversAnEmptyElementAsTwoTags) {
    EXPECT_THAT(TokensOf("<a/>"), ElementsAre("<a>", "</a>"));
}

TEST(XmlStream, DeliversTheTextBeforeAnEmptyElementFirst) {
    EXPECT_THAT(TokensOf("<a>one<b/>two</a>"),
                ElementsAre("<a>", "'one'", "<b>", "</b>", "'two'", "</a>"));
}

TEST(XmlStream, DeliversNothingOfAnEmptyInput) {
    EXPECT_THAT(TokensOf(""), IsEmpty());
}

TEST(XmlStream, StaysAtTheEnd) {
    TokenReader reader("<a/>");
    reader.Rest();
    EXPECT_EQ(reader.Xml().GetNextTokenType(), IXmlStream::kEnd);
    EXPECT_EQ(reader.Xml().GetNextTokenType(), IXmlStream::kEnd);
}

TEST(XmlStream, TellsTheTypeWithoutTakingTheToken) {
    TokenReader reader("<a>text</a>");
    EXPECT_EQ(reader.Xml().GetNextTokenType(), 0);
    EXPECT_EQ(reader.Xml().GetNextTokenType(), 0);
    EXPECT_EQ(reader.Next(), "<a>");
    EXPECT_EQ(reader.Xml().GetNextTokenType(), 2);
    EXPECT_EQ(reader.Next(), "'text'");
    EXPECT_EQ(reader.Xml().GetNextTokenType(), 1);
}

TEST(XmlStream, TellsTheNameOfATagWithoutTakingIt) {
    TokenReader reader("<Title/>");
    Obx_String name;
    EXPECT_EQ(reader.Xml().GetNextTokenName(name), 1);
    EXPECT_EQ(name, u"Title");
    EXPECT_EQ(reader.Next(), "<Title>");
    name.Empty();
    EXPECT_EQ(reader.Xml().GetNextTokenName(name), 1);
    EXPECT_EQ(name, u"Title");
    EXPECT_EQ(reader.Next(), "</Title>");
}

TEST(XmlStream, TellsNoNameOfCharacterData) {
    TokenReader reader("text");
    Obx_String name = u"kept";
    EXPECT_EQ(reader.Xml().GetNextTokenName(name), 0);
    EXPECT_EQ(name, u"kept");
}

TEST(XmlStream, TellsNoNameAtTheEnd) {
    TokenReader reader("");
    Obx_String name = u"kept";
    EXPECT_EQ(reader.Xml().GetNextTokenName(name), 0);
    EXPECT_EQ(name, u"kept");
}

TEST(XmlStream, KeepsNamesBeyondAscii) {
    EXPECT_THAT(TokensOf("<größe>\xF0\x9F\x8C\x8A</größe>"),
                ElementsAre("<größe>", "'\xF0\x9F\x8C\x8A'", "</größe>"));
}

TEST(XmlStream, DoesNotTakeNamespacesApart) {
    EXPECT_THAT(TokensOf("<x:a xmlns:x='urn:x'/>"), ElementsAre("<x:a>", "</x:a>"));
}

TEST(XmlStream, RefusesAnotherTokenThanTheNextOne) {
    TokenReader reader("<a>text</a>");
    XmlETag endTag;
    const auto failure = FailureOf([&] { reader.Xml() >> endTag; });
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->code, XmlException::Code::kUnexpectedToken);
    EXPECT_EQ(failure->message, "XML, line 1, column 4: expected an end tag, found a start tag");
    EXPECT_THAT(reader.Rest(), ElementsAre("<a>", "'text'", "</a>"));
}

TEST(XmlStream, RefusesToTakeATokenAtTheEnd) {
    TokenReader reader("");
    XmlCharData data;
    const auto failure = FailureOf([&] { reader.Xml() >> data; });
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->message, "XML, line 1, column 1: expected character data, found the end");
}

// Text is complete only when the tag after it is known.
TEST(XmlStream, TellsThePlaceAfterTheTagThatEndsTextWhichWasNotExpected) {
    TokenReader reader("<a>\n text</a>");
    EXPECT_EQ(reader.Next(), "<a>");
    XmlSTag tag;
    const auto failure = FailureOf([&] { reader.Xml() >> tag; });
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->message,
              "XML, line 2, column 10: expected a start tag, found character data");
    EXPECT_THAT(reader.Rest(), ElementsAre("'\n text'", "</a>"));
}

TEST(XmlStream, RefusesItsReservedFlags) {
    std::istringstream input("<a/>");
    for (const auto& [validate, expand] : {std::pair(true, false), std::pair(false, true)}) {
        try {
            IXmlStream xml(input, validate, expand);
            ADD_FAILURE() << "no exception";
        } catch (CException* exception) {
            exception->Delete();
        }
    }
}

TEST(XmlStream, ReadsAttributesWithTheirValuesDecoded) {
    TokenReader reader(R"(<a name="x &amp; &quot;y&quot; &#65;&#xA;z" other='it"s'/>)");
    reader.Next();
    EXPECT_EQ(reader.Attribute(u"name"), "x & \"y\" A\nz");
    EXPECT_EQ(reader.Attribute(u"other"), "it\"s");
}

TEST(XmlStream, ReadsLineEndsWithinAnAttributeAsBlanks) {
    TokenReader reader("<a name='one\ntwo\r\nthree\tfour'/>");
    reader.Next();
    EXPECT_EQ(reader.Attribute(u"name"), "one two three four");
}

TEST(XmlStream, ReadsAMissingAttributeAsEmptyText) {
    TokenReader reader("<a name='x'/>");
    reader.Next();
    EXPECT_EQ(reader.Attribute(u"Name"), "");
    EXPECT_EQ(reader.Attribute(u"other"), "");
}

TEST(XmlStream, KeepsSeveralStreamsApart) {
    TokenReader first("<a>1</a>");
    EXPECT_EQ(first.Next(), "<a>");
    {
        TokenReader second("<b>2</b>");
        EXPECT_EQ(second.Next(), "<b>");
        EXPECT_EQ(first.Next(), "'1'");
        EXPECT_EQ(second.Next(), "'2'");
    }
    TokenReader third("<c/>");
    EXPECT_THAT(third.Rest(), ElementsAre("<c>", "</c>"));
    EXPECT_THAT(first.Rest(), ElementsAre("</a>"));
}

TEST(XmlStream, ReadsCleanlyAfterAStreamThatFailed) {
    for (const char* broken : {"<a><b", "<a></b>", "<!DOCTYPE a>", "<a>&no;</a>"}) {
        EXPECT_TRUE(FailureOf([&] { TokensOf(broken); })) << broken;
        EXPECT_THAT(TokensOf("<c>3</c>"), ElementsAre("<c>", "'3'", "</c>"));
    }
}

// One more stream than parsers are kept for, so that some are made anew and some reused.
TEST(XmlStream, ServesManyStreamsAtATime) {
    std::vector<std::unique_ptr<TokenReader>> readers;
    for (int round = 0; round < 2; ++round) {
        for (int i = 0; i < 9; ++i) {
            readers.push_back(std::make_unique<TokenReader>("<a>text</a>"));
            EXPECT_EQ(readers.back()->Next(), "<a>");
        }
        for (const auto& reader : readers) {
            EXPECT_THAT(reader->Rest(), ElementsAre("'text'", "</a>"));
        }
        readers.clear();
    }
}

}  // namespace
