// Work that is gathered ahead of its turn, by a session of its own, and adopted in it.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <thread>

#include "random_work.h"
#include "session_fixture.h"

namespace recorddb {

namespace {

class WorkAheadTest : public OnEachEngine<SessionTest> {
  protected:
    WorkAheadTest()
        : m_other(Database::Open(Location(), Database::Mode::ReadWrite)),
          m_turn(&Core()),
          m_ahead(m_other->OpenSession({})) {
        m_turn->RememberWrites(4);
        InTurn([] {});
    }

    // Does the work in a transaction that is ahead of its turn.
    template <typename Work>
    std::unique_ptr<GatheredWork> Ahead(Work work) {
        m_moment = m_turn->Moment();
        UseSession(m_ahead);
        const auto transaction = Core().BeginTransaction(Writing::Ahead);
        work();
        auto gathered = transaction->Take();
        UseSession(m_turn);
        return gathered;
    }

    // Does the work in its turn, and commits it.
    template <typename Work>
    void InTurn(Work work, Writing writing = Writing::Gathered) {
        const auto transaction = Core().BeginTransaction(writing);
        work();
        transaction->Commit();
    }

    // Adopts the work and commits it; false when it is not adopted.
    bool Adopt(GatheredWork& work) {
        const auto transaction = Core().BeginTransaction(Writing::Gathered);
        if (!transaction->Adopt(work, m_moment)) {
            return false;
        }
        transaction->Commit();
        return true;
    }

    // As if the failing work had been done by an importer, which goes on after an exception.
    template <typename Work>
    bool FailsAhead(Work work) {
        UseSession(m_ahead);
        const auto transaction = Core().BeginTransaction(Writing::Ahead);
        Thrown(work);
        return Core().Failure().has_value();
    }

    void Rename(std::string_view bug, std::string_view title) {
        const AdEntityPtr record = Open("bug", bug);
        Set(record, "title", title);
        Save(record);
    }

    std::vector<std::string> Bugs(std::string_view field, std::string_view value) {
        AdQueryDefPtr query = Core().BuildQueryDef(Type("bug"), 0);
        query->SelectDbId(1);
        query->BuildFilter(nullptr, Text(field), AdCompOp_t::kEqual, Text(value), 1);
        const AdResultSetPtr result = Core().BuildResultSet(query);
        result->Prepare();
        result->Execute();
        std::vector<std::string> found;
        int status = 1;
        for (result->FetchNext(status); status == 1; result->FetchNext(status)) {
            Obx_String text;
            result->GetColumn(1, text, 0);
            found.push_back(text.ToUtf8());
        }
        return found;
    }

