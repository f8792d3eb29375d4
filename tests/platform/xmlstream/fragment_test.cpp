#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/platform/xmlstream/token_reader.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(Fragment, MayHoldSeveralTopLevelElements) {
    EXPECT_THAT(TokensOf("<a/>\n<b>x</b>\n"), ElementsAre("<a>", "</a>", "<b>", "'x'", "</b>"));
}

TEST(Fragment, MayBeginWithText) {
    EXPECT_THAT(TokensOf("hello <a/>"), ElementsAre("'hello '", "<a>", "</a>"));
}

TEST(Fragment, MayBeginWithTheTailOfACutDeclaration) {
    EXPECT_THAT(TokensOf("\"?>\n<a/>"), ElementsAre("'\"?>\n'", "<a>", "</a>"));
    EXPECT_THAT(TokensOf("F-8\"?><a/>"), ElementsAre("'F-8\"?>'", "<a>", "</a>"));
}

TEST(Fragment, MayBeginWithCdata) {
    EXPECT_THAT(TokensOf("<![CDATA[<x>]]><a/>"), ElementsAre("'<x>'", "<a>", "</a>"));
}

// The rest of a cut character: that of one of two bytes, of three, of four.
TEST(Fragment, MayBeginWithinACharacter) {
    EXPECT_THAT(TokensOf("\xBC<a/>"), ElementsAre("'\uFFFD'", "<a>", "</a>"));
    EXPECT_THAT(TokensOf("\x82\xAC uro<a/>"), ElementsAre("'\uFFFD uro'", "<a>", "</a>"));
    EXPECT_THAT(TokensOf("\x9F\x8C\x8A\xC3\xBC<a/>"), ElementsAre("'\uFFFD\u00FC'", "<a>", "</a>"));
    EXPECT_THAT(TokensOf("\xBC"), ElementsAre("'\uFFFD'"));
}

TEST(Fragment, MayBeTextAlone) {
    EXPECT_THAT(TokensOf("no tags at all"), ElementsAre("'no tags at all'"));
    EXPECT_THAT(TokensOf("ends in ]"), ElementsAre("'ends in ]'"));
    EXPECT_THAT(TokensOf("ends in a line end\r"), ElementsAre("'ends in a line end\r'"));
}

TEST(Fragment, MayEndWithText) {
    EXPECT_THAT(TokensOf("<a/> bye "), ElementsAre("<a>", "</a>", "' bye '"));
}

TEST(Fragment, MayNameItsElementsLikeTheSyntheticRoot) {
    EXPECT_THAT(TokensOf("<fragment>x</fragment><fragment/>"),
                ElementsAre("<fragment>", "'x'", "</fragment>", "<fragment>", "</fragment>"));
}

TEST(Prolog, StepsOverADeclarationOfAnyForm) {
    for (const char* declaration : {
             R"(<?xml version="1.0" encoding="UTF-8"?>)",
             R"(<?xml version='1.0'?>)",
             R"(<?xml version="1.0" encoding="ISO-8859-1" standalone="yes"?>)",
             "<?xml\n version='1.1'\n?>\n",
         }) {
        EXPECT_THAT(TokensOf(std::string(declaration) + "<a>\xC3\xBC</a>"),
                    ElementsAre("<a>", "'\xC3\xBC'", "</a>"))
            << declaration;
    }
}

TEST(Prolog, MayBeAllThereIs) {
    EXPECT_THAT(TokensOf("<?xml version='1.0'?>"), IsEmpty());
}

TEST(Prolog, StepsOverAByteOrderMark) {
    EXPECT_THAT(TokensOf("\xEF\xBB\xBF<a/>"), ElementsAre("<a>", "</a>"));
    EXPECT_THAT(TokensOf("\xEF\xBB\xBF<?xml version='1.0'?><a/>"), ElementsAre("<a>", "</a>"));
    EXPECT_THAT(TokensOf("\xEF\xBB\xBF<a>x</a>"), ElementsAre("<a>", "'x'", "</a>"));
    EXPECT_THAT(TokensOf("\xEF\xBB\xBF\n <a>x</a>"), ElementsAre("<a>", "'x'", "</a>"));
    EXPECT_THAT(TokensOf("<a>\xEF\xBB\xBF</a>"), ElementsAre("<a>", "'\xEF\xBB\xBF'", "</a>"));
}

TEST(Prolog, DoesNotTakeAnotherInstructionForADeclaration) {
    EXPECT_THAT(TokensOf("<?xml-stylesheet href='x'?><a/>"), ElementsAre("<a>", "</a>"));
    EXPECT_THAT(TokensOf("<?xmlish x?>text"), ElementsAre("'text'"));
}

}  // namespace
