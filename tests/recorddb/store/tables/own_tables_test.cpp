#include "recorddb/store/tables/own_tables.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "open_database.h"
#include "recorddb/errors.h"

namespace recorddb::schema {

namespace {

using ::testing::ElementsAre;
using ::testing::UnorderedElementsAreArray;

using OwnTablesTest = OnEachEngine<OpenDatabaseTest>;

TEST_P(OwnTablesTest, AllOfThemAreThere) {
    std::vector<std::string> expected = {
        "zt_attachment",     "zt_content",         "zt_duplicate",   "zt_history", "zt_journal",
        "zt_journal_reject", "zt_journal_waiting", "zt_record_type", "zt_schema"};
    if (LayoutOn(GetParam()) == Layout::Sharded) {
        expected.insert(expected.end(), {"zt_key", "zt_last_dbid", "zt_turn"});
    }
    EXPECT_THAT(OwnTables(), UnorderedElementsAreArray(expected));
}

TEST_P(OwnTablesTest, RecordTypesAreNamedForQueries) {
    EXPECT_THAT(Texts("SELECT id || ' ' || name || ' ' || kind FROM zt_record_type ORDER BY id"),
                ElementsAre("1 user 2", "2 order 2", "3 bug 1"));
}

TEST_P(OwnTablesTest, AccessByRecordIsAnIndexSearch) {
    for (const char* const sql : {
             "SELECT * FROM zt_history WHERE record_type = $1 AND record = $2 ORDER BY entry",
             "SELECT * FROM zt_attachment WHERE record_type = $1 AND record = $2 ORDER BY dbid",
             "SELECT * FROM zt_duplicate WHERE record_type = $1 AND duplicate = $2",
             "SELECT * FROM zt_duplicate WHERE record_type = $1 AND original = $2",
             "SELECT data FROM zt_content WHERE sha256 = $1 ORDER BY chunk",
             "SELECT count(*) FROM zt_attachment WHERE sha256 = $1",
         }) {
        EXPECT_TRUE(IsIndexSearch(sql)) << sql;
    }
}

TEST_P(OwnTablesTest, RecordHasOneOriginal) {
    Run("INSERT INTO zt_duplicate VALUES (3, 1, 2, '2020-01-01 00:00:00')");
    EXPECT_THROW(Run("INSERT INTO zt_duplicate VALUES (3, 1, 9, '2020-01-01 00:00:00')"),
                 sql::Error);
}

ON_EACH_LAYOUT(OwnTablesTest);

}  // namespace

}  // namespace recorddb::schema
