#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <list>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "platform/core/adtext.h"
#include "tests/ztimporter/map_pairs.h"
#include "ztimporter/importrecordparser.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

std::string UnEscape(const char16_t* text) {
    return AdImportRecordParser().UnEscape(text).ToUtf8();
}

TEST(Unescaping, ReplacesTheEightEscapes) {
    EXPECT_EQ(UnEscape(u"&amp;|&lt;|&gt;|&apos;|&quot;|&#x9;|&#xA;|&#xD;"), "&|<|>|'|\"|\t|\n|\r");
}

TEST(Unescaping, ReplacesEveryOccurrence) {
    EXPECT_EQ(UnEscape(u"a&lt;b&lt;&lt;c&amp;&amp;"), "a<b<<c&&");
}

TEST(Unescaping, DecodesWhatWasEscapedTwiceTwice) {
    EXPECT_EQ(UnEscape(u"&amp;lt;&amp;#xA;"), "<\n");
}

TEST(Unescaping, DecodesAnAmpersandOnce) {
    EXPECT_EQ(UnEscape(u"&amp;amp;"), "&amp;");
    EXPECT_EQ(UnEscape(u"&amp;amp;lt;"), "&amp;lt;");
}

TEST(Unescaping, LeavesOtherReferencesAlone) {
    EXPECT_EQ(UnEscape(u"&#10;&#xa;&#x0A;&LT;&nbsp;&lt &;&"), "&#10;&#xa;&#x0A;&LT;&nbsp;&lt &;&");
}

TEST(Unescaping, LeavesTextWithoutEscapesAlone) {
    EXPECT_EQ(UnEscape(u""), "");
    EXPECT_EQ(UnEscape(u"plain"), "plain");
}

TEST(Unescaping, EqualsTheReplacementOfOneEscapeAfterTheOther) {
    const std::vector<std::pair<const char16_t*, const char16_t*>> escapes = {
        {u"&amp;", u"&"},   {u"&lt;", u"<"},   {u"&gt;", u">"},   {u"&apos;", u"'"},
        {u"&quot;", u"\""}, {u"&#x9;", u"\t"}, {u"&#xA;", u"\n"}, {u"&#xD;", u"\r"}};
    std::vector<const char16_t*> pieces = {u"&", u";", u"amp;", u"lt;", u"#x", u"9;", u"x", u"#xA"};
    for (const auto& [escape, character] : escapes) {
        pieces.push_back(escape);
    }
    constexpr unsigned kSeed = 20240229;
    std::mt19937 random(kSeed);
    for (int i = 0; i < 5000; ++i) {
        Obx_String text;
        for (auto count = random() % 8; count > 0; --count) {
            text += pieces[random() % pieces.size()];
        }
        Obx_String expected = text;
        for (const auto& [escape, character] : escapes) {
            AdReplaceString(expected, escape, character);
        }
        ASSERT_EQ(AdImportRecordParser().UnEscape(text), expected)
            << text.ToUtf8() << ", seed " << kSeed;
    }
}

std::vector<std::string> Split(const char16_t* value) {
    CStringArray items;
    items.Add(u"former");
    const int count = AdImportRecordParser().SplitReferenceListValue(value, items);
    EXPECT_EQ(count, items.GetSize());
    std::vector<std::string> texts;
    for (const Obx_String& item : items) {
        texts.push_back(item.ToUtf8());
    }
    return texts;
}

TEST(ReferenceList, IsSplitAtCommas) {
    EXPECT_THAT(Split(u"a,b,c"), ElementsAre("a", "b", "c"));
    EXPECT_THAT(Split(u"a"), ElementsAre("a"));
}

TEST(ReferenceList, KeepsEmptyItemsExceptTheLast) {
    EXPECT_THAT(Split(u"a,,b"), ElementsAre("a", "", "b"));
    EXPECT_THAT(Split(u",a"), ElementsAre("", "a"));
    EXPECT_THAT(Split(u"a,"), ElementsAre("a"));
    EXPECT_THAT(Split(u","), ElementsAre(""));
}

TEST(ReferenceList, KeepsBlanks) {
    EXPECT_THAT(Split(u" a , b "), ElementsAre(" a ", " b "));
    EXPECT_THAT(Split(u"  , \t"), ElementsAre("  ", " \t"));
}

