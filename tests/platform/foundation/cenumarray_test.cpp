#include "platform/foundation/cenumarray.h"

#include <gtest/gtest.h>

namespace {

enum class Colour : unsigned char { kRed = 1, kGreen = 2 };

TEST(CEnumArray, IsEmptyAtFirstWhateverItsRoom) {
    EXPECT_EQ((CEnumArray<int, int>().GetSize()), 0);
    EXPECT_EQ((CEnumArray<int, int>(20).GetSize()), 0);
}

TEST(CEnumArray, GrowsBeyondItsRoom) {
    CEnumArray<int, int> array(2);
    for (int i = 0; i < 100; ++i) {
        array.Add(i * i);
    }
    EXPECT_EQ(array.GetSize(), 100);
    EXPECT_EQ(array[99], 9801);
}

TEST(CEnumArray, KeepsValuesAsItsOwnType) {
    CEnumArray<Colour, int> array;
    array.Add(2);
    EXPECT_EQ(array[0], Colour::kGreen);
}

TEST(CEnumArray, TakesANegativeRoomAsNone) {
    CEnumArray<int, int> array(-1);
    array.Add(7);
    EXPECT_EQ(array[0], 7);
}

}  // namespace
