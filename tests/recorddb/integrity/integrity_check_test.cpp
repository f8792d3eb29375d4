#include <gmock/gmock.h>

#include <algorithm>

#include "recorddb/integrity.h"
#include "session_fixture.h"

namespace recorddb {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

AdHistory Entry(std::string_view time, std::string_view user) {
    AdHistory entry{};
    const auto copy = [](std::string_view text, char16_t* room) {
        std::copy(text.begin(), text.end(), room);
    };
    entry.recordId = 1;
    entry.recordTypeId = 5;
    copy("bug", entry.recordTypeName);
    copy(time, entry.actionTime);
    copy(user, entry.userName);
    copy("act", entry.actionName);
    return entry;
}

// A database that uses all that a record can have.
class EverythingTest : public SessionTest {
  protected:
    explicit EverythingTest(Engine engine) : SessionTest(engine) {
        std::filesystem::create_directories(Folder().Path() / "files");
        Folder().Write("files/a.txt", "abc");
        Folder().Write("files/empty.txt", "");
        OpenSession({.attachmentsFolder = Folder().File("files")});
        Given("user", {{"login", "ann"}});
        Given("user", {{"login", "bob"}});
        const AdEntityPtr bug = New("bug");
        Set(bug, "title", "One");
        Set(bug, "severity", "minor");
        Set(bug, "opened", "2020-01-01 10:00:00");
        Set(bug, "votes", "7");
        Set(bug, "owner", "ann");
        Add(bug, "watchers", "bob");
        Add(bug, "watchers", "ann");
        bug->AddAttachment(Text("files"), Text("a.txt"), Text("the first"));
        bug->AddAttachment(Text("files"), Text("empty.txt"), Text(""));
        Save(bug);
        const AdEntityPtr twin = Given("bug", {{"title", "Two"}});
        Core().MarkEntityAsDuplicate(twin, Open("bug", "1"),
                                     Type("bug")->LookupActionDef(AdActionType_t::kDuplicate), 1);
        Save(twin);
        GiveHistory();
    }

    void GiveHistory() {
        const std::vector<AdHistory> entries = {Entry("2020-01-01 00:00:00", "ann"),
                                                Entry("2020-01-05 00:00:00", "ann"),
                                                Entry("2020-01-03 00:00:00", "bob")};
        CEnumArray<int, int> wrong;
        Obx_String problems;
        Core().ImportHistoryData(entries.data(), static_cast<long>(entries.size()), -1, wrong,
                                 problems, nullptr, nullptr);
        EXPECT_EQ(problems.ToUtf8(), "");
        Core().CommitImportHistory();
    }

    // Runs SQL that breaks rules which the engine keeps.
    void Damage(std::string sql) {
        Base().GetConnection().ExecuteScript(IsFile() ? "PRAGMA foreign_keys = OFF"
                                                      : "SET session_replication_role = replica");
        for (std::size_t at = sql.find(" x'"); !IsFile() && at != std::string::npos;
             at = sql.find(" x'", at)) {
            sql.replace(at, 3, " '\\x");  // bytes as a server writes them
        }
        Base().GetConnection().ExecuteScript(sql);
    }

    // The faults of the database in the form "TYPE|ID|FIELD|VALUE|PROBLEM".
    std::vector<std::string> Faults() {
        std::vector<std::string> faults;
        m_totals = CheckIntegrity(
            Base(),
            [&faults](const recorddb::Fault& fault) {
                faults.push_back(fault.type + "|" + fault.id + "|" + fault.field + "|" +
                                 fault.value + "|" + fault.problem);
            },
            [](std::uint64_t) { return true; });
        return faults;
    }