TEST(ReferenceList, OfAnEmptyValueIsEmpty) {
    EXPECT_THAT(Split(u""), IsEmpty());
}

// The entries as pairs; frees the maps.
std::vector<Pairs> TakeEntries(const std::list<CMapStringToString*>& entries) {
    std::vector<Pairs> taken;
    for (const CMapStringToString* entry : entries) {
        taken.push_back(PairsOf(*entry));
        delete entry;
    }
    return taken;
}

std::vector<Pairs> HistoryEntries(const char16_t* value) {
    return TakeEntries(AdImportRecordParser().ExtractHistoryData(value));
}

TEST(HistoryData, GivesOneEntryALineWithAKeyAColumn) {
    EXPECT_THAT(
        HistoryEntries(u"7\t2020-01-02\tann\tSubmit\tNew\tOpen\n8\t\tbob\tClose\tOpen\tClosed"),
        ElementsAre(ElementsAre(Pair("dbid", "7"), Pair("action_timestamp", "2020-01-02"),
                                Pair("user_name", "ann"), Pair("action_name", "Submit"),
                                Pair("old_state", "New"), Pair("new_state", "Open")),
                    ElementsAre(Pair("dbid", "8"), Pair("action_timestamp", ""),
                                Pair("user_name", "bob"), Pair("action_name", "Close"),
                                Pair("old_state", "Open"), Pair("new_state", "Closed"))));
}

TEST(HistoryData, DropsALineOfSevenColumnsOrMore) {
    EXPECT_THAT(HistoryEntries(u"1\t2\t3\t4\t5\t6\tcomment"), IsEmpty());
    EXPECT_THAT(HistoryEntries(u"1\t2\t3\t4\t5\t6\t"), IsEmpty());
    EXPECT_THAT(HistoryEntries(u"1\t2\t3\t4\t5\t6\t7\t8\n9"),
                ElementsAre(ElementsAre(Pair("dbid", "9"))));
}

TEST(HistoryData, GivesAShortLineTheFirstKeys) {
    EXPECT_THAT(HistoryEntries(u"1\t2"),
                ElementsAre(ElementsAre(Pair("dbid", "1"), Pair("action_timestamp", "2"))));
}

TEST(HistoryData, GivesAnEmptyLineAnEmptyEntry) {
    EXPECT_THAT(HistoryEntries(u"1\n\n2"), ElementsAre(ElementsAre(Pair("dbid", "1")), IsEmpty(),
                                                       ElementsAre(Pair("dbid", "2"))));
}

TEST(HistoryData, OfAnEmptyValueIsEmpty) {
    EXPECT_THAT(HistoryEntries(u""), IsEmpty());
}

std::vector<Pairs> AttachmentEntries(const char16_t* value) {
    return TakeEntries(AdImportRecordParser().ExtractAttachmentData(value));
}

TEST(AttachmentData, GivesOneEntryForFourLines) {
    EXPECT_THAT(AttachmentEntries(u"1\na.txt\n10\nfirst\n2\nb.txt\n20\nsecond"),
                ElementsAre(ElementsAre(Pair("dbid", "1"), Pair("filename", "a.txt"),
                                        Pair("filesize", "10"), Pair("description", "first")),
                            ElementsAre(Pair("dbid", "2"), Pair("filename", "b.txt"),
                                        Pair("filesize", "20"), Pair("description", "second"))));
}

TEST(AttachmentData, DropsAnIncompleteLastEntry) {
    EXPECT_THAT(AttachmentEntries(u"1\na.txt\n10\nfirst\n2\nb.txt\n20"),
                ElementsAre(ElementsAre(Pair("dbid", "1"), Pair("filename", "a.txt"),
                                        Pair("filesize", "10"), Pair("description", "first"))));
    EXPECT_THAT(AttachmentEntries(u"1"), IsEmpty());
}

TEST(AttachmentData, CountsEmptyLines) {
    EXPECT_THAT(AttachmentEntries(u"\na.txt\n\n\n"),
                ElementsAre(ElementsAre(Pair("dbid", ""), Pair("filename", "a.txt"),
                                        Pair("filesize", ""), Pair("description", ""))));
}

TEST(AttachmentData, OfAnEmptyValueIsEmpty) {
    EXPECT_THAT(AttachmentEntries(u""), IsEmpty());
}

}  // namespace
