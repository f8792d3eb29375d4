#include "tool/load/sinks/held_news.h"

#include <gtest/gtest.h>

namespace tool {
namespace {

class HeldNewsTest : public testing::Test {
  protected:
    static RejectedRecord Reject(std::string_view raw) {
        RejectedRecord record;
        record.raw = raw;
        return record;
    }
    static Loss Lost(const std::string& text) {
        Loss loss;
        loss.text = text;
        return loss;
    }

    std::string Told(NewsTime last = NewsTime::End()) {
        std::string told;
        m_news.Release([&told](const auto& news) { told += Text(news) + ' '; }, last);
        return told;
    }

    HeldNews m_news;

  private:
    static std::string Text(const RejectedRecord& record) { return std::string(record.raw); }
    static std::string Text(const Loss& loss) { return loss.text; }
};

TEST_F(HeldNewsTest, NothingIsTakenUnlessItIsToBeHeld) {
    EXPECT_FALSE(m_news.Take(Reject("a")));
    EXPECT_EQ(Told(), "");
}

TEST_F(HeldNewsTest, NewsAreToldInTheirOrder) {
    m_news.Hold({1});
    EXPECT_TRUE(m_news.Take(Lost("a")));
    EXPECT_TRUE(m_news.Take(Reject("b")));
    m_news.Hold({2});
    EXPECT_TRUE(m_news.Take(Lost("c")));
    EXPECT_EQ(m_news.Rejects(), 1U);
    EXPECT_EQ(Told(), "a b c ");
    EXPECT_EQ(m_news.Rejects(), 0U);
    EXPECT_FALSE(m_news.Take(Lost("d")));
}

TEST_F(HeldNewsTest, NewsOfLaterRecordsStaysHeld) {
    m_news.Hold({1});
    EXPECT_TRUE(m_news.Take(Reject("a")));
    m_news.Hold({3});
    EXPECT_TRUE(m_news.Take(Reject("c")));
    m_news.Hold({2});
    EXPECT_TRUE(m_news.Take(Lost("b")));
    EXPECT_EQ(Told({2}), "a b ");
    EXPECT_EQ(m_news.Rejects(), 1U);
    EXPECT_EQ(Told(), "c ");
}

TEST_F(HeldNewsTest, RejectsThatComeAgainStandWhereTheyStood) {
    m_news.Hold({1});
    EXPECT_TRUE(m_news.Take(Reject("gone")));
    m_news.Hold({2});
    EXPECT_TRUE(m_news.Take(Lost("c")));
    m_news.DropRejects();
    m_news.Hold({1});
    EXPECT_TRUE(m_news.Take(Reject("b")));
    EXPECT_EQ(Told(), "b c ");
}

TEST_F(HeldNewsTest, NewsOfTriesComeBetweenThoseOfTheRecordsThatWereReadAroundThem) {
    m_news.Hold({.read = 2});
    EXPECT_TRUE(m_news.Take(Lost("d")));
    m_news.Hold({.read = 1});
    EXPECT_TRUE(m_news.Take(Reject("a")));
    m_news.Hold({.read = 1, .tries = 2});
    EXPECT_TRUE(m_news.Take(Reject("c")));
    m_news.Hold({.read = 1, .tries = 1});
    EXPECT_TRUE(m_news.Take(Reject("b")));
    EXPECT_EQ(Told(), "a b c d ");
}

TEST_F(HeldNewsTest, TextOfARejectIsCopied) {
    std::string raw = "a";
    m_news.Hold({1});
    EXPECT_TRUE(m_news.Take(Reject(raw)));
    raw = "b";
    EXPECT_EQ(Told(), "a ");
}

}  // namespace
}  // namespace tool
