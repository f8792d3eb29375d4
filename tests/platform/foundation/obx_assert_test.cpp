#include "platform/foundation/obx_assert.h"

#include <gtest/gtest.h>

#include "tests/platform/thrown_text.h"

namespace {

TEST(ObxAssert, LetsPassWhatHolds) {
    EXPECT_EQ(ThrownText([] { Obx_Assert(true, u"paper is there"); }), "nothing was thrown");
}

TEST(ObxAssert, ThrowsWithItsTextWhenTheConditionIsFalse) {
    EXPECT_EQ(ThrownText([] { Obx_Assert(false, u"paper is there"); }),
              "Assertion failed: paper is there");
}

TEST(ObxAssert, TakesANullText) {
    EXPECT_EQ(ThrownText([] { Obx_Assert(false, nullptr); }), "Assertion failed: ");
}

}  // namespace
