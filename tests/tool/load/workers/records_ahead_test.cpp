#include "tool/load/workers/records_ahead.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <csignal>
#include <fstream>
#include <optional>
#include <string>
#include <vector>

#include "temporary_folder.h"
#include "tool/io/source_error.h"
#include "tool/process/interrupt.h"

namespace tool {
namespace {

// Eight records, <record>0</record> and so on, and a walk that has come to them.
class RecordsAheadTest : public testing::Test {
  protected:
    RecordsAheadTest() {
        for (int i = 0; i < 8; ++i) {
            m_text += fmt::format("<record>{}</record>", i);
        }
        m_file = m_folder.Write("data.xml", m_text);
        m_list.emplace(std::vector<std::string>{m_file});
        m_walk.emplace(*m_list, WalkOptions());
        EXPECT_EQ(m_walk->Next(), WalkStep::Data);
    }
    ~RecordsAheadTest() override {
        // Forgets an interruption.
        WatchInterrupts();
    }

    RecordsAhead Ahead(std::size_t records, std::size_t bytes = 1'000'000) {
        return {*m_walk, {records, bytes}, [this](const SourceRecord& record) {
                    m_read += fmt::format("{} ", record.ordinal);
                }};
    }

    // The records up to one of that ordinal: each with what has been read from it on.
    static std::string Up(RecordsAhead& records, std::uint64_t last) {
        std::string told;
        while (records.Next() == WalkStep::Record) {
            told += std::string(records.Record().raw.substr(8, 1)) + "(";
            records.ForEachRead(
                [&told](const SourceRecord& record) { told += std::to_string(record.ordinal); });
            told += records.IsFirst() ? ")first " : ") ";
            if (records.Record().ordinal == last) {
                return told;
            }
        }
        return told + "end";
    }

    TemporaryFolder m_folder;
    std::string m_text;
    std::string m_file;
    std::optional<SourceList> m_list;
    std::optional<SourceWalk> m_walk;
    std::string m_read;
};

TEST_F(RecordsAheadTest, RecordsComeOneByOneAndAreReadTogether) {
    RecordsAhead records = Ahead(3);
    EXPECT_EQ(Up(records, 2), "0(012)first 1(12) 2(2) ");
    EXPECT_EQ(m_read, "0 1 2 ");
    EXPECT_EQ(Up(records, 9), "3(345)first 4(45) 5(5) 6(67)first 7(7) end");
    EXPECT_EQ(records.Next(), WalkStep::DataEnd);
}

TEST_F(RecordsAheadTest, AsMuchIsReadAsTheBytesAllow) {
    RecordsAhead records = Ahead(100, 1);
    EXPECT_EQ(Up(records, 1), "0(0)first 1(1)first ");
}

TEST_F(RecordsAheadTest, BytesAreThoseUpToTheCurrentRecord) {
    RecordsAhead records = Ahead(8);
    Up(records, 0);
    const std::uint64_t first = records.BytesRead();
    Up(records, 7);
    EXPECT_LE(first, records.BytesRead());
    EXPECT_EQ(records.BytesRead(), m_walk->BytesRead());
}

TEST_F(RecordsAheadTest, NothingIsReadAheadOnDemand) {
    RecordsAhead records = Ahead(0);
    EXPECT_FALSE(records.ReadsAhead());
    EXPECT_EQ(records.Next(), WalkStep::Record);
    EXPECT_EQ(records.Record().ordinal, 0);
    EXPECT_EQ(m_walk->Record().ordinal, 0);
    EXPECT_EQ(m_read, "");
}

TEST_F(RecordsAheadTest, FaultIsToldAfterTheRecordsBeforeIt) {
    RecordsAhead records = Ahead(100);
    std::ofstream(m_file, std::ios::app) << "<record>8</record>";
    std::string told;
    try {
        while (records.Next() == WalkStep::Record) {
            told += std::to_string(records.Record().ordinal);
        }
    } catch (const SourceChanged&) {
        told += " changed";
    }
    EXPECT_EQ(told.substr(0, 8), "01234567");
    EXPECT_TRUE(told.ends_with(" changed")) << told;
}

TEST_F(RecordsAheadTest, SignalEndsThemAtOnce) {
    WatchInterrupts();
    RecordsAhead records = Ahead(3);
    Up(records, 0);
    std::raise(SIGTERM);
    EXPECT_EQ(records.Next(), WalkStep::Stopped);
}

}  // namespace
}  // namespace tool
