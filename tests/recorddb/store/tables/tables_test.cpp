#include "recorddb/store/tables/tables.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "open_database.h"
#include "recorddb/errors.h"
#include "recorddb/schema.h"
#include "recorddb/sql.h"
#include "recorddb/sql/dialect.h"

namespace recorddb::schema {

namespace {

using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::UnorderedElementsAre;

using TablesTest = OnEachEngine<OpenDatabaseTest>;

TEST_P(TablesTest, TypeHasOneColumnPerPlainFieldNamedAsTheSchemaNamesIt) {
    const char* const dbid = IsFile() ? "dbid INTEGER" : "dbid BIGINT";
    EXPECT_THAT(Columns("bug"),
                ElementsAre(dbid, "zt_version BIGINT", "id TEXT", "state TEXT", "source_id TEXT",
                            "title TEXT", "description TEXT", "severity TEXT", "owner BIGINT"));
    EXPECT_THAT(Columns("order"), ElementsAre(dbid, "zt_version BIGINT", "Group BIGINT",
                                              "number BIGINT", "dated TEXT"));
}

TEST_P(TablesTest, RequiredFieldsTakeNoNull) {
    EXPECT_THAT(RequiredColumns("bug"), ElementsAre("zt_version", "id", "state", "title"));
}

TEST_P(TablesTest, ReferencesAreForeignKeysToTheDbId) {
    EXPECT_THAT(ForeignKeys("bug"), ElementsAre("owner > user.dbid NO ACTION"));
    EXPECT_THAT(ForeignKeys("order"), ElementsAre("Group > user.dbid NO ACTION"));
}

TEST_P(TablesTest, ReferenceListHasATableOfItsOwn) {
    EXPECT_THAT(Columns("bug__watchers"),
                ElementsAre("record BIGINT", "position BIGINT", "target BIGINT"));
    EXPECT_THAT(ForeignKeys("bug__watchers"),
                UnorderedElementsAre("record > bug.dbid CASCADE", "target > user.dbid NO ACTION"));
}

TEST_P(TablesTest, KeysAndUniqueFieldsAreUnique) {
    const auto add = [this](const std::string& table, const std::string& values) {
        Run("INSERT INTO " + table + " VALUES (" + values + ")");
    };
    const std::string user = "\"user\" (dbid, login)";
    add(user, "1, 'ann'");
    EXPECT_THROW(add(user, "2, 'ann'"), sql::Error);
    EXPECT_NO_THROW(add(user, "2, 'Ann'"));

    const std::string order = "\"order\" (dbid, \"Group\", number)";
    add(order, "1, 1, 1");
    EXPECT_NO_THROW(add(order, "2, 1, 2"));
    EXPECT_THROW(add(order, "3, 1, 1"), sql::Error);

    // Of a type that is spread, no index sees all records; zt_key keeps what is unique.
    const bool byIndex = LayoutOn(GetParam()) == Layout::Plain;
    const auto isRefused = [&add](const std::string& values) {
        try {
            add("bug (dbid, id, state, title, source_id)", values);
            return false;
        } catch (const sql::Error&) {
            return true;
        }
    };
    EXPECT_FALSE(isRefused("1, 'BUG1', 'NEW', 't', 's'"));
    EXPECT_EQ(isRefused("2, 'BUG2', 'NEW', 't', 's'"), byIndex);
    EXPECT_EQ(isRefused("3, 'BUG1', 'NEW', 't', NULL"), byIndex);
}

TEST_P(TablesTest, AnyNumberOfRecordsMayLackAUniqueValue) {
    Run("INSERT INTO bug (dbid, id, state, title) VALUES (1, 'BUG1', 'NEW', 't')");
    EXPECT_NO_THROW(Run("INSERT INTO bug (dbid, id, state, title) VALUES (2, 'BUG2', 'NEW', 't')"));
}

TEST_P(TablesTest, ReferenceToNothingIsRefused) {
    EXPECT_THROW(
        Run("INSERT INTO bug (dbid, id, state, title, owner) VALUES (1, 'BUG1', 'NEW', 't', 9)"),
        sql::Error);
}

TEST_P(TablesTest, LookUpsByKeyReferenceAndListAreIndexSearches) {
    for (const char* const sql : {
             "SELECT dbid FROM bug WHERE id = $1",
             "SELECT dbid FROM bug WHERE source_id = $1",
             "SELECT dbid FROM bug WHERE owner = $1",
             "SELECT dbid FROM \"user\" WHERE login = $1",
             "SELECT dbid FROM \"order\" WHERE \"Group\" = $1 AND number = $2",
             "SELECT target FROM bug__watchers WHERE record = $1 ORDER BY position",
             "SELECT record FROM bug__watchers WHERE target = $1",
         }) {
        EXPECT_TRUE(IsIndexSearch(sql)) << sql;
    }
}

TEST_P(TablesTest, KeyWithTheDbIdNeedsNoIndex) {
    const Schema schema = ReadSchema(
        "record_types: {a: {key: [name, dbid], fields: {name: {type: text}}}}", "a.yaml");
    EXPECT_THAT(RecordTablesScript(schema, Connection().GetDialect()), Not(HasSubstr("INDEX")));
}

TEST_P(TablesTest, DialectDecidesWhereForeignKeysStand) {
    const sql::Dialect other = {.dbIdType = "BIGINT KEY",
                                .textType = "STRING",
                                .blobType = "BYTES",
                                .clusteredTable = "",
                                .foreignKeysAhead = false,
                                .mostColumns = 100,
                                .rightToIndex = ""};
    const std::string script = RecordTablesScript(TheSchema(), other);
    EXPECT_THAT(script, AllOf(HasSubstr("dbid BIGINT KEY"), HasSubstr("\"title\" STRING"),
                              Not(HasSubstr("WITHOUT ROWID"))));
    const std::size_t lastTable = script.rfind("CREATE TABLE");
    const std::size_t firstKey = script.find("FOREIGN KEY");
    EXPECT_GT(firstKey, lastTable);
    EXPECT_THAT(script, HasSubstr("ALTER TABLE \"bug\" ADD FOREIGN KEY (\"owner\") REFERENCES "
                                  "\"user\" (dbid);"));
}

ON_EACH_LAYOUT(TablesTest);

}  // namespace

}  // namespace recorddb::schema
