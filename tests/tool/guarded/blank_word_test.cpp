#include "tool/guarded/blank_word.h"

#include <gtest/gtest.h>

namespace {

TEST(BlankWord, AsksForAnEmptyValueInAnyCase) {
    for (const char* const word : {"BLANK", "blank", "Blank", "BLAN\xE2\x84\xAA"}) {
        EXPECT_TRUE(tool::IsBlankWord(word)) << word;
    }
    for (const char* const word : {"", " BLANK", "BLANKET", "BLAN", "BLANC", "PLANK"}) {
        EXPECT_FALSE(tool::IsBlankWord(word)) << word;
    }
}

}  // namespace
