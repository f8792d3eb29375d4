#include <gtest/gtest.h>

#include "recorddb/model/names.h"
#include "recorddb/schema.h"

namespace recorddb::schema {

namespace {

TEST(RecordTypeTest, DisplayIdHasAtLeastEightDigits) {
    EXPECT_EQ(FormatDisplayId("BUG", 42), "BUG00000042");
    EXPECT_EQ(FormatDisplayId("BUG", 99999999), "BUG99999999");
    EXPECT_EQ(FormatDisplayId("BUG", 100000000), "BUG100000000");
}

TEST(RecordTypeTest, HistoryIsWrittenToTheFirstFieldOfItsKind) {
    RecordType type;
    type.fields = {{.name = "title"},
                   {.name = "log", .kind = FieldKind::History},
                   {.name = "log2", .kind = FieldKind::History}};
    ASSERT_NE(type.HistoryField(), nullptr);
    EXPECT_EQ(type.HistoryField()->name, "log");
    type.fields.resize(1);
    EXPECT_EQ(type.HistoryField(), nullptr);
}

TEST(NamesTest, SameNameIgnoresAsciiCaseOnly) {
    EXPECT_TRUE(SameName("Source_ID", "source_id"));
    EXPECT_FALSE(SameName("source_id", "source_i"));
    EXPECT_FALSE(SameName("a[", "a{"));
    EXPECT_FALSE(SameName("\xC3\x84", "\xC3\xA4"));
}

TEST(NamesTest, Utf16LengthCountsUnits) {
    EXPECT_EQ(Utf16Length(""), 0U);
    EXPECT_EQ(Utf16Length("a\xC3\xA4\xE2\x82\xAC"), 3U);
    EXPECT_EQ(Utf16Length("\xF0\x9F\x98\x80"), 2U);
}

}  // namespace

}  // namespace recorddb::schema
