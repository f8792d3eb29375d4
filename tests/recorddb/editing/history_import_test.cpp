#include "recorddb/editing/history_import.h"

#include <algorithm>
#include <string>

#include "session_fixture.h"

namespace recorddb {

namespace {

// Copies a text into its room as the importer does: without a terminator when it is too long.
template <std::size_t room>
void Put(char16_t (&to)[room], std::string_view text) {
    const Obx_String units = Text(text);
    const std::u16string_view view = units.View().substr(0, room);
    std::fill(to, to + room, u'\0');
    std::copy(view.begin(), view.end(), to);
}

class HistoryImportTest : public OnEachEngine<SessionTest> {
  protected:
    HistoryImportTest() { Given("bug", {{"title", "t"}}); }

    AdHistory Entry(std::string_view time, std::string_view user = "ann", long record = 1) {
        AdHistory entry{};
        entry.recordId = record;
        entry.recordTypeId = Type("bug")->GetDbId();
        Put(entry.sourceIdField, "source_id");
        Put(entry.recordTypeName, "bug");
        Put(entry.actionTime, std::string("2020-01-01 00:00:").append(time));
        Put(entry.userName, user);
        Put(entry.actionName, "modify");
        Put(entry.oldState, "NEW");
        Put(entry.newState, "CLOSED");
        return entry;
    }

    // Returns the text of the problems; their indexes are in m_problemEntries.
    std::string Hand(const std::vector<AdHistory>& entries) {
        Obx_String problems;
        Core().ImportHistoryData(entries.data(), static_cast<long>(entries.size()), -1,
                                 m_problemEntries, problems, nullptr, nullptr);
        return problems.ToUtf8();
    }

    void Import(const std::vector<AdHistory>& entries) {
        EXPECT_EQ(Hand(entries), "");
        Core().CommitImportHistory();
    }

    std::string Stored() {
        return Row(
            "SELECT record, entry, substr(action_time, 18), substr(expiry_time, 18), "
            "user_name FROM zt_history ORDER BY record, action_time, entry");
    }

