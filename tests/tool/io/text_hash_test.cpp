#include "tool/io/text_hash.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <string>

#include "recorddb/sha256.h"

namespace {

constexpr const char* kHashOfNothing =
    "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855";
constexpr const char* kHashOfAbc =
    "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad";

TEST(Sha256, IsSha256InHexadecimal) {
    EXPECT_EQ(tool::HashText(""), kHashOfNothing);
    EXPECT_EQ(tool::HashText("abc"), kHashOfAbc);
}

TEST(Sha256, DoesNotDependOnThePieces) {
    recorddb::Sha256 hash;
    hash.Update("a");
    hash.Update("");
    hash.Update("bc");
    EXPECT_EQ(hash.HexDigest(), kHashOfAbc);
}

TEST(Sha256, TellsTheHashOfThePiecesSoFar) {
    recorddb::Sha256 hash;
    hash.Update("abc");
    EXPECT_EQ(hash.DigestSoFar()[0], std::byte{0xBA});
    EXPECT_EQ(hash.DigestSoFar()[31], std::byte{0xAD});
    hash.Update(std::string(1000, 'a'));
    EXPECT_EQ(hash.HexDigest(), tool::HashText("abc" + std::string(1000, 'a')));
}

}  // namespace
