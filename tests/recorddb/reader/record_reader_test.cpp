#include <fmt/format.h>
#include <fmt/ranges.h>
#include <gmock/gmock.h>

#include <algorithm>

#include "recorddb/reader.h"
#include "session_fixture.h"

namespace recorddb {

namespace {

using Strings = std::vector<std::string>;

class RecordReaderTest : public OnEachEngine<SessionTest> {
  protected:
    RecordReaderTest() {
        Given("user", {{"login", "ann"}});
        Given("user", {{"login", "2"}});
        Given("user", {{"login", "cat"}});
        const AdEntityPtr bug = New("bug");
        Set(bug, "title", "Grüße");
        Set(bug, "votes", "-3");
        Set(bug, "owner", "cat");
        EXPECT_EQ(Add(bug, "watchers", "cat"), "");
        EXPECT_EQ(Add(bug, "watchers", "ann"), "");
        Save(bug);
        Given("bug", {{"title", "second"}});
    }

    const schema::RecordType& TypeOf(std::string_view name) {
        return *Base().GetSchema().FindType(name);
    }

    // What there is to know of the two bugs.
    std::string AllOfBugs(RecordReader& reader) {
        std::string all;
        for (const std::int64_t dbid : {1, 2}) {
            const RecordView bug = reader.Get(TypeOf("bug"), dbid).value();
            all += fmt::format("{} v{} {} ", reader.Key(TypeOf("bug"), dbid), bug.version,
                               fmt::join(bug.values, "|"));
            for (const HistoryEntry& entry : reader.History(bug)) {
                all += fmt::format("{} ", entry.entry) + entry.actionTime + entry.expiryTime +
                       entry.userName + entry.actionName + entry.oldState + entry.newState +
                       entry.comments;
            }
            for (const Attachment& attachment : reader.Attachments(bug)) {
                all += fmt::format("{} {} ", attachment.dbid, attachment.fileSize) +
                       attachment.field + attachment.fileName + attachment.description +
                       attachment.sha256;
            }
            const auto original = reader.Original(bug);
            all += original ? fmt::format("{} {}\n", original->dbid, original->key) : "\n";
        }
        return all;
    }

