#include "platform/foundation/text_place.h"

#include <gtest/gtest.h>

namespace {

TEST(TextPlace, IsCountedFromTheLineItStandsIn) {
    constexpr std::string_view text = "ab\n\ncd";
    const auto expectAt = [&](std::size_t offset, int line, int column) {
        const TextPlace place = PlaceInText(text, offset);
        EXPECT_EQ(place.line, line) << offset;
        EXPECT_EQ(place.column, column) << offset;
    };
    expectAt(0, 0, 0);
    expectAt(2, 0, 2);
    expectAt(3, 1, 0);
    expectAt(4, 2, 0);
    expectAt(6, 2, 2);
}

}  // namespace
