#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/platform/xmlstream/token_reader.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// The character data of the element that the text makes up, which must be one token.
std::string DataOf(const std::string& content) {
    const std::vector<std::string> tokens = TokensOf("<a>" + content + "</a>");
    if (tokens.size() != 3) {
        ADD_FAILURE() << testing::PrintToString(tokens);
        return "";
    }
    return tokens[1];
}

TEST(CharacterData, KeepsEscapesAsWritten) {
    EXPECT_EQ(DataOf("a &amp; b &lt;c&gt; &apos;&quot; &#x9;&#10;&#xa;"),
              "'a &amp; b &lt;c&gt; &apos;&quot; &#x9;&#10;&#xa;'");
}

TEST(CharacterData, KeepsLineEndsAsWritten) {
    EXPECT_EQ(DataOf("one\ntwo\r\nthree\rfour"), "'one\ntwo\r\nthree\rfour'");
}

TEST(CharacterData, KeepsBlanksAtBothEnds) {
    EXPECT_EQ(DataOf("  two words \t"), "'  two words \t'");
}

TEST(CharacterData, KeepsSquareBrackets) {
    EXPECT_EQ(DataOf("a]b]]c"), "'a]b]]c'");
}

TEST(CharacterData, DropsCommentsAndJoinsWhatTheyDivide) {
    EXPECT_EQ(DataOf("one<!-- two -->three"), "'onethree'");
}

TEST(CharacterData, DropsInstructionsAndJoinsWhatTheyDivide) {
    EXPECT_EQ(DataOf("one<?two x?>three"), "'onethree'");
}

TEST(CharacterData, TakesCdataAsItIs) {
    EXPECT_EQ(DataOf("<![CDATA[<b>&amp;</b> ]] ]]>"), "'<b>&amp;</b> ]] '");
}

TEST(CharacterData, JoinsCdataWithTheTextAroundIt) {
    EXPECT_EQ(DataOf("one<![CDATA[<two>]]>&lt;three<![CDATA[four]]>"), "'one<two>&lt;threefour'");
}

TEST(CharacterData, IsNoTokenWhenThereIsNone) {
    EXPECT_THAT(TokensOf("<a></a>"), ElementsAre("<a>", "</a>"));
    EXPECT_THAT(TokensOf("<a><!-- x --></a>"), ElementsAre("<a>", "</a>"));
    EXPECT_THAT(TokensOf("<a><![CDATA[]]></a>"), ElementsAre("<a>", "</a>"));
}

TEST(WhiteSpace, BetweenTagsIsNoToken) {
    EXPECT_THAT(
        TokensOf(" \n<a>\n  <b>x</b>\r\n\t<c/> <d>y</d>\n</a>\n"),
        ElementsAre("<a>", "<b>", "'x'", "</b>", "<c>", "</c>", "<d>", "'y'", "</d>", "</a>"));
}

TEST(WhiteSpace, ThatIsAllAnElementHoldsIsKept) {
    EXPECT_EQ(DataOf("   "), "'   '");
    EXPECT_EQ(DataOf("\r\n\t "), "'\r\n\t '");
}

TEST(WhiteSpace, ThatIsAllAnElementHoldsIsKeptAroundAComment) {
    EXPECT_EQ(DataOf(" <!-- x --> "), "'  '");
}

TEST(WhiteSpace, BetweenAnEndTagAndAnEndTagIsNoToken) {
    EXPECT_THAT(TokensOf("<a><b/> </a>"), ElementsAre("<a>", "<b>", "</b>", "</a>"));
}

TEST(WhiteSpace, BetweenTwoStartTagsIsNoToken) {
    EXPECT_THAT(TokensOf("<a> <b/></a>"), ElementsAre("<a>", "<b>", "</b>", "</a>"));
}

TEST(WhiteSpace, AroundTextBelongsToTheText) {
    EXPECT_THAT(TokensOf("<a> x <b/> y </a>"),
                ElementsAre("<a>", "' x '", "<b>", "</b>", "' y '", "</a>"));
}

TEST(WhiteSpace, WrittenAsAReferenceIsText) {
    EXPECT_THAT(TokensOf("<a><b/>&#x20;<b/></a>"),
                ElementsAre("<a>", "<b>", "</b>", "'&#x20;'", "<b>", "</b>", "</a>"));
}

TEST(WhiteSpace, BeyondAsciiIsText) {
    EXPECT_THAT(TokensOf("<a><b/>\xC2\xA0</a>"),
                ElementsAre("<a>", "<b>", "</b>", "'\xC2\xA0'", "</a>"));
}

TEST(WhiteSpace, AloneIsAnEmptyInput) {
    EXPECT_THAT(TokensOf(" \r\n\t"), IsEmpty());
}

TEST(CharData, GivesItsImageThroughAConverter) {
    class Twice : public XmlConverter {
      public:
        Obx_String Convert(const Obx_String& image) override { return image + image; }
    };
    Twice twice;
    EXPECT_EQ(XmlCharData(u"ab").GetImage(&twice), u"abab");
    EXPECT_EQ(XmlCharData(u"ab").GetImage(nullptr), u"ab");
}

TEST(CharData, KeepsItsImageUnlessItIsNotNeededAnyMore) {
    const XmlCharData data(u"ab");
    EXPECT_EQ(data.GetImage(nullptr), u"ab");
    EXPECT_EQ(data.GetImage(nullptr), u"ab");
}

}  // namespace