    std::unique_ptr<Database> m_other;
    AdPtr<Session> m_turn;
    AdPtr<Session> m_ahead;
    std::uint64_t m_moment = 0;
};

TEST_P(WorkAheadTest, AdoptedWorkIsWrittenWithItsTransaction) {
    const auto work = Ahead([&] { Given("bug", {{"title", "a"}}); });
    EXPECT_EQ(Row("SELECT count(*) FROM bug"), "0");
    EXPECT_TRUE(Adopt(*work));
    EXPECT_EQ(Row("SELECT dbid, id, title, zt_version FROM bug"), "1|BUG00000001|a|1");
}

TEST_P(WorkAheadTest, WorkThatIsNotAdoptedLeavesNothing) {
    Ahead([&] { Given("bug", {{"title", "a"}}); });
    EXPECT_EQ(Row("SELECT count(*) FROM bug"), "0");
}

TEST_P(WorkAheadTest, NewRecordsGetTheirNumbersInTurn) {
    const auto work = Ahead([&] {
        Given("bug", {{"title", "c"}});
        Given("bug", {{"title", "d"}});
    });
    InTurn([&] {
        Given("bug", {{"title", "a"}});
        Given("bug", {{"title", "b"}});
    });
    EXPECT_TRUE(Adopt(*work));
    EXPECT_EQ(Row("SELECT dbid, id, title FROM bug WHERE dbid > 2 ORDER BY dbid"),
              "3|BUG00000003|c;4|BUG00000004|d");
}

TEST_P(WorkAheadTest, NumbersGoOnAfterThoseOfAdoptedWork) {
    const auto work = Ahead([&] { Given("bug", {{"title", "a"}}); });
    const auto transaction = Core().BeginTransaction(Writing::Gathered);
    ASSERT_TRUE(transaction->Adopt(*work, m_moment));
    EXPECT_EQ(Value(Given("bug", {{"title", "b"}}), "id"), "BUG00000002");
    transaction->Commit();
    EXPECT_EQ(Row("SELECT count(*) FROM bug"), "2");
}

TEST_P(WorkAheadTest, WhatSpeaksOfNewRecordsFollowsTheirNumbers) {
    const auto work = Ahead([&] {
        Given("user", {{"login", "ann"}});
        const AdEntityPtr original = Given("bug", {{"title", "c"}, {"owner", "ann"}});
        const AdEntityPtr duplicate =
            Given("bug", {{"title", "d"}, {"parent", Value(original, "id")}});
        EXPECT_EQ(Add(duplicate, "watchers", "ann"), "");
        Core().MarkEntityAsDuplicate(duplicate, original,
                                     Type("bug")->LookupActionDef(AdActionType_t::kDuplicate), 1);
        Save(duplicate);
        AdHistory entry{};
        entry.recordId = std::stol(Value(duplicate, "dbid"));
        entry.recordTypeId = Type("bug")->GetDbId();
        std::ranges::copy(std::u16string_view(u"bug"), entry.recordTypeName);
        std::ranges::copy(std::u16string_view(u"2020-01-01 00:00:00"), entry.actionTime);
        std::ranges::copy(std::u16string_view(u"modify"), entry.actionName);
        CEnumArray<int, int> problems(1);
        Obx_String text;
        Core().ImportHistoryData(&entry, 1, -1, problems, text, nullptr, nullptr);
        EXPECT_EQ(text.ToUtf8(), "");
        Core().CommitImportHistory();
    });
    InTurn([&] {
        Given("user", {{"login", "eve"}});
        Given("bug", {{"title", "a"}});
    });
    EXPECT_TRUE(Adopt(*work));
    EXPECT_EQ(Row("SELECT dbid, owner, parent FROM bug WHERE dbid > 1 ORDER BY dbid"),
              "2|2|NULL;3|NULL|2");
    EXPECT_EQ(Row("SELECT record, target FROM bug__watchers"), "3|2");
    EXPECT_EQ(Row("SELECT duplicate, original FROM zt_duplicate"), "3|2");
    EXPECT_EQ(Row("SELECT record, entry, field FROM zt_history"), "3|1|log");
}

TEST_P(WorkAheadTest, ChangedRecordIsWrittenOnItsVersion) {
    Given("bug", {{"title", "a"}});
    const auto work = Ahead([&] { Rename("1", "b"); });
    EXPECT_TRUE(Adopt(*work));
    EXPECT_EQ(Row("SELECT title, zt_version FROM bug"), "b|2");
}

TEST_P(WorkAheadTest, WorkIsNotAdoptedWhenARecordThatItReadHasChanged) {
    Given("bug", {{"title", "a"}});
    const auto work = Ahead([&] { Rename("1", "b"); });
    InTurn([&] { Rename("1", "c"); });
    EXPECT_FALSE(Adopt(*work));
}

TEST_P(WorkAheadTest, WorkIsAdoptedWhenOtherRecordsHaveChanged) {
    Given("bug", {{"title", "a"}});
    Given("bug", {{"title", "b"}});
    const auto work = Ahead([&] { Rename("1", "c"); });
    InTurn([&] { Rename("2", "d"); });
    EXPECT_TRUE(Adopt(*work));
}

TEST_P(WorkAheadTest, WorkIsAdoptedWhenItSawTheChange) {
    Given("bug", {{"title", "a"}});
    InTurn([&] { Rename("1", "b"); });
    const auto work = Ahead([&] { Rename("1", "c"); });
    EXPECT_TRUE(Adopt(*work));
}

TEST_P(WorkAheadTest, WorkIsNotAdoptedWhenAKeyThatItMissedHasCome) {
    const auto work = Ahead([&] { EXPECT_NE(Refusal(New("bug"), "owner", "ann"), ""); });
    InTurn([&] { Given("user", {{"login", "ann"}}); });
    EXPECT_FALSE(Adopt(*work));
}

TEST_P(WorkAheadTest, WorkIsNotAdoptedWhenAValueThatMustBeUniqueHasCome) {
    const auto work = Ahead([&] { Given("bug", {{"title", "a"}, {"source_id", "x"}}); });
    InTurn([&] { Given("bug", {{"title", "b"}, {"source_id", "x"}}); });
    EXPECT_FALSE(Adopt(*work));
}

TEST_P(WorkAheadTest, WorkIsAdoptedWhenOtherKeysHaveCome) {
    const auto work = Ahead([&] { Given("bug", {{"title", "a"}, {"source_id", "x"}}); });
    InTurn([&] { Given("bug", {{"title", "b"}, {"source_id", "y"}}); });
    EXPECT_TRUE(Adopt(*work));
}

TEST_P(WorkAheadTest, WorkIsNotAdoptedWhenASearchFindsMoreOrLessNow) {
    const AdEntityPtr bug = Given("bug", {{"title", "a"}, {"votes", "1"}});
    Bugs("votes", "1");  // makes the index, as every first search for a field does
    const auto sees = Ahead([&] { EXPECT_EQ(Bugs("votes", "1").size(), 1U); });
    InTurn([&] { Given("bug", {{"title", "b"}, {"votes", "1"}}); });
    EXPECT_FALSE(Adopt(*sees));
    const auto missesNone = Ahead([&] { EXPECT_EQ(Bugs("votes", "2").size(), 0U); });
    InTurn([&] {
        const AdEntityPtr first = Open("bug", "1");
        Set(first, "votes", "2");
        Save(first);
    });
    EXPECT_FALSE(Adopt(*missesNone));
}

TEST_P(WorkAheadTest, WorkIsNotAdoptedWhenItRestsOnNumbersToCome) {
    const auto work = Ahead([&] {
        Given("bug", {{"title", "a"}});
        EXPECT_NE(Refusal(New("bug"), "parent", "BUG00000001"), "");
    });
    EXPECT_FALSE(Adopt(*work));
}

TEST_P(WorkAheadTest, WorkIsNotAdoptedAfterWhatWasWrittenAtOnce) {
    const auto work = Ahead([&] { Given("bug", {{"title", "a"}}); });
    InTurn([&] { Given("task", {{"title", "b"}}); }, Writing::AtOnce);
    EXPECT_FALSE(Adopt(*work));
}

TEST_P(WorkAheadTest, WorkIsNotAdoptedAfterAnotherWriterHadItsTurn) {
    constexpr std::size_t kPlenty = 1'000'000;
    m_turn->RememberWrites(kPlenty);
    Given("user", {{"login", "ann"}});
    InTurn([] {});
    const auto work = Ahead([&] { Given("bug", {{"title", "a"}}); });
    std::atomic<bool> hasWritten = false;
    std::jthread other([&] {
        const auto third = Database::Open(Location(), Database::Mode::ReadWrite);
        sql::Transaction transaction = third->Begin();
        third->GetConnection().Prepare("UPDATE \"user\" SET team = 'x'").Execute();
        transaction.Commit();
        hasWritten = true;
    });
    while (!hasWritten) {
        InTurn([] {});
    }
    EXPECT_FALSE(Adopt(*work));
}

TEST_P(WorkAheadTest, OthersWriteWhenTurnsAreNoLongerKept) {
    InTurn([] {});
    m_turn->RememberWrites(0);
    const auto third = Database::Open(Location(), Database::Mode::ReadWrite);
    EXPECT_NO_THROW(third->Begin().Commit());
}

TEST_P(WorkAheadTest, WorkIsNotAdoptedAfterMoreThanIsRemembered) {
    const auto work = Ahead([&] { Given("bug", {{"title", "a"}}); });
    for (int i = 0; i < 5; ++i) {
        InTurn([&] { Given("task", {{"title", "b"}}); });
    }
    EXPECT_FALSE(Adopt(*work));
}

TEST_P(WorkAheadTest, ChangeOfAKeyHasToWaitForItsTurn) {
    Given("user", {{"login", "ann"}});
    EXPECT_TRUE(FailsAhead([&] {
        const AdEntityPtr user = Open("user", "1");
        Set(user, "login", "eve");
        CommitFault(user);
    }));
}

TEST_P(WorkAheadTest, SearchIndexHasToWaitForItsTurn) {
    EXPECT_TRUE(FailsAhead([&] { Bugs("votes", "1"); }));
}

TEST_P(WorkAheadTest, NobodyIsKeptFromWriting) {
    UseSession(m_ahead);
    const auto transaction = Core().BeginTransaction(Writing::Ahead);
    Given("bug", {{"title", "a"}});
    UseSession(m_turn);
    InTurn([&] { Given("bug", {{"title", "b"}}); });
    EXPECT_EQ(Row("SELECT title FROM bug"), "b");
}

ON_EACH_LAYOUT(WorkAheadTest);

// The database is the same in the end as when every group is done in its turn.
class RandomWorkAheadTest : public testing::TestWithParam<Engine> {
  protected:
    void Compare(std::uint64_t seed, int lag, RandomWork::Ahead lookAhead) {
        SCOPED_TRACE("seed " + std::to_string(seed) + ", lag " + std::to_string(lag));
        constexpr int kGroups = 30;
        RandomWork inTurn(seed, Writing::Gathered);
        inTurn.KeepGroupsSmall();
        inTurn.Run(kGroups);
        RandomWork ahead(seed, Writing::Gathered, lookAhead, GetParam());
        ahead.KeepGroupsSmall();
        ahead.RunAhead(kGroups, lag);
        EXPECT_EQ(ahead.Tables(), inTurn.Tables());
        m_adopted += ahead.Adopted();
        m_groups += kGroups;
    }

    int m_adopted = 0;
    int m_groups = 0;
};

TEST_P(RandomWorkAheadTest, WorkAtRandomComesToTheSame) {
    const std::uint64_t seeds = GetParam() == Engine::Sqlite ? 24 : 6;
    for (std::uint64_t seed = 1; seed <= seeds && !HasFailure(); ++seed) {
        Compare(seed, static_cast<int>(seed % 4),
                seed % 2 == 0 ? RandomWork::Ahead::Much : RandomWork::Ahead::Nothing);
    }
    // Both ways are tried.
    EXPECT_GT(m_adopted, m_groups / 20);
    EXPECT_LT(m_adopted, m_groups);
}

INSTANTIATE_TEST_SUITE_P(On, RandomWorkAheadTest, testing::Values(Engine::Sqlite, Engine::Postgres),
                         [](const testing::TestParamInfo<Engine>& info) {
                             return testing::PrintToString(info.param);
                         });

}  // namespace

}  // namespace recorddb
