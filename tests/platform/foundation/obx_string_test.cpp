#include "platform/foundation/obx_string.h"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

#include "tests/platform/printing.h"
#include "tests/platform/thrown_text.h"

namespace {

const char16_t* const kNull = nullptr;

TEST(ObxString, IsEmptyWhenMadeFromNothing) {
    EXPECT_TRUE(Obx_String().IsEmpty());
    EXPECT_TRUE(Obx_String(kNull).IsEmpty());
    EXPECT_TRUE(Obx_String(static_cast<const unsigned short*>(nullptr)).IsEmpty());
    EXPECT_TRUE(Obx_String(u"").IsEmpty());
}

TEST(ObxString, CopiesUnitsUpToTheTerminator) {
    const unsigned short units[] = {'a', 0x20AC, 0xD83D, 0xDEA2, 0, 'b'};
    EXPECT_EQ(Obx_String(units), u"a\u20ac\U0001F6A2");
}

TEST(ObxString, HandsItsTextOutTerminated) {
    Obx_String text(u"a\u20ac");
    const unsigned short* units = text.Units();
    EXPECT_EQ(units[0], 'a');
    EXPECT_EQ(units[1], 0x20AC);
    EXPECT_EQ(units[2], 0);
    EXPECT_EQ(text.GetString()[2], u'\0');
}

TEST(ObxString, ConvertsFromAndToUtf8) {
    EXPECT_EQ(Obx_String::FromUtf8("\xc3\xa9t\xc3\xa9"), u"\u00e9t\u00e9");
    EXPECT_EQ(Obx_String(u"\u00e9t\u00e9").ToUtf8(), "\xc3\xa9t\xc3\xa9");
}

TEST(ObxString, ReplacesWhatIsInvalidInAConversion) {
    EXPECT_EQ(Obx_String::FromUtf8("a\xff"), u"a\uFFFD");
    EXPECT_EQ(Obx_String(std::u16string{u'a', 0xD800}).ToUtf8(), "a\xef\xbf\xbd");
}

TEST(ObxString, CountsUnits) {
    EXPECT_EQ(Obx_String(u"a\U0001F6A2").GetLength(), 3);
}

TEST(ObxString, ForgetsItsTextWhenEmptied) {
    Obx_String text(u"abc");
    text.Empty();
    EXPECT_TRUE(text.IsEmpty());
    EXPECT_EQ(text, u"");
}

TEST(ObxString, Appends) {
    Obx_String text(u"a");
    text += Obx_String(u"b");
    text += u"c";
    text += u'd';
    text += kNull;
    text += text;
    EXPECT_EQ(text, u"abcdabcd");
}

TEST(ObxString, JoinsStringsAndLiterals) {
    const Obx_String b(u"b");
    EXPECT_EQ(Obx_String(u"a") + b, u"ab");
    EXPECT_EQ(b + u"c", u"bc");
    EXPECT_EQ(u"a" + b, u"ab");
}

TEST(ObxString, ComparesExactly) {
    EXPECT_TRUE(Obx_String(u"abc") == Obx_String(u"abc"));
    EXPECT_TRUE(Obx_String(u"abc") != u"Abc");
    EXPECT_TRUE(Obx_String(u"") == kNull);
    EXPECT_TRUE(Obx_String(u"a") != kNull);
    EXPECT_TRUE(Obx_String(u"a") < Obx_String(u"b"));
    EXPECT_TRUE(Obx_String(u"a") < Obx_String(u"aa"));
}

TEST(ObxString, EqualStringsHashEqually) {
    const std::hash<Obx_String> hash;
    EXPECT_EQ(hash(Obx_String(u"abc")), hash(Obx_String(std::u16string(u"abc"))));
}

struct SameText {
    const char16_t* a;
    const char16_t* b;
};

TEST(ObxStringCompareNoCase, FoldsCaseFully) {
    const SameText cases[] = {
        {u"", u""},
        {u"Source_ID", u"sOURCE_id"},
        {u"Stra\u00dfe", u"STRASSE"},
        {u"\u00c9T\u00c9", u"\u00e9t\u00e9"},
        {u"\u03a3\u0399\u03a3\u03a5\u03a6\u039f\u03a3",
         u"\u03c3\u03b9\u03c3\u03c5\u03c6\u03bf\u03c2"},
        {u"\u0130", u"i\u0307"},
        {u"K", u"\u212a"},
        {u"\U00010400", u"\U00010428"},
        {u"\ufb03", u"FFI"},
    };
    for (const SameText& pair : cases) {
        EXPECT_EQ(Obx_String(pair.a).CompareNoCase(pair.b), 0) << Obx_String(pair.a).ToUtf8();
        EXPECT_EQ(Obx_String(pair.b).CompareNoCase(Obx_String(pair.a)), 0)
            << Obx_String(pair.b).ToUtf8();
    }
}

TEST(ObxStringCompareNoCase, TellsDifferentTextsApart) {
    const SameText cases[] = {
        {u"a", u"b"},
        {u"a", u"ab"},
        {u"", u"a"},
        {u"@", u"`"},
        {u"[", u"{"},
        {u"i", u"\u0130"},
        {u"i", u"\u0131"},
        {u"\u00e9", u"e\u0301"},
        {u"strass", u"stra\u00dfe"},
    };
    for (const SameText& pair : cases) {
        const Obx_String a(pair.a);
        const Obx_String b(pair.b);
        EXPECT_NE(a.CompareNoCase(b), 0) << b.ToUtf8();
        EXPECT_EQ(a.CompareNoCase(b) < 0, b.CompareNoCase(a) > 0) << a.ToUtf8();
    }
}

TEST(ObxStringCompareNoCase, OrdersByTheFoldedText) {
    EXPECT_LT(Obx_String(u"ALPHA").CompareNoCase(u"beta"), 0);
    EXPECT_GT(Obx_String(u"beta").CompareNoCase(u"ALPHA"), 0);
    EXPECT_LT(Obx_String(u"alpha").CompareNoCase(u"ALPHA1"), 0);
    EXPECT_LT(Obx_String(u"Zoo").CompareNoCase(u"\u00c9t\u00e9"), 0);
}

TEST(ObxString, TrimsWhiteSpaceFromOneEnd) {
    Obx_String left(u" \t\u00a0a b \n");
    left.TrimLeft();
    EXPECT_EQ(left, u"a b \n");
    Obx_String right(u" a b \n\u3000");
    right.TrimRight();
    EXPECT_EQ(right, u" a b");
}

TEST(ObxString, TrimsNothingButWhiteSpaceToNothing) {
    Obx_String left(u" \n ");
    left.TrimLeft();
    EXPECT_TRUE(left.IsEmpty());
    Obx_String right(u" \n ");
    right.TrimRight();
    EXPECT_TRUE(right.IsEmpty());
}

TEST(ObxStringMid, GivesThePartInsideTheString) {
    const Obx_String text(u"abcdef");
    EXPECT_EQ(text.Mid(2), u"cdef");
    EXPECT_EQ(text.Mid(2, 3), u"cde");
    EXPECT_EQ(text.Mid(0, 6), u"abcdef");
}

TEST(ObxStringMid, LeavesOutWhatLiesOutside) {
    const Obx_String text(u"abc");
    EXPECT_EQ(text.Mid(3), u"");
    EXPECT_EQ(text.Mid(9), u"");
    EXPECT_EQ(text.Mid(-1), u"abc");
    EXPECT_EQ(text.Mid(1, 9), u"bc");
    EXPECT_EQ(text.Mid(1, -1), u"");
    EXPECT_EQ(text.Mid(1, std::numeric_limits<int>::max()), u"bc");
}

struct Search {
    std::u16string text;
    std::u16string what;
    int start;
    int found;
};

TEST(ObxStringFind, GivesTheFirstOccurrence) {
    const Search cases[] = {
        {u"abcabc", u"bc", 0, 1},
        {u"abcabc", u"bc", 2, 4},
        {u"abcabc", u"x", 0, -1},
        {u"abc", u"abcd", 0, -1},
        {u"aab", u"ab", 0, 1},
        {u"abc", u"c", 2, 2},
        {u"abc", u"c", 3, -1},
        {u"abc", u"a", -5, 0},
        {u"abc", u"a", 99, -1},
        {u"abc", u"", 1, 1},
        {u"abc", u"", 3, 3},
        {u"abc", u"", 4, -1},
        {u"", u"a", 0, -1},
        // Units that hold the byte that is searched for, in their other half or with another half.
        {u"\u2600\u2026&", u"&", 0, 2},
        {u"\u2626\u0126&", u"&", 0, 2},
        {u"&\u0126", u"\u0126", 0, 1},
        {u"a\u6100\u0061", u"\u6100", 0, 1},
        {u"\u0126\u0126", u"&", 0, -1},
    };
    for (const Search& search : cases) {
        EXPECT_EQ(Obx_String(search.text).Find(search.what, search.start), search.found)
            << Obx_String(search.text).ToUtf8() << " / " << Obx_String(search.what).ToUtf8()
            << " from " << search.start;
    }
}

TEST(ObxStringFind, FindsAUnitThatStandsAnywhere) {
    for (int length = 1; length < 40; ++length) {
        for (int at = 0; at < length; ++at) {
            std::u16string text(static_cast<std::size_t>(length), u'\u2601');
            text[static_cast<std::size_t>(at)] = u'&';
            ASSERT_EQ(Obx_String(text).Find(u"&"), at) << length;
        }
    }
}

TEST(ObxStringFormat, PutsTextsAndIntegersInPlace) {
    Obx_String text;
    text.Format(u"%s has %d of %d%% (%s)", Obx_String(u"caf\u00e9"), -3, 70L, u"x");
    EXPECT_EQ(text, u"caf\u00e9 has -3 of 70% (x)");
}

TEST(ObxStringFormat, TakesTheWidestIntegers) {
    Obx_String text;
    text.Format(u"%d %d", std::numeric_limits<long long>::min(),
                std::numeric_limits<long long>::max());
    EXPECT_EQ(text, u"-9223372036854775808 9223372036854775807");
}

TEST(ObxStringFormat, TakesANullTextAsEmpty) {
    Obx_String text;
    text.Format(u"<%s>", kNull);
    EXPECT_EQ(text, u"<>");
}

TEST(ObxStringFormat, MayUseTheStringItReplaces) {
    Obx_String text(u"a");
    text.Format(u"%s%s", text, text);
    EXPECT_EQ(text, u"aa");
}

TEST(ObxStringFormat, LooksAtNoValueForPlaces) {
    Obx_String text;
    text.Format(u"%s", u"100 %d");
    EXPECT_EQ(text, u"100 %d");
}

TEST(ObxStringFormat, WithoutArgumentsGivesTheFormat) {
    Obx_String text(u"former");
    text.Format(u"100%%");
    EXPECT_EQ(text, u"100%");
}

TEST(ObxStringFormat, RefusesAFormatThatDoesNotFitItsArguments) {
    Obx_String text(u"kept");
    EXPECT_EQ(ThrownText([&] { text.Format(u"%d", u"a"); }),
              "The format \"%d\" does not fit its arguments");
    EXPECT_EQ(ThrownText([&] { text.Format(u"%s", 1); }),
              "The format \"%s\" does not fit its arguments");
    EXPECT_EQ(ThrownText([&] { text.Format(u"%s %s", u"a"); }),
              "The format \"%s %s\" does not fit its arguments");
    EXPECT_EQ(ThrownText([&] { text.Format(u"%x", 1); }),
              "The format \"%x\" does not fit its arguments");
    EXPECT_EQ(ThrownText([&] { text.Format(u"100%"); }),
              "The format \"100%\" does not fit its arguments");
    EXPECT_EQ(ThrownText([&] { text.Format(u"none", 1); }),
              "The format \"none\" has more arguments than places");
    EXPECT_EQ(text, u"kept");
}

}  // namespace
