#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <regex>
#include <string>
#include <utility>
#include <vector>

#include "random_work.h"
#include "recorddb/errors.h"
#include "recorddb/reader.h"
#include "session_fixture.h"

namespace recorddb {

namespace {

class GatheredWritingTest : public OnEachEngine<SessionTest> {
  protected:
    std::unique_ptr<SessionTransaction> Gather() {
        return Core().BeginTransaction(Writing::Gathered);
    }

    // Writes a record of that value past the session, with all that keeps the value from others.
    void TakeSourceIdX() {
        Base().GetConnection().ExecuteScript(
            "INSERT INTO bug (dbid, id, state, source_id, title) VALUES (9, 'B', 'NEW', 'x', 'b')");
        if (GetParam() == Engine::PostgresSharded) {
            Base().GetConnection().ExecuteScript(
                fmt::format("INSERT INTO zt_key (hash, record_type, field, value, record) VALUES "
                            "(encode(sha256('x'), 'hex'), {}, 'source_id', 'x', 9)",
                            Base().GetSchema().FindType("bug")->id));
        }
    }
};

TEST_P(GatheredWritingTest, NothingReachesTheDatabaseBeforeItIsApplied) {
    const auto transaction = Gather();
    Given("bug", {{"title", "a"}});
    EXPECT_EQ(Row("SELECT count(*) FROM bug"), "0");
    transaction->Apply();
    EXPECT_EQ(Row("SELECT count(*) FROM bug"), "1");
}

TEST_P(GatheredWritingTest, CommitAppliesWhatWasGathered) {
    const auto transaction = Gather();
    Given("bug", {{"title", "a"}});
    transaction->Commit();
    EXPECT_EQ(Row("SELECT id, title, zt_version FROM bug"), "BUG00000001|a|1");
}

TEST_P(GatheredWritingTest, ChangesOfOneRecordAreWrittenAsOne) {
    const auto transaction = Gather();
    const AdEntityPtr bug = Given("bug", {{"title", "a"}});
    Set(bug, "title", "b");
    Save(bug);
    Set(bug, "votes", "3");
    Save(bug);
    transaction->Commit();
    EXPECT_EQ(Row("SELECT title, votes, zt_version FROM bug"), "b|3|3");
}

TEST_P(GatheredWritingTest, RecordsMayReferToEachOtherInACircle) {
    const auto transaction = Gather();
    const AdEntityPtr first = Given("bug", {{"title", "a"}});
    Given("bug", {{"title", "b"}, {"parent", "BUG00000001"}});
    Set(first, "parent", "BUG00000002");
    Save(first);
    transaction->Commit();
    EXPECT_EQ(Row("SELECT dbid, parent FROM bug ORDER BY dbid"), "1|2;2|1");
}

TEST_P(GatheredWritingTest, RecordsComeAfterThoseOfLaterTypesThatTheyReferTo) {
    Reopen();
    const auto transaction = Gather();
    Given("user", {{"login", "ann"}});
    Given("desk", {{"owner", "ann"}});
    Given("bug", {{"title", "a"}, {"desk", "1 ann"}});
    transaction->Commit();
    EXPECT_EQ(Row("SELECT desk FROM bug"), "1");
}

TEST_P(GatheredWritingTest, KeyThatOneRecordFreesIsTakenByTheNext) {
    Given("user", {{"login", "ann"}, {"email", "a@x"}});
    const auto transaction = Gather();
    const AdEntityPtr ann = Open("user", "1");
    Set(ann, "login", "eve");
    Set(ann, "email", "e@x");
    Save(ann);
    Given("user", {{"login", "ann"}, {"email", "a@x"}});
    transaction->Commit();
    EXPECT_EQ(Row("SELECT login, email FROM \"user\" ORDER BY dbid"), "eve|e@x;ann|a@x");
}

TEST_P(GatheredWritingTest, HighestVersionThatThereIsEndsTheCount) {
    Given("bug", {{"title", "a"}});
    Base().GetConnection().ExecuteScript("UPDATE bug SET zt_version = 9223372036854775807");
    const auto transaction = Gather();
    const AdEntityPtr bug = Open("bug", "BUG00000001");
    Set(bug, "title", "b");
    EXPECT_THAT(Thrown([&] { CommitFault(bug); }), testing::HasSubstr("zt_version holds"));
}

TEST_P(GatheredWritingTest, RecordThatAnotherWriterChangedFailsTheTransaction) {
    Given("bug", {{"title", "a"}});
    const auto transaction = Gather();
    const AdEntityPtr bug = Open("bug", "BUG00000001");
    Set(bug, "title", "b");
    Save(bug);
    Base().GetConnection().ExecuteScript("UPDATE bug SET zt_version = 7");
    EXPECT_THROW(transaction->Commit(), sql::Error);
    ASSERT_TRUE(Core().Failure());
    EXPECT_EQ(Core().Failure()->Kind(), sql::ErrorKind::Conflict);
    EXPECT_EQ(Row("SELECT title, zt_version FROM bug"), "a|1");
    EXPECT_EQ(Core().GetStatistics().recordsUpdated, 0);
}

TEST_P(GatheredWritingTest, WhatFailedCannotBeCommittedInPart) {
    const auto transaction = Gather();
    Given("bug", {{"title", "a"}, {"source_id", "x"}});
    TakeSourceIdX();
    EXPECT_THROW(transaction->Apply(), sql::Error);
    EXPECT_THROW(transaction->Commit(), sql::Error);
    EXPECT_EQ(Row("SELECT count(*) FROM bug"), "0");
}

TEST_P(GatheredWritingTest, WorkGoesOnAfterAFailureThatIsForgotten) {
    {
        const auto transaction = Gather();
        Given("bug", {{"title", "a"}, {"source_id", "x"}});
        TakeSourceIdX();
        EXPECT_THROW(transaction->Apply(), sql::Error);
    }
    Core().ForgetFailure();
    EXPECT_FALSE(Core().Failure());
    const auto transaction = Gather();
    Given("bug", {{"title", "c"}, {"source_id", "x"}});
    transaction->Commit();
    EXPECT_EQ(Row("SELECT dbid, title FROM bug"), "1|c");
}

TEST_P(GatheredWritingTest, ReaderSeesWhatWasGathered) {
    const auto transaction = Gather();
    Given("bug", {{"title", "a"}});
    RecordReader reader(Base());
    const auto& type = *Base().GetSchema().FindType("bug");
    EXPECT_EQ(reader.Find(type, "BUG00000001")->Text(*type.FindField("title")), "a");
    EXPECT_EQ(reader.Count(type), 1);
}

TEST_P(GatheredWritingTest, ManyChangesAreWrittenOnTheWay) {
    const auto transaction = Gather();
    constexpr int kMany = 5100;
    for (int i = 0; i < kMany; ++i) {
        CommitFault(New("task"));
    }
    EXPECT_NE(Row("SELECT count(*) FROM task"), "0");
    transaction->Commit();
    EXPECT_EQ(Row("SELECT count(*) FROM task"), std::to_string(kMany));
}

// Reports the first difference only, since the others follow from it.
void ExpectSame(const std::vector<std::string>& texts, const std::vector<std::string>& expected) {
    for (std::size_t i = 0; i < std::min(texts.size(), expected.size()); ++i) {
        ASSERT_EQ(texts[i], expected[i]) << "at " << i << (i > 0 ? " after " + texts[i - 1] : "");
    }
    ASSERT_EQ(texts.size(), expected.size());
}

ON_EACH_LAYOUT(GatheredWritingTest);

// What a session is told and what is in the database in the end do not depend on when it is
// written.
class GatheredOrAtOnceTest : public testing::TestWithParam<std::uint64_t> {};

TEST_P(GatheredOrAtOnceTest, WorkAtRandomComesToTheSame) {
    SCOPED_TRACE("seed " + std::to_string(GetParam()));
    constexpr int kGroups = 6;
    RandomWork atOnce(GetParam(), Writing::AtOnce);
    atOnce.Run(kGroups);
    RandomWork gathered(GetParam(), Writing::Gathered);
    gathered.Run(kGroups);
    ExpectSame(gathered.Told(), atOnce.Told());
    ExpectSame(gathered.Tables(), atOnce.Tables());
    RandomWork ahead(GetParam(), Writing::Gathered, RandomWork::Ahead::Much);
    ahead.Run(kGroups);
    ExpectSame(ahead.Told(), atOnce.Told());
    ExpectSame(ahead.Tables(), atOnce.Tables());
}

INSTANTIATE_TEST_SUITE_P(Seeds, GatheredOrAtOnceTest, testing::Range<std::uint64_t>(1, 61));

class OnServerOrInFileTest : public testing::TestWithParam<std::uint64_t> {};

TEST_P(OnServerOrInFileTest, WorkAtRandomComesToTheSame) {
    constexpr int kGroups = 4;
    RandomWork inFile(GetParam(), Writing::AtOnce);
    inFile.Run(kGroups);
    using Ahead = RandomWork::Ahead;
    for (const auto& [writing, ahead] : {std::pair{Writing::AtOnce, Ahead::Nothing},
                                         {Writing::Gathered, Ahead::Nothing},
                                         {Writing::Gathered, Ahead::Much}}) {
        RandomWork onServer(GetParam(), writing, ahead, Engine::Postgres);
        onServer.Run(kGroups);
        ExpectSame(onServer.Told(), inFile.Told());
        ExpectSame(onServer.Tables(), inFile.Tables());
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, OnServerOrInFileTest, testing::Range<std::uint64_t>(101, 109));

// The number of the newest attachment, once that is removed, is given again in a file only.
std::vector<std::string> WithoutAttachmentNumbers(std::vector<std::string> texts) {
    static const std::regex number(
        R"(((?:files=|\n,))[0-9]+(?=\n)|(^|;)[0-9]+(?=\|[0-9]+\|[0-9]+\|files\|))");
    for (std::string& text : texts) {
        text = std::regex_replace(text, number, "$1$2#");
    }
    return texts;
}

class ShardedOrInFileTest : public testing::TestWithParam<std::uint64_t> {};

TEST_P(ShardedOrInFileTest, WorkAtRandomComesToTheSame) {
    constexpr int kGroups = 4;
    RandomWork inFile(GetParam(), Writing::AtOnce);
    inFile.Run(kGroups);
    using Ahead = RandomWork::Ahead;
    for (const auto& [writing, ahead] :
         {std::pair{Writing::AtOnce, Ahead::Nothing}, {Writing::Gathered, Ahead::Much}}) {
        RandomWork sharded(GetParam(), writing, ahead, Engine::PostgresSharded);
        sharded.Run(kGroups);
        ExpectSame(WithoutAttachmentNumbers(sharded.Told()),
                   WithoutAttachmentNumbers(inFile.Told()));
        ExpectSame(WithoutAttachmentNumbers(sharded.Tables()),
                   WithoutAttachmentNumbers(inFile.Tables()));
        EXPECT_THAT(sharded.Faults(), testing::IsEmpty());
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, ShardedOrInFileTest, testing::Values(201, 202));

}  // namespace

}  // namespace recorddb
