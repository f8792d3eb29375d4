#include "platform/foundation/white_space.h"

#include <gtest/gtest.h>

#include <string_view>

namespace {

TEST(WhiteSpace, HoldsBlanksOfAllScripts) {
    for (const char16_t unit : std::u16string_view(u"\t\n\v\f\r \u0085\u00a0\u2003\u3000")) {
        EXPECT_TRUE(IsWhiteSpace(unit)) << static_cast<int>(unit);
    }
}

TEST(WhiteSpace, HoldsNothingThatShowsOrControls) {
    for (const char16_t unit : std::u16string_view(u"a0_!\u0007\u001f\u00e9\u200b\ufeff")) {
        EXPECT_FALSE(IsWhiteSpace(unit)) << static_cast<int>(unit);
    }
    EXPECT_FALSE(IsWhiteSpace(u'\0'));
    EXPECT_FALSE(IsWhiteSpace(0xD83D));
}

}  // namespace