    IntegrityTotals m_totals;
};

using IntegrityCheckTest = OnEachEngine<EverythingTest>;

TEST_P(IntegrityCheckTest, FindsNothingInWhatWasWrittenThroughASession) {
    EXPECT_THAT(Faults(), IsEmpty());
    EXPECT_EQ(m_totals.records, 4U);
    EXPECT_EQ(m_totals.faults, 0U);
    EXPECT_TRUE(m_totals.allContentsSound);
}

TEST_P(IntegrityCheckTest, CountsContentsThatNoAttachmentHas) {
    Damage("DELETE FROM zt_attachment WHERE filename = 'a.txt'");
    EXPECT_THAT(Faults(), IsEmpty());
    EXPECT_EQ(m_totals.unusedContents, 1U);
    EXPECT_EQ(m_totals.unusedBytes, 3U);
}

TEST_P(IntegrityCheckTest, EndsWhenItIsToldTo) {
    Damage("UPDATE bug SET id = 'x' || id");
    std::uint64_t rows = 0;
    const auto totals = CheckIntegrity(
        Base(), [](const recorddb::Fault&) {}, [&rows](std::uint64_t) { return ++rows <= 3; });
    EXPECT_EQ(totals.faults, 0U);
}

TEST_P(IntegrityCheckTest, SaysThatContentsAreNotSound) {
    Damage("UPDATE zt_content SET data = x'616263' WHERE length(data) = 0");
    Faults();
    EXPECT_FALSE(m_totals.allContentsSound);
    Damage("DELETE FROM zt_content");
    Faults();
    EXPECT_FALSE(m_totals.allContentsSound);
}

TEST_P(IntegrityCheckTest, AcceptsAnExpiryThatWasGiven) {
    Damage("UPDATE zt_history SET expiry_time = '2020-01-02 00:00:00' WHERE entry = 1");
    EXPECT_THAT(Faults(), IsEmpty());
}

TEST_P(IntegrityCheckTest, FollowsDuplicatesOfDuplicates) {
    Given("bug", {{"title", "Three"}});
    Damage("INSERT INTO zt_duplicate VALUES (5, 3, 2, '2020-01-01 00:00:00')");
    EXPECT_THAT(Faults(), IsEmpty());
    Damage("INSERT INTO zt_duplicate VALUES (5, 1, 3, '2020-01-01 00:00:00')");
    EXPECT_THAT(Faults(), ElementsAre("bug|BUG00000001|duplicate of|3|the record is a duplicate of "
                                      "itself, by one step or several"));
}

struct FaultCase {
    const char* name;
    const char* sql;
    const char* fault;
};

void PrintTo(const FaultCase& test, std::ostream* out) {
    *out << test.name;
}

using FaultOnEngine = std::pair<Engine, FaultCase>;

class IntegrityFaultTest : public EverythingTest,
                           public testing::WithParamInterface<FaultOnEngine> {
  protected:
    IntegrityFaultTest() : EverythingTest(GetParam().first) {}
};

TEST_P(IntegrityFaultTest, IsFound) {
    Damage(GetParam().second.sql);
    EXPECT_THAT(Faults(), ElementsAre(GetParam().second.fault));
}

constexpr FaultCase kRecords[] = {
    {"OtherPrefix", "UPDATE bug SET id = 'BvG00000001' WHERE dbid = 1",
     "bug|BvG00000001|id|BvG00000001|the display id of its dbid is BUG00000001"},
    {"FewerDigits", "UPDATE bug SET id = 'BUG1' WHERE dbid = 1",
     "bug|BUG1|id|BUG1|the display id of its dbid is BUG00000001"},
    {"NumberOfAnother", "UPDATE bug SET id = 'BUG00000007' WHERE dbid = 1",
     "bug|BUG00000007|id|BUG00000007|the display id of its dbid is BUG00000001"},
    {"Version", "UPDATE bug SET zt_version = 0 WHERE dbid = 1",
     "bug|BUG00000001|zt_version|0|less than 1"},
    {"DbId",
     "UPDATE \"user\" SET dbid = 0 WHERE dbid = 2; UPDATE bug__watchers SET target = 0 "
     "WHERE target = 2",
     "user|bob|dbid|0|less than 1"},
    {"TextAsNumber", "UPDATE bug SET votes = '7 or so' WHERE dbid = 1",
     "bug|BUG00000001|votes|7 or so|stored as a text, where a whole number belongs"},
    {"BytesAsNumber", "UPDATE bug SET votes = x'37' WHERE dbid = 1",
     "bug|BUG00000001|votes|x'37'|stored as binary data, where a whole number belongs"},
    {"FractionAsNumber", "UPDATE bug SET votes = 7.5 WHERE dbid = 1",
     "bug|BUG00000001|votes|7.5|stored as a floating-point number, where a whole number belongs"},
    {"BytesAsText", "UPDATE bug SET title = x'4F6E65' WHERE dbid = 1",
     "bug|BUG00000001|title|x'4f6e65'|stored as binary data, where a text belongs"},
    {"EmptyText", "UPDATE bug SET description = '' WHERE dbid = 1",
     "bug|BUG00000001|description||an empty text, which is never stored here"},
    {"TooLong", "UPDATE bug SET title = 'äbcdefghijklmnopqrstu' WHERE dbid = 1",
     "bug|BUG00000001|title|äbcdefghijklmnopqrstu|longer than the 20 characters that the field "
     "takes"},
    {"NotUtf8", "UPDATE bug SET title = CAST(x'4FFF' AS TEXT) WHERE dbid = 1",
     "bug|BUG00000001|title|O\xFF|not valid UTF-8"},
    {"Choice", "UPDATE bug SET severity = 'Minor' WHERE dbid = 1",
     "bug|BUG00000001|severity|Minor|not one of the choices minor, major"},
    {"State", "UPDATE bug SET state = 'new' WHERE dbid = 1",
     "bug|BUG00000001|state|new|not one of the states NEW, ASSIGNED, CLOSED"},
    {"Time", "UPDATE bug SET opened = '2020-02-30 10:00:00' WHERE dbid = 1",
     "bug|BUG00000001|opened|2020-02-30 10:00:00|not a date and time in the form YYYY-MM-DD "
     "HH:MM:SS"},
    {"ReferenceToNothing", "UPDATE bug SET owner = 9 WHERE dbid = 1",
     "bug|BUG00000001|owner|9|there is no user with this dbid"},
    {"TextAsReference", "UPDATE bug SET owner = 'ann' WHERE dbid = 1",
     "bug|BUG00000001|owner|ann|stored as a text, where a whole number belongs"},
};

constexpr FaultCase kLists[] = {
    {"Gap", "DELETE FROM bug__watchers WHERE position = 0",
     "bug|BUG00000001|watchers, position|1|the position 0 is expected"},
    {"Twice", "UPDATE bug__watchers SET target = 1",
     "bug|BUG00000001|watchers|1|the user with this dbid stands in the list twice"},
    {"ToNothing", "UPDATE bug__watchers SET target = 9 WHERE position = 1",
     "bug|BUG00000001|watchers|9|there is no user with this dbid"},
    {"TextAsTarget", "UPDATE bug__watchers SET target = '1st' WHERE position = 1",
     "bug|BUG00000001|watchers|1st|stored as a text, where a whole number belongs"},
    {"OfNoRecord", "UPDATE bug__watchers SET record = 9",
     "bug|(dbid 9)|watchers||a list of a record that there is not"},
    {"OfAText", "UPDATE bug__watchers SET record = 'one' WHERE position = 1",
     "bug__watchers|one|record||stored as a text, where a whole number belongs"},
};

constexpr FaultCase kHistory[] = {
    {"OtherField", "UPDATE zt_history SET field = 'title' WHERE entry = 2",
     "bug|BUG00000001|log, entry 2, field|title|the history of bug stands in log"},
    {"Gap", "DELETE FROM zt_history WHERE entry = 2",
     "bug|BUG00000001|log, entry|3|the entry 2 is expected"},
    {"Expiry", "UPDATE zt_history SET expiry_time = '2020-01-05 00:00:00' WHERE entry = 1",
     "bug|BUG00000001|log, entry 1, expiry_time|2020-01-05 00:00:00|the next entry begins at "
     "2020-01-03 00:00:00"},
    {"NoExpiry", "UPDATE zt_history SET expiry_time = NULL WHERE entry = 3",
     "bug|BUG00000001|log, entry 3, expiry_time||the next entry begins at 2020-01-05 00:00:00"},
    {"ExpiryNoTime", "UPDATE zt_history SET expiry_time = '' WHERE entry = 2",
     "bug|BUG00000001|log, entry 2, expiry_time||not a date and time in the form YYYY-MM-DD "
     "HH:MM:SS"},
    {"NoTime", "UPDATE zt_history SET action_time = 'noon' WHERE entry = 2",
     "bug|BUG00000001|log, entry 2, action_time|noon|not a date and time in the form YYYY-MM-DD "
     "HH:MM:SS"},
    {"TooLong",
     "UPDATE zt_history SET user_name = 'abcdefghijklmnopqrstuvwxyz01234' WHERE entry = 2",
     "bug|BUG00000001|log, entry 2, user_name|abcdefghijklmnopqrstuvwxyz01234|longer than 30 "
     "characters"},
    {"Bytes", "UPDATE zt_history SET comments = x'' WHERE entry = 2",
     "bug|BUG00000001|log, entry 2, comments|x''|stored as binary data, where a text belongs"},
    {"OfNoRecord", "UPDATE zt_history SET record = 9",
     "bug|(dbid 9)|log||history of a record that there is not"},
    {"OfATypeWithoutHistory", "UPDATE zt_history SET record_type = 1, entry = 1 WHERE entry = 3",
     "user|ann|history, entry 1, field|log|user has no history field"},
    {"OfNoType", "UPDATE zt_history SET record_type = 9 WHERE entry = 3",
     "zt_history|record_type 9, record 1, entry 3|||an entry of no known record type"},
};

constexpr FaultCase kAttachments[] = {
    {"OtherField", "UPDATE zt_attachment SET field = 'log' WHERE dbid = 1",
     "bug|BUG00000001|log, a.txt, field|log|not an attachments field of bug"},
    {"Path", "UPDATE zt_attachment SET filename = '../a.txt' WHERE dbid = 1",
     "bug|BUG00000001|files, ../a.txt, name|../a.txt|a path, where the name of a file belongs"},
    {"NoName", "UPDATE zt_attachment SET filename = '' WHERE dbid = 1",
     "bug|BUG00000001|files, , name||an empty text, which is never stored here"},
    {"Size", "UPDATE zt_attachment SET filesize = 4 WHERE dbid = 1",
     "bug|BUG00000001|files, a.txt, size|4|its content has 3 bytes"},
    {"TextAsSize", "UPDATE zt_attachment SET filesize = '3 bytes' WHERE dbid = 1",
     "bug|BUG00000001|files, a.txt, size|3 bytes|stored as a text, where a whole number belongs"},
    {"Description", "UPDATE zt_attachment SET description = x'41' WHERE dbid = 1",
     "bug|BUG00000001|files, a.txt, description|x'41'|stored as binary data, where a text belongs"},
    {"NoHash", "UPDATE zt_attachment SET sha256 = upper(sha256) WHERE dbid = 1",
     "bug|BUG00000001|files, a.txt, content|"
     "BA7816BF8F01CFEA414140DE5DAE2223B00361A396177A9CB410FF61F20015AD|not a SHA-256 of 64 "
     "lower-case hex digits"},
    {"ContentGone", "DELETE FROM zt_content WHERE length(data) = 3",
     "bug|BUG00000001|files, a.txt, content|"
     "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad|there is no content with "
     "this SHA-256"},
    {"OfNoRecord", "UPDATE zt_attachment SET record = 9 WHERE dbid = 1",
     "bug|(dbid 9)|files, a.txt||an attachment of a record that there is not"},
    {"OfNoType", "UPDATE zt_attachment SET record_type = 0 WHERE dbid = 1",
     "zt_attachment|dbid 1|record_type|0|an attachment of no known record type"},
    {"Content", "UPDATE zt_content SET data = x'616264' WHERE length(data) = 3",
     "zt_content|ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad|||what is stored "
     "has the SHA-256 a52d159f262b2c6ddb724a61840befc36eb30c88877a4030b65cbe86298449c9"},
    {"Chunk", "UPDATE zt_content SET chunk = 1 WHERE length(data) = 3",
     "zt_content|ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad|chunk 1||the "
     "chunk 0 is expected"},
    {"TextAsContent", "UPDATE zt_content SET data = 'abc' WHERE length(data) = 3",
     "zt_content|ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad|chunk 0||stored "
     "as a text, where binary data belongs"},
    {"ContentWithoutHash", "INSERT INTO zt_content VALUES ('abc', 0, x'61')",
     "zt_content|abc|sha256||not a SHA-256 of 64 lower-case hex digits"},
};

constexpr FaultCase kMarks[] = {
    {"Time", "UPDATE zt_duplicate SET action_time = 'noon'",
     "bug|BUG00000002|duplicate of, time|noon|not a date and time in the form YYYY-MM-DD "
     "HH:MM:SS"},
    {"OfItself", "UPDATE zt_duplicate SET original = 2",
     "bug|BUG00000002|duplicate of|2|the record is a duplicate of itself, by one step or several"},
    {"OfNothing", "UPDATE zt_duplicate SET original = 9",
     "bug|BUG00000002|duplicate of|9|there is no bug with this dbid"},
    {"OfNoRecord", "UPDATE zt_duplicate SET duplicate = 9",
     "bug|(dbid 9)|duplicate of||a mark of a record that there is not"},
    {"OfATypeWithoutStates", "UPDATE zt_duplicate SET record_type = 1",
     "zt_duplicate|record_type 1, duplicate 2|||a mark of no known record type with states"},
};

#define ZT_HASH "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"

constexpr FaultCase kOwnTables[] = {
    {"TypeName", "UPDATE zt_record_type SET name = 'bugs' WHERE id = 5",
     "zt_record_type|id 5|name|bugs|the schema calls it bug"},
    {"TypeKind", "UPDATE zt_record_type SET kind = 2 WHERE id = 5",
     "zt_record_type|id 5|kind|2|1 is expected"},
    {"TypeMissing", "DELETE FROM zt_record_type WHERE id = 5",
     "zt_record_type|id 5|||the record type bug is missing"},
    {"TypeTooMany", "INSERT INTO zt_record_type VALUES (9, 'x', 1)",
     "zt_record_type|id 9|id|9|the schema has no such record type"},
    {"Readers", "UPDATE zt_schema SET oldest_readable = 0",
     "zt_schema|row 1|oldest_readable|0|3 is expected"},
    {"Schemas", "INSERT INTO zt_schema SELECT * FROM zt_schema",
     "zt_schema|row 2||3|a second row, where there is one only"},
    {"JournalHash",
     "INSERT INTO zt_journal VALUES ('x', '" ZT_HASH "', 'a.xml', "
     "1, 1, 1, 0, 0, 0, 0, 0, 0, 1)",
     "zt_journal|a.xml|source_sha256|x|not a SHA-256 of 64 lower-case hex digits"},
    {"JournalCount",
     "INSERT INTO zt_journal VALUES ('" ZT_HASH "', '" ZT_HASH "', 'a.xml', "
     "1, 1, -1, 0, 0, 0, 0, 0, 0, 1)",
     "zt_journal|a.xml|created|-1|less than 0"},
    {"JournalComplete",
     "INSERT INTO zt_journal VALUES ('" ZT_HASH "', '" ZT_HASH "', 'a.xml', "
     "1, 2, 1, 0, 0, 0, 0, 0, 0, 1)",
     "zt_journal|a.xml|complete|2|neither 0 nor 1"},
    {"JournalRejected",
     "INSERT INTO zt_journal VALUES ('" ZT_HASH "', '" ZT_HASH "', 'a.xml', "
     "1, 1, 1, 0, 0, 0, 0, 3, 0, 1)",
     "zt_journal|a.xml|rejected|3|zt_journal_reject names 0"},
    {"JournalRun",
     "INSERT INTO zt_journal VALUES ('" ZT_HASH "', '" ZT_HASH "', 'a.xml', "
     "1, 1, 1, 0, 0, 0, 0, 0, 0, -1)",
     "zt_journal|a.xml|run|-1|less than 0"},
    {"RejectOfNoSource", "INSERT INTO zt_journal_reject VALUES ('" ZT_HASH "', '" ZT_HASH "', 0)",
     "zt_journal_reject|" ZT_HASH "|ordinal|0|the journal knows no such source"},
    {"RejectBeyondTheEnd",
     "INSERT INTO zt_journal VALUES ('" ZT_HASH "', '" ZT_HASH "', 'a.xml', "
     "1, 1, 0, 0, 0, 0, 0, 1, 0, 1);"
     "INSERT INTO zt_journal_reject VALUES ('" ZT_HASH "', '" ZT_HASH "', 1)",
     "zt_journal_reject|" ZT_HASH "|ordinal|1|the journal says that 1 records were handled"},
    {"WaitingOfNoSource", "INSERT INTO zt_journal_waiting VALUES ('" ZT_HASH "', '" ZT_HASH "', 0)",
     "zt_journal_waiting|" ZT_HASH "|ordinal|0|the journal knows no such source"},
    {"WaitingInACompleteSource",
     "INSERT INTO zt_journal VALUES ('" ZT_HASH "', '" ZT_HASH "', 'a.xml', "
     "1, 1, 0, 0, 0, 0, 0, 0, 0, 1);"
     "INSERT INTO zt_journal_waiting VALUES ('" ZT_HASH "', '" ZT_HASH "', 0)",
     "zt_journal|a.xml|complete|1|zt_journal_waiting names 1"},
};

// Values of another type than their column's, which only a file can hold, and text that is none.
bool OnlyInAFile(std::string_view name) {
    constexpr std::string_view names[] = {"TextAsNumber", "BytesAsNumber", "FractionAsNumber",
                                          "BytesAsText",  "NotUtf8",       "TextAsReference",
                                          "TextAsTarget", "OfAText",       "Bytes",
                                          "TextAsSize",   "Description",   "TextAsContent"};
    return std::find(std::begin(names), std::end(names), name) != std::end(names);
}

template <std::size_t count>
std::vector<FaultOnEngine> OnEngines(const FaultCase (&cases)[count]) {
    std::vector<FaultOnEngine> all;
    for (const FaultCase& test : cases) {
        all.emplace_back(Engine::Sqlite, test);
        if (!OnlyInAFile(test.name)) {
            all.emplace_back(Engine::Postgres, test);
        }
    }
    return all;
}

std::string NameOf(const testing::TestParamInfo<FaultOnEngine>& info) {
    return info.param.second.name + ("_" + testing::PrintToString(info.param.first));
}

ON_EACH_LAYOUT(IntegrityCheckTest);
INSTANTIATE_TEST_SUITE_P(OfRecords, IntegrityFaultTest, testing::ValuesIn(OnEngines(kRecords)),
                         NameOf);
INSTANTIATE_TEST_SUITE_P(OfLists, IntegrityFaultTest, testing::ValuesIn(OnEngines(kLists)), NameOf);
INSTANTIATE_TEST_SUITE_P(OfHistory, IntegrityFaultTest, testing::ValuesIn(OnEngines(kHistory)),
                         NameOf);
INSTANTIATE_TEST_SUITE_P(OfAttachments, IntegrityFaultTest,
                         testing::ValuesIn(OnEngines(kAttachments)), NameOf);
INSTANTIATE_TEST_SUITE_P(OfMarks, IntegrityFaultTest, testing::ValuesIn(OnEngines(kMarks)), NameOf);
INSTANTIATE_TEST_SUITE_P(OfOwnTables, IntegrityFaultTest, testing::ValuesIn(OnEngines(kOwnTables)),
                         NameOf);

}  // namespace

}  // namespace recorddb
