#include "tool/packet/record_depth.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using tool::IsNestedDeeperThan;

std::string Repeated(std::string_view text, int times) {
    std::string all;
    for (int i = 0; i < times; ++i) {
        all += text;
    }
    return all;
}

// A record whose elements are nested so deep.
std::string Nested(int depth) {
    return "<record>" + Repeated("<a b='>'>", depth - 1) + Repeated("</a>", depth - 1) +
           "</record>";
}

TEST(RecordDepth, CountsTheRecordItself) {
    EXPECT_FALSE(IsNestedDeeperThan(3, Nested(3)));
    EXPECT_TRUE(IsNestedDeeperThan(3, Nested(4)));
    EXPECT_FALSE(IsNestedDeeperThan(1, "<record></record>"));
}

TEST(RecordDepth, ElementsSideBySideAreNotDeep) {
    EXPECT_FALSE(IsNestedDeeperThan(2, "<record>" + Repeated("<a>x</a>", 100) + "</record>"));
    EXPECT_FALSE(
        IsNestedDeeperThan(2, "<record>" + Repeated("<a/><b c='/' />", 100) + "</record>"));
}

TEST(RecordDepth, WhatStandsInSectionsIsNoTag) {
    EXPECT_FALSE(IsNestedDeeperThan(2, "<record><a><!--" + Repeated("<a>", 9) + "--><![CDATA[" +
                                           Repeated("<a>", 9) + "]]><?x " + Repeated("<a>", 9) +
                                           "?></a></record>"));
}

TEST(RecordDepth, ATagThatDoesNotEndCounts) {
    EXPECT_TRUE(IsNestedDeeperThan(3, "<record>" + Repeated("<a b='", 9)));
    EXPECT_TRUE(IsNestedDeeperThan(3, "<record><!-- " + Repeated("<a>", 9)));
}

TEST(RecordDepth, SurplusEndTagsDoNotCount) {
    EXPECT_TRUE(IsNestedDeeperThan(3, "</a></a></a>" + Nested(4)));
}

}  // namespace
