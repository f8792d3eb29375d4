#include <gtest/gtest.h>

#include "recorddb/sql.h"

namespace recorddb::sql {

namespace {

TEST(QuotedTest, QuotesAreDoubled) {
    EXPECT_EQ(Quoted("order"), "\"order\"");
    EXPECT_EQ(Quoted("a\"b"), "\"a\"\"b\"");
}

}  // namespace

}  // namespace recorddb::sql
