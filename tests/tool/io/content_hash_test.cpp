#include "tool/io/content_hash.h"

#include <gtest/gtest.h>

namespace tool {
namespace {

TEST(ContentHash, IsBlake2bWhateverThePieces) {
    ContentHash hash;
    hash.Update("a");
    hash.Update("");
    hash.Update("bc");
    EXPECT_EQ(hash.HexDigest(),
              "ba80a53f981c4d0d6a2797b69f12f6e94c212f14685ac4b74b12bb6fdbffa2d1"
              "7d87c5392aab792dc252d5de4533cc9518d38aa8dbf1925ab92386edd4009923");
}

}  // namespace
}  // namespace tool
