#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "random_records.h"
#include "reading.h"

namespace {

using reading::RandomText;
using reading::Read;

std::size_t CountRecordTags(std::string_view text) {
    std::size_t count = 0;
    for (std::size_t at = text.find("<record>"); at != std::string_view::npos;
         at = text.find("<record>", at + 1)) {
        ++count;
    }
    return count;
}

TEST(RandomCutting, ReproducesTheRecordsOfAnyFile) {
    unsigned seed = reading::NewSeed();
    SCOPED_TRACE("seed " + std::to_string(seed));
    RandomText random(seed);
    for (int round = 0; round < 300; ++round) {
        std::vector<std::string> records;
        std::string text = random.Gap();
        for (std::size_t count = random.Below(6); count > 0; --count) {
            records.push_back(random.Record());
            text += records.back() + random.Gap();
        }
        ASSERT_EQ(reading::Raws(text), records) << text;
    }
}

TEST(RandomCutting, ReadsAnyTextAlikeInChunksOfAnySize) {
    unsigned seed = reading::NewSeed();
    SCOPED_TRACE("seed " + std::to_string(seed));
    RandomText random(seed);
    for (int round = 0; round < 1000 && !testing::Test::HasFailure(); ++round) {
        tool::ReaderOptions options;
        options.recordLimit = 20 + random.Below(300);
        reading::ReadAtEveryChunkSize(random.Soup(), options);
    }
}

TEST(RandomCutting, HandsOutOneRecordAPacketOfAnyText) {
    unsigned seed = reading::NewSeed();
    SCOPED_TRACE("seed " + std::to_string(seed));
    RandomText random(seed);
    std::size_t packets = 0;
    for (int round = 0; round < 3000; ++round) {
        std::string text = random.Soup();
        std::uint64_t end = 0;
        for (const Read& record : reading::ReadRecords(text)) {
            ASSERT_EQ(record.packet.empty(), record.defect != tool::RecordDefect::None) << text;
            ASSERT_EQ(CountRecordTags(record.packet), record.packet.empty() ? 0U : 1U) << text;
            ASSERT_GE(record.offset, end) << text;
            ASSERT_TRUE(std::string_view(text).substr(record.offset).starts_with("<record>"));
            end = record.offset + 8;
            packets += record.packet.empty() ? 0U : 1U;
        }
    }
    EXPECT_GT(packets, 100U);
}

}  // namespace
