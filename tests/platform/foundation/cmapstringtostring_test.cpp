#include "platform/foundation/cmapstringtostring.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "tests/platform/printing.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

Obx_String Numbered(const char16_t* word, int number) {
    Obx_String text;
    text.Format(u"%s%d", word, number);
    return text;
}

// The entries in the walk's order, each as "key=value".
std::vector<std::string> Entries(const CMapStringToString& map) {
    std::vector<std::string> entries;
    Obx_String key;
    Obx_String value;
    for (CMapStringToString::Position position = map.GetStartPosition(); position != nullptr;) {
        map.GetNextAssoc(position, key, value);
        entries.push_back((key + u"=" + value).ToUtf8());
    }
    return entries;
}

// The value under the key, or "none".
Obx_String ValueOf(const CMapStringToString& map, const Obx_String& key) {
    Obx_String value(u"none");
    map.Lookup(key, value);
    return value;
}

TEST(CMapStringToString, IsEmptyAtFirst) {
    CMapStringToString map;
    EXPECT_TRUE(map.IsEmpty());
    EXPECT_EQ(map.GetCount(), 0);
    EXPECT_EQ(map.GetStartPosition(), nullptr);
}

TEST(CMapStringToString, FindsWhatWasSet) {
    CMapStringToString map;
    map.SetAt(u"title", u"rust");
    Obx_String value;
    EXPECT_TRUE(map.Lookup(u"title", value));
    EXPECT_EQ(value, u"rust");
}

TEST(CMapStringToString, ShowsAValueInItsPlace) {
    CMapStringToString map;
    map.SetAt(u"title", u"rust");
    ASSERT_NE(map.Find(u"title"), nullptr);
    EXPECT_EQ(*map.Find(u"title"), u"rust");
    EXPECT_EQ(map.Find(u"Title"), nullptr);
}

TEST(CMapStringToString, TakesAValueOver) {
    CMapStringToString map;
    map.SetAt(u"title", u"rust");
    Obx_String value(u"a text that is too long to stand in the string itself");
    const char16_t* const units = value.GetString();
    map.SetAt(u"title", std::move(value));
    EXPECT_EQ(map.Find(u"title")->GetString(), units);
    EXPECT_EQ(map.GetCount(), 1);
}

TEST(CMapStringToString, LeavesTheValueOfAMissingKeyAlone) {
    CMapStringToString map;
    map.SetAt(u"title", u"rust");
    Obx_String value(u"former");
    EXPECT_FALSE(map.Lookup(u"Title", value));
    EXPECT_EQ(value, u"former");
}

TEST(CMapStringToString, HoldsEmptyKeysAndValues) {
    CMapStringToString map;
    map.SetAt(u"", u"");
    Obx_String value(u"former");
    EXPECT_TRUE(map.Lookup(u"", value));
    EXPECT_EQ(value, u"");
    EXPECT_EQ(map.GetCount(), 1);
}

TEST(CMapStringToString, WalksInTheOrderInWhichKeysWereSet) {
    CMapStringToString map;
    map.SetAt(u"c", u"1");
    map.SetAt(u"a", u"2");
    map.SetAt(u"b", u"3");
    EXPECT_THAT(Entries(map), ElementsAre("c=1", "a=2", "b=3"));
}

TEST(CMapStringToString, AReplacedValueKeepsItsPlace) {
    CMapStringToString map;
    map.SetAt(u"a", u"1");
    map.SetAt(u"b", u"2");
    map.SetAt(u"a", u"3");
    EXPECT_EQ(map.GetCount(), 2);
    EXPECT_THAT(Entries(map), ElementsAre("a=3", "b=2"));
}

TEST(CMapStringToString, ARemovedKeyThatIsSetAgainComesLast) {
    CMapStringToString map;
    map.SetAt(u"a", u"1");
    map.SetAt(u"b", u"2");
    EXPECT_TRUE(map.RemoveKey(u"a"));
    EXPECT_EQ(ValueOf(map, u"a"), u"none");
    map.SetAt(u"a", u"3");
    EXPECT_THAT(Entries(map), ElementsAre("b=2", "a=3"));
}

TEST(CMapStringToString, RemovingAMissingKeyChangesNothing) {
    CMapStringToString map;
    map.SetAt(u"a", u"1");
    EXPECT_FALSE(map.RemoveKey(u"b"));
    EXPECT_THAT(Entries(map), ElementsAre("a=1"));
}

TEST(CMapStringToString, IsEmptyAfterRemoveAll) {
    CMapStringToString map;
    map.SetAt(u"a", u"1");
    map.RemoveAll();
    EXPECT_TRUE(map.IsEmpty());
    EXPECT_EQ(ValueOf(map, u"a"), u"none");
    EXPECT_THAT(Entries(map), IsEmpty());
}

TEST(CMapStringToString, HoldsNothingOfTheFormerFilling) {
    CMapStringToString map;
    map.SetAt(u"a", u"a long value of the former filling");
    map.SetAt(u"b", u"2");
    map.RemoveAll();
    map.SetAt(u"c", u"3");
    EXPECT_EQ(ValueOf(map, u"b"), u"none");
    EXPECT_THAT(Entries(map), ElementsAre("c=3"));
}

