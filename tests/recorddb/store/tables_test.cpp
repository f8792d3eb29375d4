#include "recorddb/store/tables.h"

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
using ::testing::StartsWith;
using ::testing::UnorderedElementsAre;

using TablesTest = OpenDatabaseTest;

TEST_F(TablesTest, TypeHasOneColumnPerPlainFieldNamedAsTheSchemaNamesIt) {
    EXPECT_THAT(
        Texts("SELECT name || ' ' || type FROM pragma_table_info('bug')"),
        ElementsAre("dbid INTEGER", "zt_version BIGINT", "id TEXT", "state TEXT", "source_id TEXT",
                    "title TEXT", "description TEXT", "severity TEXT", "owner BIGINT"));
    EXPECT_THAT(Texts("SELECT name || ' ' || type FROM pragma_table_info('order')"),
                ElementsAre("dbid INTEGER", "zt_version BIGINT", "Group BIGINT", "number BIGINT",
                            "dated TEXT"));
}

TEST_F(TablesTest, RequiredFieldsTakeNoNull) {
    EXPECT_THAT(Texts("SELECT name FROM pragma_table_info('bug') WHERE \"notnull\" = 1"),
                ElementsAre("zt_version", "id", "state", "title"));
}

TEST_F(TablesTest, ReferencesAreForeignKeysToTheDbId) {
    EXPECT_THAT(Texts("SELECT \"from\" || ' > ' || \"table\" || '.' || \"to\" "
                      "FROM pragma_foreign_key_list('bug')"),
                ElementsAre("owner > user.dbid"));
    EXPECT_THAT(Texts("SELECT \"from\" || ' > ' || \"table\" || '.' || \"to\" "
                      "FROM pragma_foreign_key_list('order')"),
                ElementsAre("Group > user.dbid"));
}

TEST_F(TablesTest, ReferenceListHasATableOfItsOwn) {
    EXPECT_THAT(Texts("SELECT name FROM pragma_table_info('bug__watchers')"),
                ElementsAre("record", "position", "target"));
    EXPECT_THAT(Texts("SELECT \"from\" || ' > ' || \"table\" || ' ' || on_delete "
                      "FROM pragma_foreign_key_list('bug__watchers')"),
                UnorderedElementsAre("record > bug CASCADE", "target > user NO ACTION"));
}

TEST_F(TablesTest, KeysAndUniqueFieldsAreUnique) {
    Run("INSERT INTO \"user\" (dbid, login) VALUES (1, 'ann')");
    EXPECT_THROW(Run("INSERT INTO \"user\" (login) VALUES ('ann')"), sql::Error);
    EXPECT_NO_THROW(Run("INSERT INTO \"user\" (login) VALUES ('Ann')"));

    Run("INSERT INTO \"order\" (\"Group\", number) VALUES (1, 1)");
    EXPECT_NO_THROW(Run("INSERT INTO \"order\" (\"Group\", number) VALUES (1, 2)"));
    EXPECT_THROW(Run("INSERT INTO \"order\" (\"Group\", number) VALUES (1, 1)"), sql::Error);

    Run("INSERT INTO bug (id, state, title, source_id) VALUES ('BUG1', 'NEW', 't', 's')");
    EXPECT_THROW(
        Run("INSERT INTO bug (id, state, title, source_id) VALUES ('BUG2', 'NEW', 't', 's')"),
        sql::Error);
    EXPECT_THROW(Run("INSERT INTO bug (id, state, title) VALUES ('BUG1', 'NEW', 't')"), sql::Error);
}

TEST_F(TablesTest, AnyNumberOfRecordsMayLackAUniqueValue) {
    Run("INSERT INTO bug (id, state, title) VALUES ('BUG1', 'NEW', 't')");
    EXPECT_NO_THROW(Run("INSERT INTO bug (id, state, title) VALUES ('BUG2', 'NEW', 't')"));
}

TEST_F(TablesTest, ReferenceToNothingIsRefused) {
    EXPECT_THROW(Run("INSERT INTO bug (id, state, title, owner) VALUES ('BUG1', 'NEW', 't', 9)"),
                 sql::Error);
}

TEST_F(TablesTest, LookUpsByKeyReferenceAndListAreIndexSearches) {
    for (const char* const sql : {
             "SELECT dbid FROM bug WHERE id = $1",
             "SELECT dbid FROM bug WHERE source_id = $1",
             "SELECT dbid FROM bug WHERE owner = $1",
             "SELECT dbid FROM \"user\" WHERE login = $1",
             "SELECT dbid FROM \"order\" WHERE \"Group\" = $1 AND number = $2",
             "SELECT target FROM bug__watchers WHERE record = $1 ORDER BY position",
             "SELECT record FROM bug__watchers WHERE target = $1",
         }) {
        EXPECT_THAT(Plan(sql), ElementsAre(StartsWith("SEARCH"))) << sql;
    }
}

TEST_F(TablesTest, KeyWithTheDbIdNeedsNoIndex) {
    const Schema schema = ReadSchema(
        "record_types: {a: {key: [name, dbid], fields: {name: {type: text}}}}", "a.yaml");
    EXPECT_THAT(RecordTablesScript(schema, Connection().GetDialect()), Not(HasSubstr("INDEX")));
}

TEST_F(TablesTest, DialectDecidesWhereForeignKeysStand) {
    const sql::Dialect other = {.identityColumn = "BIGINT IDENTITY",
                                .blobType = "BYTES",
                                .clusteredTable = "",
                                .foreignKeysAhead = false};
    const std::string script = RecordTablesScript(TheSchema(), other);
    EXPECT_THAT(script, AllOf(HasSubstr("dbid BIGINT IDENTITY"), Not(HasSubstr("WITHOUT ROWID"))));
    const std::size_t lastTable = script.rfind("CREATE TABLE");
    const std::size_t firstKey = script.find("FOREIGN KEY");
    EXPECT_GT(firstKey, lastTable);
    EXPECT_THAT(script, HasSubstr("ALTER TABLE \"bug\" ADD FOREIGN KEY (\"owner\") REFERENCES "
                                  "\"user\" (dbid);"));
}

}  // namespace

}  // namespace recorddb::schema
