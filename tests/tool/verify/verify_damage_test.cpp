#include <gmock/gmock.h>

#include "engine_cases.h"
#include "verify/verify_fixture.h"

namespace tool {
namespace {

// Something done to a loaded database, and the difference that it must show.
struct DamageCase {
    const char* name;
    const char* sql;
    const char* difference;  // those of the record BUG00000001 without its id
};

void PrintTo(const DamageCase& damage, std::ostream* out) {
    *out << damage.name;
}

using VerifyDamageTest = CasesOnEachEngine<VerifyFixture, DamageCase>;

TEST_P(VerifyDamageTest, ShowsAsExactlyThatDifference) {
    const auto sources = Tracker();
    ASSERT_EQ(LoadAndVerify(sources), 0) << Shown();
    Damage(TheCase().sql);
    EXPECT_EQ(Verify(sources), 1);
    const std::string expected = TheCase().difference;
    EXPECT_EQ(Differences(),
              (expected.starts_with("BUG") || expected.starts_with("|") ? "" : "BUG00000001|") +
                  expected);
}

constexpr DamageCase kValues[] = {
    {"Text", "UPDATE bug SET title = 'Ome' WHERE dbid = 1", "title|One|Ome|"},
    {"TextEmptied", "UPDATE bug SET title = '' WHERE dbid = 1", "title|One||"},
    {"BlankBehindText", "UPDATE bug SET title = 'One ' WHERE dbid = 1", "title|One|One |"},
    {"Number", "UPDATE bug SET votes = 8 WHERE dbid = 1", "votes| 007|8|"},
    {"NumberGone", "UPDATE bug SET votes = NULL WHERE dbid = 1", "votes| 007||"},
    {"OriginalId", "UPDATE bug SET source_id = 'C-2x' WHERE dbid = 2",
     "||||missing from the database\n||||missing from the database"},
    {"State", "UPDATE bug SET state = 'NEW' WHERE dbid = 1", "state|OPEN|NEW|"},
    {"StateOfADuplicate", "UPDATE bug SET state = 'OPEN' WHERE dbid = 2",
     "BUG00000002|state|CLOSED|OPEN|"},
    {"ValueThatNoSourceHas", "UPDATE bug SET votes = 1 WHERE dbid = 2", "BUG00000002|votes||1|"},
    {"Reference", "UPDATE bug SET owner = 2 WHERE dbid = 1", "owner|ann@x|bob|"},
    {"ReferenceGone", "UPDATE bug SET owner = NULL WHERE dbid = 1", "owner|ann@x||"},
    {"ReferenceThatNoSourceHas", "UPDATE bug SET owner = 1 WHERE dbid = 2",
     "BUG00000002|owner||ann|"},
    {"ReferenceToNothingThatNoSourceHas", "UPDATE bug SET owner = 99 WHERE dbid = 2",
     "BUG00000002|owner||(dbid 99)|"},
    {"ListMemberGone", "DELETE FROM bug__keywords WHERE record = 1 AND target = 3",
     "keywords|red,blue|red|"},
    {"ListMemberOther", "UPDATE bug__keywords SET target = 2 WHERE record = 1 AND target = 3",
     "keywords|red,blue|red,green|"},
    {"ListMemberMore", "INSERT INTO bug__keywords (record, position, target) VALUES (1, 9, 2)",
     "keywords|red,blue|red,blue,green|"},
    {"ListThatNoSourceHas", "INSERT INTO bug__keywords (record, position, target) VALUES (2, 1, 2)",
     "BUG00000002|keywords||green|"},
    {"RecordGone", "DELETE FROM keyword WHERE dbid = 2", "||||missing from the database"},
    {"MarkGone", "DELETE FROM zt_duplicate", "BUG00000002|duplicate of|C-1||"},
    {"MarkOfAnother", "UPDATE zt_duplicate SET original = 2",
     "BUG00000002|duplicate of|C-1|BUG00000002|"},
    {"MarkThatNoSourceHas",
     "INSERT INTO zt_duplicate (record_type, duplicate, original, action_time) "
     "VALUES (3, 1, 2, '')",
     "duplicate of||BUG00000002|"},
};

constexpr DamageCase kHistory[] = {
    {"Time", "UPDATE zt_history SET action_time = '2020-01-02 00:00:01' WHERE new_state = 'CLOSED'",
     "log, entry h3, action_timestamp|2020-01-02 00:00:00|2020-01-02 00:00:01|"},
    {"TimeBeforeOthers",
     "UPDATE zt_history SET action_time = '2019-01-02 00:00:00' WHERE new_state = 'CLOSED'",
     "log, entry h3, action_timestamp|2020-01-02 00:00:00|2019-01-02 00:00:00|"},
    {"Actor", "UPDATE zt_history SET user_name = 'bob' WHERE new_state = 'CLOSED'",
     "log, entry h3, user_name|ann|bob|"},
    {"Action", "UPDATE zt_history SET action_name = 'stop' WHERE new_state = 'CLOSED'",
     "log, entry h3, action_name|close|stop|"},
    {"OldState", "UPDATE zt_history SET old_state = 'NEW' WHERE new_state = 'CLOSED'",
     "log, entry h3, old_state|OPEN|NEW|"},
    {"NewState", "UPDATE zt_history SET new_state = 'NEW' WHERE new_state = 'CLOSED'",
     "log, entry h3, new_state|CLOSED|NEW|"},
    {"Comment", "UPDATE zt_history SET comments = 'why' WHERE new_state = 'CLOSED'",
     "log, entry h3, comments||why|"},
    {"Expiry", "UPDATE zt_history SET expiry_time = '2021-01-01 00:00:00' WHERE new_state = 'OPEN'",
     "log, entry h2, expired_timestamp|2020-01-02 00:00:00|2021-01-01 00:00:00|"},
    {"ExpiryGone", "UPDATE zt_history SET expiry_time = NULL WHERE new_state = 'NEW'",
     "log, entry h1, expired_timestamp|2020-01-01 10:00:00||"},
    {"ExpiryOfTheLast",
     "UPDATE zt_history SET expiry_time = '2021-01-01 00:00:00' WHERE new_state = 'CLOSED'",
     "log, entry h3, expired_timestamp||2021-01-01 00:00:00|"},
    {"OrderWithinOneTime", "UPDATE zt_history SET entry = 9 WHERE new_state = 'NEW'",
     "log|2020-01-01 10:00:00\tann\tsubmit\tnone\tNEW\n2020-01-01 10:00:00\tbob\topen\tNEW\tOPEN|"
     "2020-01-01 10:00:00\tbob\topen\tNEW\tOPEN\n2020-01-01 10:00:00\tann\tsubmit\tnone\tNEW|"
     "entries of one time in another order"},
    {"Missing", "DELETE FROM zt_history WHERE new_state = 'NEW'",
     "log, entry h1|2020-01-01 10:00:00\tann\tsubmit\tnone\tNEW||"},
    {"More",
     "INSERT INTO zt_history (record_type, record, entry, field, action_time, user_name, "
     "action_name, old_state, new_state, comments) "
     "VALUES (3, 1, 9, 'log', '2020-01-01 10:00:00', 'eve', 'act', 'NEW', 'NEW', '')",
     "log||2020-01-01 10:00:00\teve\tact\tNEW\tNEW|"},
    {"Twice",
     "INSERT INTO zt_history SELECT record_type, record, 9, field, action_time, expiry_time, "
     "user_name, action_name, old_state, new_state, comments FROM zt_history "
     "WHERE new_state = 'CLOSED'",
     "log||2020-01-02 00:00:00\tann\tclose\tOPEN\tCLOSED|"},
};

constexpr DamageCase kAttachments[] = {
    {"Content",
     "UPDATE zt_content SET data = (SELECT data FROM zt_content WHERE sha256 <> "
     "'2cf24dba5fb0a30e26e83b2ac5b9e29e1b161e5c1fa7425e73043362938b9824') WHERE sha256 = "
     "'2cf24dba5fb0a30e26e83b2ac5b9e29e1b161e5c1fa7425e73043362938b9824'",
     "files, a.txt, content|2cf24dba5fb0a30e26e83b2ac5b9e29e1b161e5c1fa7425e73043362938b9824|"
     "d9298a10d1b0735837dc4bd85dac641b0f3cef27a47e5d53a54f2f3f5b2fcffa|"},
    {"Size", "UPDATE zt_attachment SET filesize = 6 WHERE filename = 'a.txt'",
     "files, a.txt, size|5|6|"},
    {"Name", "UPDATE zt_attachment SET filename = 'A.txt' WHERE filename = 'a.txt'",
     "files, a.txt, name|a.txt|A.txt|"},
    {"Description", "UPDATE zt_attachment SET description = '' WHERE filename = 'a.txt'",
     "files, a.txt, description|the first||"},
    {"Missing", "DELETE FROM zt_attachment WHERE filename = 'a.txt'", "files|sub/a.txt||"},
    {"More",
     "INSERT INTO zt_attachment (dbid, record_type, record, field, filename, filesize, "
     "description, sha256) SELECT 9, record_type, record, field, 'c.txt', filesize, description, "
     "sha256 "
     "FROM zt_attachment WHERE filename = 'a.txt'",
     "files||c.txt|"},
    {"Order", "UPDATE zt_attachment SET dbid = 9 WHERE filename = 'a.txt'",
     "files|a.txt,b.txt|b.txt,a.txt|in another order"},
};

// What only the columns of a file can hold.
constexpr DamageCase kForeign[] = {{"TextInAReferenceThatNoSourceHas",
                                    "UPDATE bug SET owner = 'ann' WHERE dbid = 2",
                                    "BUG00000002|owner||(dbid 0)|"}};

const auto kNames = NamedWithEngine([](const DamageCase& damage) { return damage.name; });

INSTANTIATE_TEST_SUITE_P(OfValues, VerifyDamageTest, OnEachEngineOf(testing::ValuesIn(kValues)),
                         kNames);
INSTANTIATE_TEST_SUITE_P(OfHistory, VerifyDamageTest, OnEachEngineOf(testing::ValuesIn(kHistory)),
                         kNames);
INSTANTIATE_TEST_SUITE_P(OfAttachments, VerifyDamageTest,
                         OnEachEngineOf(testing::ValuesIn(kAttachments)), kNames);
INSTANTIATE_TEST_SUITE_P(OfForeignValues, VerifyDamageTest,
                         testing::Combine(testing::Values(Engine::Sqlite),
                                          testing::ValuesIn(kForeign)),
                         kNames);

}  // namespace
}  // namespace tool
