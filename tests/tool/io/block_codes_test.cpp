#include "tool/io/block_codes.h"

#include <gtest/gtest.h>

#include <string>

namespace tool {
namespace {

TEST(BlockCodesTest, SameBlockHasTheSameCode) {
    const BlockCodes codes;
    const std::string block(100'000, 'x');
    const BlockCodes::Code code = codes.Of(3, block);
    codes.Of(4, std::string("something else"));
    EXPECT_EQ(codes.Of(3, block), code);
}

TEST(BlockCodesTest, EveryByteOfABlockCounts) {
    const BlockCodes codes;
    std::string block(1000, 'x');
    const BlockCodes::Code code = codes.Of(0, block);
    for (const std::size_t place : {0, 15, 16, 500, 999}) {
        block[place] = 'y';
        EXPECT_NE(codes.Of(0, block), code) << place;
        block[place] = 'x';
    }
    EXPECT_NE(codes.Of(0, block + 'x'), code);
    EXPECT_NE(codes.Of(0, std::string()), code);
}

TEST(BlockCodesTest, BlocksAreToldApartByTheirNumbers) {
    const BlockCodes codes;
    EXPECT_NE(codes.Of(0, std::string("a")), codes.Of(1, std::string("a")));
}

TEST(BlockCodesTest, KeyIsAnotherOneEachTime) {
    EXPECT_NE(BlockCodes().Of(0, std::string("a")), BlockCodes().Of(0, std::string("a")));
}

}  // namespace
}  // namespace tool