    Strings ValuesOf(const RecordView& record, std::string_view field) {
        return record.values[record.type->FindField(field)->index];
    }
};

TEST_P(RecordReaderTest, CountsRecords) {
    RecordReader reader(Base());
    EXPECT_EQ(reader.Count(TypeOf("user")), 3);
    EXPECT_EQ(reader.Count(TypeOf("task")), 0);
}

TEST_P(RecordReaderTest, WalksThroughAllRecords) {
    RecordReader reader(Base());
    Strings logins;
    const schema::RecordType& user = TypeOf("user");
    auto record = reader.Next(user, 0);
    while (record) {
        logins.push_back(record->Text(*user.FindField("login")));
        record = reader.Next(user, record->dbid);
    }
    EXPECT_EQ(logins, (Strings{"ann", "2", "cat"}));
}

TEST_P(RecordReaderTest, TellsAllValues) {
    RecordReader reader(Base());
    const auto bug = reader.Get(TypeOf("bug"), 1);
    ASSERT_TRUE(bug.has_value());
    EXPECT_EQ(bug->version, 1);
    EXPECT_EQ(ValuesOf(*bug, "dbid"), (Strings{"1"}));
    EXPECT_EQ(ValuesOf(*bug, "id"), (Strings{"BUG00000001"}));
    EXPECT_EQ(ValuesOf(*bug, "state"), (Strings{"NEW"}));
    EXPECT_EQ(ValuesOf(*bug, "title"), (Strings{"Grüße"}));
    EXPECT_EQ(ValuesOf(*bug, "votes"), (Strings{"-3"}));
    EXPECT_EQ(ValuesOf(*bug, "owner"), (Strings{"cat"}));
    EXPECT_EQ(ValuesOf(*bug, "watchers"), (Strings{"cat", "ann"}));
    EXPECT_EQ(ValuesOf(*bug, "opened"), Strings{});
    EXPECT_EQ(ValuesOf(*bug, "log"), Strings{});
    EXPECT_EQ(bug->Text(*bug->type->FindField("opened")), "");
}

TEST_P(RecordReaderTest, TellsWhatReferencesPointAt) {
    const auto bug = RecordReader(Base()).Get(TypeOf("bug"), 1);
    ASSERT_TRUE(bug.has_value());
    const auto targets = [&bug](std::string_view field) {
        return bug->targets[bug->type->FindField(field)->index];
    };
    EXPECT_EQ(targets("owner"), (std::vector<std::int64_t>{3}));
    EXPECT_EQ(targets("watchers"), (std::vector<std::int64_t>{3, 1}));
    EXPECT_EQ(targets("votes"), std::vector<std::int64_t>{});
}

TEST_P(RecordReaderTest, FindsByKeyBeforeDbid) {
    RecordReader reader(Base());
    EXPECT_EQ(reader.Find(TypeOf("bug"), "BUG00000002")->dbid, 2);
    EXPECT_EQ(reader.Find(TypeOf("bug"), "2")->dbid, 2);
    EXPECT_EQ(reader.Find(TypeOf("user"), "cat")->dbid, 3);
    EXPECT_EQ(reader.Find(TypeOf("user"), "2")->dbid, 2);
    EXPECT_EQ(reader.Find(TypeOf("user"), "3")->dbid, 3);
    EXPECT_FALSE(reader.Find(TypeOf("user"), "zoe").has_value());
    EXPECT_FALSE(reader.Get(TypeOf("user"), 9).has_value());
}

TEST_P(RecordReaderTest, FindsByValueUpToALimit) {
    RecordReader reader(Base());
    const schema::RecordType& bug = TypeOf("bug");
    const schema::Field& state = *bug.FindField("state");
    EXPECT_EQ(reader.FindByValue(bug, state, "NEW", 10), (std::vector<std::int64_t>{1, 2}));
    EXPECT_EQ(reader.FindByValue(bug, state, "NEW", 1), (std::vector<std::int64_t>{1}));
    EXPECT_EQ(reader.FindByValue(bug, state, "CLOSED", 1), std::vector<std::int64_t>{});
    EXPECT_EQ(reader.FindByValue(bug, *bug.FindField("votes"), "-3", 9),
              (std::vector<std::int64_t>{1}));
}

TEST_P(RecordReaderTest, TellsDuplicatesInBothDirections) {
    const AdEntityPtr second = Open("bug", "2");
    Core().MarkEntityAsDuplicate(second, Open("bug", "1"),
                                 Type("bug")->LookupActionDef(AdActionType_t::kDuplicate), 1);
    Save(second);
    RecordReader reader(Base());
    const auto original = *reader.Get(TypeOf("bug"), 1);
    const auto duplicate = *reader.Get(TypeOf("bug"), 2);
    EXPECT_EQ(reader.Original(duplicate), (LinkedRecord{1, "BUG00000001"}));
    EXPECT_EQ(reader.Original(original), std::nullopt);
    EXPECT_EQ(reader.Duplicates(original), (std::vector<LinkedRecord>{{2, "BUG00000002"}}));
}

TEST_P(RecordReaderTest, TellsHistoryByTime) {
    Base().GetConnection().ExecuteScript(
        "INSERT INTO zt_history VALUES (5, 1, 1, 'log', '2020-01-02', NULL, 'ann', 'b', 'c', 'd', "
        "''), (5, 1, 2, 'log', '2020-01-01', '2020-01-02', 'bob', 'b', 'c', 'd', 'why')");
    RecordReader reader(Base());
    const auto history = reader.History(*reader.Get(TypeOf("bug"), 1));
    ASSERT_EQ(history.size(), 2U);
    EXPECT_EQ(history[0].userName, "bob");
    EXPECT_EQ(history[0].expiryTime, "2020-01-02");
    EXPECT_EQ(history[0].comments, "why");
    EXPECT_EQ(history[1].entry, 1);
    EXPECT_EQ(history[1].expiryTime, "");
}

TEST_P(RecordReaderTest, TellsAttachmentsAndTheirContent) {
    std::filesystem::create_directory(Folder().Path() / "files");
    Folder().Write("files/a.txt", "abc");
    OpenSession({.attachmentsFolder = Folder().File("files")});
    const AdEntityPtr bug = Open("bug", "1");
    EXPECT_TRUE(bug->AddAttachment(u"files", u"a.txt", u"why").IsEmpty());
    Save(bug);

    RecordReader reader(Base());
    const auto attachments = reader.Attachments(*reader.Get(TypeOf("bug"), 1));
    ASSERT_EQ(attachments.size(), 1U);
    EXPECT_EQ(attachments[0].fileName, "a.txt");
    EXPECT_EQ(attachments[0].fileSize, 3);
    EXPECT_EQ(attachments[0].description, "why");
    EXPECT_EQ(attachments[0].field, "files");
    EXPECT_EQ(reader.HashContent(attachments[0]), attachments[0].sha256);
    std::string content;
    reader.ReadContent(attachments[0], [&](std::span<const std::byte> piece) {
        content.append(reinterpret_cast<const char*>(piece.data()), piece.size());
    });
    EXPECT_EQ(content, "abc");

    Base().GetConnection().ExecuteScript(IsFile()
                                             ? "UPDATE zt_content SET data = CAST('abd' AS BLOB)"
                                             : "UPDATE zt_content SET data = 'abd'");
    EXPECT_NE(reader.HashContent(attachments[0]), attachments[0].sha256);
}

TEST_P(RecordReaderTest, LookingAheadChangesNoAnswer) {
    std::filesystem::create_directory(Folder().Path() / "files");
    Folder().Write("files/a.txt", "abc");
    OpenSession({.attachmentsFolder = Folder().File("files")});
    const AdEntityPtr bug = Open("bug", "2");
    EXPECT_TRUE(bug->AddAttachment(u"files", u"a.txt", u"why").IsEmpty());
    Core().MarkEntityAsDuplicate(bug, Open("bug", "1"),
                                 Type("bug")->LookupActionDef(AdActionType_t::kDuplicate), 1);
    Save(bug);
    Base().GetConnection().ExecuteScript(
        "INSERT INTO zt_history VALUES (5, 1, 11, 'log', '2020-01-02', NULL, 'ann', 'b', 'c', 'd', "
        "''), (5, 1, 12, 'log', '2020-01-01', '2020-01-02', 'bob', 'b', 'c', 'd', 'why'), "
        "(5, 1, 13, 'log', '2020-01-02', NULL, 'cat', 'b', 'c', 'd', '')");
    const auto moment = Base().Begin();
    RecordReader reader(Base());
    const std::string asked = AllOfBugs(reader);
    EXPECT_THAT(asked, testing::HasSubstr("a.txt"));
    EXPECT_THAT(asked, testing::HasSubstr("12 2020-01-01"));
    const schema::RecordType& type = TypeOf("bug");
    std::vector<ExpectedSearch> searches;
    for (const char* const dbid : {"1", "2", "3"}) {  // there is no third one
        ExpectedSearch& search = searches.emplace_back();
        search.type = &type;
        search.values = {{type.FindField("dbid"), dbid}};
        search.whole = true;
    }
    reader.LookAhead(searches);
    EXPECT_EQ(AllOfBugs(reader), asked);
    EXPECT_FALSE(reader.Get(type, 3));
}

TEST_P(RecordReaderTest, WorksOnAReadOnlyDatabase) {
    Reopen(Database::Mode::ReadOnly);
    RecordReader reader(Base());
    const auto snapshot = Base().Begin();
    EXPECT_EQ(reader.Find(TypeOf("user"), "ann")->dbid, 1);
}

ON_EACH_LAYOUT(RecordReaderTest);

}  // namespace

}  // namespace recorddb
