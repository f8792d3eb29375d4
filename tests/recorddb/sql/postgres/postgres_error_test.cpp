#include "recorddb/sql/postgres/postgres_error.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace recorddb::sql {

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST(PostgresErrorTest, KindFollowsFromTheSqlState) {
    const std::pair<const char*, ErrorKind> kinds[] = {
        {"23505", ErrorKind::UniqueViolation},
        {"23503", ErrorKind::ForeignKeyViolation},
        {"23502", ErrorKind::ConstraintViolation},
        {"23514", ErrorKind::ConstraintViolation},
        {"54000", ErrorKind::ConstraintViolation},
        {"40001", ErrorKind::Busy},
        {"40P01", ErrorKind::Busy},
        {"55P03", ErrorKind::Busy},
        {"53100", ErrorKind::DiskFull},
        {"58030", ErrorKind::Io},
        {"25006", ErrorKind::ReadOnly},
        {"XX001", ErrorKind::Corrupt},
        {"42501", ErrorKind::PermissionDenied},
        {"0A000", ErrorKind::Unsupported},
        {"42883", ErrorKind::Unsupported},
        {"57P01", ErrorKind::ConnectionLost},
        {"08006", ErrorKind::ConnectionLost},
        {"28P01", ErrorKind::CannotOpen},
        {"3D000", ErrorKind::CannotOpen},
        {"53300", ErrorKind::CannotOpen},
        {"42601", ErrorKind::Other},
        {"", ErrorKind::Other},
    };
    for (const auto& [state, kind] : kinds) {
        EXPECT_EQ(KindOfSqlState(state), kind) << state;
    }
}

TEST(PostgresErrorTest, ColumnsAreThoseOfTheDetailInWhateverLanguage) {
    EXPECT_THAT(ColumnsOfDetail("Key (source_id)=(a, b) already exists."),
                ElementsAre("source_id"));
    EXPECT_THAT(ColumnsOfDetail("Schl\xC3\xBCssel \xC2\xBB(\"Group\", number)=(1, 2)\xC2\xAB "
                                "existiert bereits."),
                ElementsAre("Group", "number"));
    EXPECT_THAT(ColumnsOfDetail("Key (\"a\"\"b\")=(1)"), ElementsAre("a\"b"));
    EXPECT_THAT(ColumnsOfDetail("nothing of the kind"), IsEmpty());
}

}  // namespace

}  // namespace recorddb::sql
