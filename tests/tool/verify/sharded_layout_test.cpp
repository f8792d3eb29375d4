#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>

#include "tool/commands/init_command.h"
#include "tool/commands/show_command.h"
#include "tool/process/usage_error.h"
#include "verify/verify_fixture.h"

namespace tool {
namespace {

using testing::EndsWith;
using testing::HasSubstr;

// Loads into a database of the sharded layout, which stands on one server as ordinary tables.
class ShardedLayoutTest : public VerifyFixture {
  protected:
    ShardedLayoutTest() : VerifyFixture(Engine::PostgresSharded) {}
};

TEST_F(ShardedLayoutTest, WhatIsLoadedAndChangedIsVerified) {
    EXPECT_EQ(LoadAndVerify(Tracker()), 0) << Shown();
    EXPECT_EQ(
        LoadAndVerifyMore(Bugs(
            "changes", {{{"source_id", "C-1"}, {"title", "Uno"}, {"keywords", "green"}}}, kUpdate)),
        0)
        << Shown();
    EXPECT_EQ(Differences(), "");
}

TEST_F(ShardedLayoutTest, ValueThatIsNotFoundByItsKeyIsAFault) {
    Load(Tracker());
    if (IsFile()) {
        return;
    }
    Damage(
        "DELETE FROM zt_key WHERE value = 'C-1';"
        "UPDATE zt_key SET record = 1 WHERE value = 'C-2';"
        "UPDATE zt_last_dbid SET dbid = 0 WHERE record_type = 0");
    EXPECT_EQ(Verify(Tracker()), 1);
    EXPECT_THAT(Faults(),
                HasSubstr("|source_id|C-1|zt_key does not have it, so it is not found by it"));
    EXPECT_THAT(Faults(), HasSubstr("|source_id|C-2|zt_key has it for the dbid 1"));
    EXPECT_THAT(Faults(), HasSubstr("|the record with the dbid 1 does not have this value"));
    EXPECT_THAT(Faults(), HasSubstr("zt_last_dbid|record_type 0|dbid|0|less than 2, which is in "
                                    "use in zt_attachment"));
}

// By themselves, so that all that the records need is there.
TEST_F(ShardedLayoutTest, RowOfNoRecordIsAFault) {
    Load(Tracker());
    if (IsFile()) {
        return;
    }
    Damage(
        "INSERT INTO zt_key SELECT hash, record_type, 'other', value, record FROM zt_key "
        "WHERE value = 'C-1'");
    EXPECT_EQ(Verify(Tracker()), 1);
    EXPECT_THAT(Faults(), HasSubstr("|the record with the dbid 1 does not have this value"));
}

TEST_F(ShardedLayoutTest, RowWithAnotherValueThanItsRecordIsAFault) {
    Load(Tracker());
    if (IsFile()) {
        return;
    }
    Damage("UPDATE zt_key SET value = 'C-0' WHERE value = 'C-1'");
    EXPECT_EQ(Verify(Tracker()), 1);
    EXPECT_THAT(Faults(), HasSubstr("|C-0|the record with the dbid 1 does not have this value"));
}

TEST_F(ShardedLayoutTest, ShowTellsTheLayout) {
    std::ostringstream shown;
    ShowOptions options;
    options.database = m_database;
    RunShow(options, shown);
    if (!IsFile()) {
        EXPECT_THAT(shown.str(), EndsWith("\nlayout: sharded\n"));
    }
}

TEST(ShardedFileTest, IsRefusedBeforeAnythingIsMade) {
    const TemporaryFolder folder;
    std::ostringstream out;
    const std::string schema = folder.Write("s.yaml",
                                            "record_types:\n  a: {key: [n], fields: {n: {type: "
                                            "text}}}\n");
    EXPECT_THROW(RunInit(folder.File("t.db"), schema, recorddb::Layout::Sharded, out), UsageError);
    EXPECT_FALSE(std::filesystem::exists(folder.File("t.db")));
}

}  // namespace
}  // namespace tool