    CEnumArray<int, int> m_problemEntries{50};
};

TEST_P(HistoryImportTest, EntriesAreWrittenWhole) {
    AdHistory entry = Entry("01");
    Put(entry.comments, "Grüße");
    Import({entry});
    EXPECT_EQ(Row("SELECT record_type, record, entry, field, action_time, expiry_time, user_name, "
                  "action_name, old_state, new_state, comments FROM zt_history"),
              "5|1|1|log|2020-01-01 00:00:01|NULL|ann|modify|NEW|CLOSED|Grüße");
    EXPECT_EQ(Core().GetStatistics().historyEntries, 1);
}

TEST_P(HistoryImportTest, NothingIsWrittenBeforeCommit) {
    EXPECT_EQ(Hand({Entry("01")}), "");
    EXPECT_EQ(Stored(), "");
    Core().RevertImportHistory();
    Core().CommitImportHistory();
    EXPECT_EQ(Stored(), "");
    EXPECT_EQ(Core().GetStatistics().historyEntries, 0);
}

TEST_P(HistoryImportTest, EntryExpiresWhenTheNextOneOfItsRecordBegins) {
    Given("bug", {{"title", "u"}});
    Import({Entry("03"), Entry("01"), Entry("02", "bob", 2), Entry("02")});
    EXPECT_EQ(Stored(), "1|2|01|02|ann;1|3|02|03|ann;1|1|03|NULL|ann;2|1|02|NULL|bob");
}

TEST_P(HistoryImportTest, LaterImportEndsEarlierEntries) {
    Import({Entry("01"), Entry("05")});
    Import({Entry("03"), Entry("07")});
    EXPECT_EQ(Stored(), "1|1|01|03|ann;1|3|03|05|ann;1|2|05|07|ann;1|4|07|NULL|ann");
}

TEST_P(HistoryImportTest, GivenExpiryStands) {
    AdHistory entry = Entry("01");
    Put(entry.expiryTime, "2020-01-01 00:00:02");
    Import({entry, Entry("05")});
    EXPECT_EQ(Stored(), "1|1|01|02|ann;1|2|05|NULL|ann");
}

TEST_P(HistoryImportTest, UpdateOfExpiryMendsWhatWasWrittenByHand) {
    Import({Entry("01"), Entry("05")});
    Base().GetConnection().ExecuteScript("UPDATE zt_history SET expiry_time = NULL");
    Core().UpdateImportHistoryExpiredTimestamp(Type("bug"), 1);
    EXPECT_EQ(Stored(), "1|1|01|05|ann;1|2|05|NULL|ann");
}

TEST_P(HistoryImportTest, UpdateOfExpiryAfterARollbackLooksAgain) {
    const auto transaction = Core().BeginTransaction();
    Import({Entry("01")});
    {
        const auto savepoint = transaction->Savepoint();
        Import({Entry("05")});
    }
    Core().UpdateImportHistoryExpiredTimestamp(Type("bug"), 1);
    EXPECT_EQ(Stored(), "1|1|01|NULL|ann");
}

TEST_P(HistoryImportTest, TextThatFillsItsRoomIsTaken) {
    Import({Entry("01", std::string(30, 'u'))});
    EXPECT_EQ(Stored(), "1|1|01|NULL|" + std::string(30, 'u'));
}

TEST_P(HistoryImportTest, TextThatIsTooLongIsNamedWithItsEntry) {
    const std::string tooLong(31, 'u');
    EXPECT_EQ(Hand({Entry("01"), Entry("02"), Entry("03", tooLong)}),
              "user_name of history entry 3 is longer than 30 characters");
    const std::string text(200, 'x');
    AdHistory entry = Entry("01");
    Put(entry.comments, text);
    EXPECT_EQ(Hand({entry}), "comments of history entry 1 is longer than 50 characters");
    entry = Entry("01");
    Put(entry.actionTime, text);
    EXPECT_EQ(Hand({entry}), "action_time of history entry 1 is longer than 19 characters");
    entry = Entry("01");
    Put(entry.sourceIdField, text);
    EXPECT_EQ(Hand({entry}), "source_id_field of history entry 1 is longer than 101 characters");
}

TEST_P(HistoryImportTest, GoodEntriesAreImportedAlthoughOthersAreRefused) {
    const std::string tooLong(31, 'u');
    EXPECT_EQ(Hand({Entry("01", tooLong), Entry("02"), Entry("03", tooLong)}),
              "user_name of history entry 1 is longer than 30 characters\n"
              "user_name of history entry 3 is longer than 30 characters");
    ASSERT_EQ(m_problemEntries.GetSize(), 2);
    EXPECT_EQ(m_problemEntries[0], 0);
    EXPECT_EQ(m_problemEntries[1], 2);
    Core().CommitImportHistory();
    EXPECT_EQ(Stored(), "1|1|02|NULL|ann");
}

TEST_P(HistoryImportTest, TimesMustBeDates) {
    AdHistory entry = Entry("99");
    EXPECT_EQ(Hand({entry}),
              "History entry 1 cannot be imported: its action_time \"2020-01-01 00:00:99\" is not "
              "a date and time.");
    entry = Entry("01");
    Put(entry.expiryTime, "2020-01-01");
    EXPECT_EQ(Hand({entry}),
              "History entry 1 cannot be imported: its expiry_time \"2020-01-01\" is not a date "
              "and time.");
}

TEST_P(HistoryImportTest, TextMustBeValid) {
    AdHistory entry = Entry("01");
    entry.userName[1] = char16_t{0xDC00};
    EXPECT_EQ(Hand({entry}),
              "History entry 1 cannot be imported: its user_name is not valid UTF-16 at index 1.");
}

TEST_P(HistoryImportTest, RecordMustExist) {
    EXPECT_EQ(
        Hand({Entry("01", "ann", 9)}),
        "History entry 1 cannot be imported: there is no record of type \"bug\" with the dbid 9.");
}

TEST_P(HistoryImportTest, NameAndNumberOfTheTypeMustBelongTogether) {
    AdHistory entry = Entry("01");
    Put(entry.recordTypeName, "user");
    EXPECT_EQ(
        Hand({Entry("01"), entry}),
        "History entry 2 cannot be imported: the record type \"user\" does not have the number 5.");
    entry = Entry("01");
    entry.recordTypeId = 99;
    EXPECT_NE(Hand({entry}), "");
}

TEST_P(HistoryImportTest, TypeMustHaveAHistoryField) {
    Given("user", {{"login", "ann"}});
    AdHistory entry = Entry("01");
    Put(entry.recordTypeName, "user");
    entry.recordTypeId = Type("user")->GetDbId();
    EXPECT_EQ(Hand({entry}),
              "History entry 1 cannot be imported: the record type \"user\" has no history field.");
}

TEST_P(HistoryImportTest, SavepointTakesHistoryAlong) {
    const auto transaction = Core().BeginTransaction();
    {
        const auto savepoint = transaction->Savepoint();
        Import({Entry("01")});
        EXPECT_EQ(Hand({Entry("02")}), "");
    }
    Core().CommitImportHistory();
    EXPECT_EQ(Stored(), "");
    EXPECT_EQ(Core().GetStatistics().historyEntries, 0);
}

TEST_P(HistoryImportTest, CallbackIsToldOfTheProgress) {
    std::vector<std::pair<long, long>> calls;
    const std::vector<AdHistory> entries = {Entry("01"), Entry("02")};
    Obx_String problems;
    Core().ImportHistoryData(
        entries.data(), 2, -1, m_problemEntries, problems,
        [](long done, long total, void* context) {
            static_cast<std::vector<std::pair<long, long>>*>(context)->emplace_back(done, total);
        },
        &calls);
    EXPECT_EQ(calls, (std::vector<std::pair<long, long>>{{1, 2}, {2, 2}}));
}

TEST_P(HistoryImportTest, FieldTellsTheEntriesAsLines) {
    Import({Entry("02"), Entry("01")});
    const AdEntityPtr bug = Open("bug", "1");
    EXPECT_EQ(Value(bug, "log"),
              "2\t2020-01-01 00:00:01\tann\tmodify\tNEW\tCLOSED\n"
              "1\t2020-01-01 00:00:02\tann\tmodify\tNEW\tCLOSED");
    EXPECT_EQ(New("bug")->GetFieldValue(Text("log"))->GetValueStatus(), 1);
}

TEST_P(HistoryImportTest, HighestEntryThatThereIsEndsTheCount) {
    Import({Entry("01")});
    Base().GetConnection().ExecuteScript("UPDATE zt_history SET entry = 9223372036854775806");
    EXPECT_EQ(Hand({Entry("02"), Entry("03")}), "");
    EXPECT_NE(Thrown([&] {
                  Core().CommitImportHistory();
              }).find("zt_history.entry holds the number 9223372036854775806"),
              std::string::npos);
    EXPECT_EQ(Row("SELECT count(*) FROM zt_history"), "1");
}

ON_EACH_LAYOUT(HistoryImportTest);

}  // namespace

}  // namespace recorddb