TEST(CMapStringToString, TakesHugeTextsAgainAndAgain) {
    CMapStringToString map;
    const Obx_String huge(std::u16string(100000, u'x'));
    for (int filling = 0; filling < 3; ++filling) {
        map.SetAt(huge, huge);
        EXPECT_EQ(ValueOf(map, huge), huge);
        map.RemoveAll();
        EXPECT_EQ(ValueOf(map, huge), u"none");
    }
}

// The walk must go on undisturbed when the entry that it has just returned is removed, in a map
// without and in one with an index.
class CMapStringToStringOfSize : public testing::TestWithParam<int> {
  protected:
    void SetUp() override {
        for (int i = 0; i < GetParam(); ++i) {
            m_map.SetAt(Numbered(u"key", i), Numbered(u"value", i));
        }
    }

    // Walks through the map, removes the entries that `removes` picks by their number in it, and
    // gives the keys that the walk returned.
    template <typename Picker>
    std::vector<std::string> WalkAndRemove(Picker removes) {
        std::vector<std::string> keys;
        Obx_String key;
        Obx_String value;
        for (auto position = m_map.GetStartPosition(); position != nullptr;) {
            m_map.GetNextAssoc(position, key, value);
            if (removes(static_cast<int>(keys.size()))) {
                EXPECT_TRUE(m_map.RemoveKey(key));
            }
            keys.push_back(key.ToUtf8());
        }
        return keys;
    }

    std::vector<std::string> AllKeys() const {
        std::vector<std::string> keys;
        for (int i = 0; i < GetParam(); ++i) {
            keys.push_back(Numbered(u"key", i).ToUtf8());
        }
        return keys;
    }

    CMapStringToString m_map;
};

TEST_P(CMapStringToStringOfSize, FindsEachKey) {
    EXPECT_EQ(m_map.GetCount(), GetParam());
    for (int i = 0; i < GetParam(); ++i) {
        ASSERT_EQ(ValueOf(m_map, Numbered(u"key", i)), Numbered(u"value", i));
    }
    EXPECT_EQ(ValueOf(m_map, u"key"), u"none");
}

TEST_P(CMapStringToStringOfSize, AWalkMayRemoveEachEntryItReturns) {
    EXPECT_EQ(WalkAndRemove([](int) { return true; }), AllKeys());
    EXPECT_TRUE(m_map.IsEmpty());
    EXPECT_EQ(m_map.GetStartPosition(), nullptr);
}

TEST_P(CMapStringToStringOfSize, AWalkMayRemoveSomeOfTheEntriesItReturns) {
    EXPECT_EQ(WalkAndRemove([](int number) { return number % 3 != 1; }), AllKeys());
    std::vector<std::string> left;
    for (int i = 1; i < GetParam(); i += 3) {
        left.push_back((Numbered(u"key", i) + u"=" + Numbered(u"value", i)).ToUtf8());
    }
    EXPECT_EQ(Entries(m_map), left);
}

TEST_P(CMapStringToStringOfSize, ARemovedKeyIsGoneUntilItIsSetAgain) {
    const Obx_String last = Numbered(u"key", GetParam() - 1);
    EXPECT_TRUE(m_map.RemoveKey(last));
    EXPECT_EQ(ValueOf(m_map, last), u"none");
    EXPECT_FALSE(m_map.RemoveKey(last));
    m_map.SetAt(last, u"again");
    EXPECT_EQ(ValueOf(m_map, last), u"again");
    EXPECT_EQ(m_map.GetCount(), GetParam());
}

TEST_P(CMapStringToStringOfSize, AWalkMayReplaceValues) {
    Obx_String key;
    Obx_String value;
    for (auto position = m_map.GetStartPosition(); position != nullptr;) {
        m_map.GetNextAssoc(position, key, value);
        m_map.SetAt(key, value + u" and more");
    }
    for (int i = 0; i < GetParam(); ++i) {
        ASSERT_EQ(ValueOf(m_map, Numbered(u"key", i)), Numbered(u"value", i) + u" and more");
    }
}

TEST_P(CMapStringToStringOfSize, StaysRightWhileKeysComeAndGo) {
    for (int i = 0; i < 20 * GetParam(); ++i) {
        EXPECT_TRUE(m_map.RemoveKey(Numbered(u"key", i)));
        m_map.SetAt(Numbered(u"key", i + GetParam()), Numbered(u"value", i));
    }
    EXPECT_EQ(m_map.GetCount(), GetParam());
    for (int i = 20 * GetParam(); i < 21 * GetParam(); ++i) {
        ASSERT_EQ(ValueOf(m_map, Numbered(u"key", i)), Numbered(u"value", i - GetParam()));
    }
    EXPECT_EQ(Entries(m_map).size(), static_cast<std::size_t>(GetParam()));
}

TEST_P(CMapStringToStringOfSize, CanBeFilledAgain) {
    m_map.RemoveAll();
    SetUp();
    EXPECT_EQ(WalkAndRemove([](int) { return false; }), AllKeys());
}

INSTANTIATE_TEST_SUITE_P(Sizes, CMapStringToStringOfSize, testing::Values(1, 12, 24, 25, 100));

TEST(CMapStringToString, TakesAnyBlockSize) {
    for (const int blockSize : {-1, 0, 1, 1000}) {
        CMapStringToString map(blockSize);
        map.SetAt(u"a", u"1");
        map.SetAt(u"b", u"2");
        EXPECT_THAT(Entries(map), ElementsAre("a=1", "b=2")) << blockSize;
    }
}

}  // namespace
