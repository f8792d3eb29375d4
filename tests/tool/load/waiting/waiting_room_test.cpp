#include "tool/load/waiting/waiting_room.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace tool {
namespace {

class WaitingRoomTest : public testing::Test {
  protected:
    void Take(Place place, const std::string& id, std::vector<std::string> keys,
              bool mayCreate = true) {
        SourceRecord record;
        record.packet = "packet of " + std::to_string(place);
        m_room.Take(place, record, {id, std::move(keys), mayCreate});
    }

    WaitingRoom m_room;
};

TEST_F(WaitingRoomTest, RecordIsReadyWhenTheLastOfItsKeysHasCome) {
    Take(1, "a", {"k1", "k2"});
    m_room.Arrive("k1");
    m_room.Arrive("k1");
    EXPECT_FALSE(m_room.FirstReady());
    m_room.Arrive("k2");
    EXPECT_EQ(m_room.FirstReady(), 1U);
}

TEST_F(WaitingRoomTest, KeyThatNobodyWaitsForChangesNothing) {
    Take(1, "a", {"k1"});
    m_room.Arrive("other");
    EXPECT_FALSE(m_room.FirstReady());
    EXPECT_EQ(m_room.FirstWaiting(), 1U);
}

TEST_F(WaitingRoomTest, FirstOfTheReadyOnesIsTheFirstOfTheSources) {
    Take(1, "a", {"k1"});
    Take(2, "b", {"k2"});
    Take(3, "c", {"k1"});
    m_room.Arrive("k2");
    EXPECT_EQ(m_room.FirstReady(), 2U);
    m_room.Arrive("k1");
    EXPECT_EQ(m_room.FirstReady(), 1U);
    m_room.Leave(1);
    m_room.Leave(2);
    EXPECT_EQ(m_room.FirstReady(), 3U);
}

TEST_F(WaitingRoomTest, RecordComesBackAsItWas) {
    std::string raw = "<record>a</record>";
    const std::vector<RowSpan> rows = {{1, 2, 3}, {4, 5, 6}};
    SourceRecord record;
    record.packet = "<?xml?>" + raw;
    record.raw = raw;
    record.source = "bugs.csv";
    record.unit = "row";
    record.ordinal = 6;
    record.number = 7;
    record.line = 9;
    record.guarded = true;
    record.openSection = true;
    record.rows = &rows;
    m_room.Take(1, record, {"a", {"k"}});
    WaitingRecord kept;
    m_room.Read(1, kept);
    const SourceRecord& back = kept.Record();
    EXPECT_EQ(back.packet, record.packet);
    EXPECT_EQ(back.raw, raw);
    EXPECT_EQ(back.source, "bugs.csv");
    EXPECT_EQ(back.unit, "row");
    EXPECT_EQ(back.ordinal, 6U);
    EXPECT_EQ(back.Number(), 7U);
    EXPECT_EQ(back.line, 9U);
    EXPECT_TRUE(back.guarded);
    EXPECT_TRUE(back.openSection);
    ASSERT_NE(back.rows, nullptr);
    EXPECT_EQ(*back.rows, rows);
}

TEST_F(WaitingRoomTest, RawTextThatIsNoEndOfThePacketIsKeptToo) {
    SourceRecord record;
    record.packet = "<a/>";
    record.raw = "something else";
    m_room.Take(1, record, {"a", {"k"}});
    WaitingRecord kept;
    m_room.Read(1, kept);
    EXPECT_EQ(kept.Record().packet, "<a/>");
    EXPECT_EQ(kept.Record().raw, "something else");
    EXPECT_EQ(kept.Record().rows, nullptr);
}

TEST_F(WaitingRoomTest, LaterRecordsOfAnIdWaitOneBehindTheOther) {
    Take(1, "a", {"k"});
    EXPECT_TRUE(m_room.Bars("a", true));
    EXPECT_FALSE(m_room.Bars("b", true));
    Take(2, "a", {});
    Take(3, "a", {});
    m_room.Arrive("k");
    EXPECT_EQ(m_room.FirstReady(), 1U);
    m_room.Leave(1);
    EXPECT_EQ(m_room.FirstReady(), 2U);
    m_room.WaitOn(2, {"a", {"k2"}});
    EXPECT_FALSE(m_room.FirstReady());
    m_room.Arrive("k2");
    m_room.Leave(2);
    EXPECT_EQ(m_room.FirstReady(), 3U);
    m_room.Leave(3);
    EXPECT_TRUE(m_room.IsEmpty());
    EXPECT_FALSE(m_room.Bars("a", true));
}

TEST_F(WaitingRoomTest, RecordsWithoutAnIdDoNotWaitForEachOther) {
    Take(1, "", {"k"});
    EXPECT_FALSE(m_room.Bars("", true));
}

TEST_F(WaitingRoomTest, RecordsThatLackThemselvesLetTheOneThroughThatCreatesThem) {
    Take(1, "a", {"a"}, false);
    EXPECT_TRUE(m_room.Bars("a", false));
    Take(2, "a", {}, false);
    EXPECT_FALSE(m_room.Bars("a", true));
    Take(3, "a", {"k"}, true);
    EXPECT_TRUE(m_room.Bars("a", true));
}

TEST_F(WaitingRoomTest, RecordThatWasTakenInAndIsNotHeldBackIsReady) {
    Take(1, "a", {});
    EXPECT_EQ(m_room.FirstReady(), 1U);
}

TEST_F(WaitingRoomTest, WhatIsUndoneIsAsBefore) {
    Take(1, "a", {"k"});
    m_room.Keep();
    m_room.Arrive("k");
    m_room.Leave(1);
    Take(2, "b", {"k"});
    m_room.Undo();
    EXPECT_FALSE(m_room.IsEmpty());
    EXPECT_EQ(m_room.FirstWaiting(), 1U);
    EXPECT_FALSE(m_room.Bars("b", true));
    m_room.Arrive("k");
    EXPECT_EQ(m_room.FirstReady(), 1U);
}

TEST_F(WaitingRoomTest, FirstUndoneLeavesAnEmptyRoom) {
    Take(1, "a", {"k"});
    m_room.Undo();
    EXPECT_TRUE(m_room.IsEmpty());
    Take(1, "a", {"k"});
    m_room.Arrive("k");
    EXPECT_EQ(m_room.FirstReady(), 1U);
}

TEST(TextFilterTest, HoldsWhatWasAdded) {
    TextFilter filter;
    filter.Add("a");
    EXPECT_TRUE(filter.MayHold("a"));
    EXPECT_FALSE(filter.MayHold("b"));
    filter.Clear();
    EXPECT_FALSE(filter.MayHold("a"));
}

TEST(TextFilterTest, SaysThatItMayHoldAnythingOnceItIsFull) {
    TextFilter filter;
    for (int i = 0; i < 200'001; ++i) {
        filter.Add(std::to_string(i));
    }
    EXPECT_TRUE(filter.MayHold("b"));
}

}  // namespace
}  // namespace tool
