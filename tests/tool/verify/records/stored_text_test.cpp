#include "tool/verify/records/stored_text.h"

#include <gtest/gtest.h>

namespace tool {
namespace {

recorddb::schema::Field FieldOf(recorddb::schema::FieldKind kind) {
    recorddb::schema::Field field;
    field.kind = kind;
    return field;
}

TEST(StoredText, OfATimeIsItsUtc) {
    EXPECT_EQ(StoredTime("2020-01-01T12:00:00+01:00"), "2020-01-01 11:00:00");
    EXPECT_EQ(StoredTime("2020-01-01"), "2020-01-01 00:00:00");
    EXPECT_EQ(StoredText(FieldOf(recorddb::schema::FieldKind::DateTime), "2020-01-01"),
              "2020-01-01 00:00:00");
}

TEST(StoredText, OfAWholeNumberHasNoSpareDigits) {
    EXPECT_EQ(StoredText(FieldOf(recorddb::schema::FieldKind::Integer), "007"), "7");
}

TEST(StoredText, IsTheValueItselfWhereThatIsNone) {
    EXPECT_EQ(StoredTime("never"), "never");
    EXPECT_EQ(StoredText(FieldOf(recorddb::schema::FieldKind::Integer), "many"), "many");
    EXPECT_EQ(StoredText(FieldOf(recorddb::schema::FieldKind::Text), "2020-01-01"), "2020-01-01");
}

}  // namespace
}  // namespace tool
