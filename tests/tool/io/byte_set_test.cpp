#include "tool/io/byte_set.h"

#include <gtest/gtest.h>

#include <string>

namespace tool {
namespace {

constexpr ByteSet kSet([](char c) { return c == '&' || c == '\xEF'; });

TEST(ByteSet, FindsTheFirstOfItsBytesWhereverItStands) {
    for (std::size_t size = 0; size < 12; ++size) {
        EXPECT_FALSE(kSet.IsIn(std::string(size, 'a')));
        for (std::size_t at = 0; at < size; ++at) {
            std::string text(size, 'a');
            text[at] = '\xEF';
            text.back() = '&';
            EXPECT_EQ(kSet.Find(text), at);
            EXPECT_EQ(kSet.Find(text, at + 1), at + 1 < size ? size - 1 : size);
        }
    }
}

}  // namespace
}  // namespace tool
