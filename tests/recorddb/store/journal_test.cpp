#include "recorddb/journal.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <vector>

#include "open_database.h"
#include "recorddb/errors.h"

namespace recorddb::journal {

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class JournalTest : public OnEachEngine<OpenDatabaseTest> {
  protected:
    Journal& TheJournal() { return m_database->GetJournal(); }

    static JournalEntry SampleEntry() {
        return {.sourceName = "bugs.xml",
                .nextOrdinal = 1000,
                .complete = true,
                .created = 1,
                .updated = 2,
                .history = 3,
                .attachments = 4,
                .duplicates = 5,
                .rejected = 6,
                .skipped = 7,
                .run = 1};
    }

    // Writes an entry in a run of its own, and returns it as it is stored.
    JournalEntry SaveInNewRun(const JournalKey& key, JournalEntry entry) {
        entry.run = TheJournal().BeginRun(key, entry.sourceName).run;
        EXPECT_TRUE(TheJournal().Save(key, entry));
        return entry;
    }

    using Mark = Journal::Mark;
    void Add(Mark mark, const JournalKey& key, const std::vector<std::int64_t>& ordinals) {
        TheJournal().Add(mark, key, ordinals);
    }

    const JournalKey m_key{"aa", "bb"};
};

TEST_P(JournalTest, UnknownSourceIsNotFound) {
    EXPECT_FALSE(TheJournal().Find(m_key).has_value());
}

TEST_P(JournalTest, SavedEntryIsFoundInALaterSession) {
    SaveInNewRun(m_key, SampleEntry());
    Reopen();
    EXPECT_EQ(TheJournal().Find(m_key), SampleEntry());
}

TEST_P(JournalTest, LaterEntryTakesThePlaceOfTheEarlier) {
    SaveInNewRun(m_key, {.sourceName = "old.xml", .nextOrdinal = 10});
    const JournalEntry later = SaveInNewRun(m_key, SampleEntry());
    EXPECT_EQ(TheJournal().Find(m_key), later);
}

TEST_P(JournalTest, SameSourceUnderAnotherConfigurationHasAnEntryOfItsOwn) {
    SaveInNewRun(m_key, SampleEntry());
    EXPECT_FALSE(TheJournal().Find({"aa", "cc"}).has_value());
    EXPECT_FALSE(TheJournal().Find({"cc", "bb"}).has_value());
}

TEST_P(JournalTest, RejectsComeInOrderAndOnce) {
    Add(Mark::Rejected, m_key, {12, 3, 700, 3});
    EXPECT_THAT(TheJournal().Marked(Mark::Rejected, m_key), ElementsAre(3, 12, 700));
    EXPECT_THAT(TheJournal().Marked(Mark::Rejected, {"aa", "cc"}), IsEmpty());
}

TEST_P(JournalTest, RecordsWaitApartFromRejectedOnes) {
    Add(Mark::Rejected, m_key, {1});
    Add(Mark::Waiting, m_key, {3, 2});
    EXPECT_THAT(TheJournal().Marked(Mark::Rejected, m_key), ElementsAre(1));
    EXPECT_THAT(TheJournal().Marked(Mark::Waiting, m_key), ElementsAre(2, 3));
    TheJournal().Remove(Mark::Waiting, m_key, std::array<std::int64_t, 1>{2});
    EXPECT_THAT(TheJournal().Marked(Mark::Waiting, m_key), ElementsAre(3));
}

TEST_P(JournalTest, RemovedRejectIsGone) {
    Add(Mark::Rejected, m_key, {3, 4});
    TheJournal().Remove(Mark::Rejected, m_key, std::array<std::int64_t, 2>{3, 99});
    EXPECT_THAT(TheJournal().Marked(Mark::Rejected, m_key), ElementsAre(4));
}

TEST_P(JournalTest, ForgottenSourceIsAsIfNeverLoaded) {
    const JournalKey other{"aa", "cc"};
    for (const JournalKey& key : {m_key, other}) {
        SaveInNewRun(key, SampleEntry());
        Add(Mark::Rejected, key, {1});
        Add(Mark::Waiting, key, {2});
    }
    TheJournal().Forget(m_key);
    EXPECT_FALSE(TheJournal().Find(m_key).has_value());
    EXPECT_THAT(TheJournal().Marked(Mark::Waiting, m_key), IsEmpty());
    EXPECT_THAT(TheJournal().Marked(Mark::Rejected, m_key), IsEmpty());
    EXPECT_TRUE(TheJournal().Find(other).has_value());
    EXPECT_THAT(TheJournal().Marked(Mark::Rejected, other), ElementsAre(1));
}

TEST_P(JournalTest, EntryAndRejectsGoWithTheTransaction) {
    {
        const auto transaction = m_database->Begin();
        SaveInNewRun(m_key, SampleEntry());
        Add(Mark::Rejected, m_key, {3});
    }
    EXPECT_FALSE(TheJournal().Find(m_key).has_value());
    EXPECT_THAT(TheJournal().Marked(Mark::Rejected, m_key), IsEmpty());
}

TEST_P(JournalTest, FirstRunBeginsWithNothingDone) {
    EXPECT_EQ(TheJournal().BeginRun(m_key, "bugs.xml"),
              (JournalEntry{.sourceName = "bugs.xml", .run = 1}));
}

TEST_P(JournalTest, LaterRunBeginsWithWhatTheEarlierDid) {
    JournalEntry entry = SaveInNewRun(m_key, SampleEntry());
    entry.run = 2;
    EXPECT_EQ(TheJournal().BeginRun(m_key, "other.xml"), entry);
}

TEST_P(JournalTest, EarlierRunCannotSave) {
    const JournalEntry earlier = SaveInNewRun(m_key, SampleEntry());
    const JournalEntry later = TheJournal().BeginRun(m_key, "bugs.xml");
    JournalEntry further = earlier;
    further.nextOrdinal += 100;
    EXPECT_FALSE(TheJournal().Save(m_key, further));
    EXPECT_EQ(TheJournal().Find(m_key), later);
}

TEST_P(JournalTest, HighestRunThatThereIsEndsTheCount) {
    SaveInNewRun(m_key, SampleEntry());
    Run("UPDATE zt_journal SET run = 9223372036854775807");
    EXPECT_THROW(TheJournal().BeginRun(m_key, "bugs.xml"), sql::Error);
    EXPECT_EQ(TheJournal().Find(m_key)->run, 9223372036854775807);
}

TEST_P(JournalTest, EntryWithoutARunIsNotSaved) {
    EXPECT_FALSE(TheJournal().Save(m_key, SampleEntry()));
    EXPECT_FALSE(TheJournal().Find(m_key).has_value());
}

ON_EACH_LAYOUT(JournalTest);

}  // namespace

}  // namespace recorddb::journal
