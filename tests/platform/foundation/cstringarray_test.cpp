#include "platform/foundation/cstringarray.h"

#include <gmock/gmock.h>

#include "tests/platform/items.h"
#include "tests/platform/printing.h"

namespace {

using testing::ElementsAre;

class CStringArrayTest : public testing::Test {
  protected:
    void SetUp() override {
        for (const char16_t* item : {u"a", u"b", u"c"}) {
            m_array.Add(item);
        }
    }

    CStringArray m_array;
};

TEST_F(CStringArrayTest, IsEmptyAtFirst) {
    EXPECT_EQ(CStringArray().GetSize(), 0);
}

TEST_F(CStringArrayTest, KeepsItemsInOrder) {
    EXPECT_EQ(m_array.GetSize(), 3);
    EXPECT_EQ(m_array[0], u"a");
    EXPECT_EQ(m_array[2], u"c");
    EXPECT_THAT(Items(m_array), ElementsAre("a", "b", "c"));
}

TEST_F(CStringArrayTest, ClosesTheGapOfARemovedItem) {
    m_array.RemoveAt(1);
    EXPECT_THAT(Items(m_array), ElementsAre("a", "c"));
}

TEST_F(CStringArrayTest, LetsAnItemBeReplaced) {
    m_array[1] = u"x";
    EXPECT_EQ(m_array[1], u"x");
}

TEST_F(CStringArrayTest, IsEmptyAfterRemoveAll) {
    m_array.RemoveAll();
    EXPECT_EQ(m_array.GetSize(), 0);
}

}  // namespace
