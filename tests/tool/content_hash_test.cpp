#include "tool/content_hash.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>

#include "recorddb/attachments/content_hash.h"
#include "temporary_folder.h"
#include "tool/source_error.h"

namespace {

constexpr const char* hashOfNothing =
    "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855";
constexpr const char* hashOfAbc =
    "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad";
constexpr const char* hashOfAMillionA =
    "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0";

TEST(ContentHash, IsSha256InHexadecimal) {
    EXPECT_EQ(tool::HashText(""), hashOfNothing);
    EXPECT_EQ(tool::HashText("abc"), hashOfAbc);
}

TEST(ContentHash, DoesNotDependOnThePieces) {
    recorddb::ContentHash hash;
    hash.Update("a");
    hash.Update("");
    hash.Update("bc");
    EXPECT_EQ(hash.HexDigest(), hashOfAbc);
}

TEST(ContentHash, ReadsAFileLargerThanAPiece) {
    TemporaryFolder folder;
    std::string path = folder.Write("a", std::string(1000000, 'a'));
    EXPECT_EQ(tool::HashFile(path, "a"), hashOfAMillionA);
}

TEST(ContentHash, NamesAFileThatIsNotThere) {
    EXPECT_THROW(tool::HashFile("/nowhere/a", "a"), tool::SourceError);
}

}  // namespace
