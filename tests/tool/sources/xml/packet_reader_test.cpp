#include "tool/sources/xml/packet_reader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "reading.h"
#include "tool/io/source_error.h"

namespace {

using reading::PacketOf;
using reading::Read;
using reading::ReadAtEveryChunkSize;
using reading::ReaderOf;
using reading::ToUtf16;
using testing::HasSubstr;
using tool::RecordDefect;

const std::string kReplacement = "\xEF\xBF\xBD";

std::string OnlyPacketOf(std::string_view text) {
    std::vector<Read> records = ReadAtEveryChunkSize(text);
    EXPECT_EQ(records.size(), 1U);
    return records.empty() ? "" : records.front().packet;
}

TEST(PacketReader, MakesEachRecordAPacketOfItsOwn) {
    std::string record = "<record><f name=\"a\">\xC3\xA4</f></record>";
    EXPECT_EQ(OnlyPacketOf("<records>\n" + record + "\n</records>"), PacketOf(record));
}

TEST(PacketReader, ReadsEveryEncodingAlike) {
    std::string record = "<record><f name=\"a\">\xC3\xA4\xF0\x9F\x98\x80</f></record>";
    std::string text = "<?xml version=\"1.0\"?>\n" + record;
    for (const std::string& bytes :
         {text, "\xEF\xBB\xBF" + text, ToUtf16(text, false), "\xFF\xFE" + ToUtf16(text, false),
          ToUtf16(text, true), "\xFE\xFF" + ToUtf16(text, true)}) {
        EXPECT_EQ(OnlyPacketOf(bytes), PacketOf(record));
    }
}

TEST(PacketReader, TellsThePlaceInTheBytesOfTheSource) {
    std::string text = "<a>\xC3\xA4\xF0\x9F\x98\x80</a>\n<record>x</record>";
    std::vector<Read> utf8 = ReadAtEveryChunkSize("\xEF\xBB\xBF" + text);
    std::vector<Read> utf16 = ReadAtEveryChunkSize("\xFF\xFE" + ToUtf16(text, false));
    EXPECT_EQ(utf8.at(0).offset, 17U);
    EXPECT_EQ(utf16.at(0).offset, 24U);
    EXPECT_EQ(utf8.at(0).line, 2U);
    EXPECT_EQ(utf16.at(0).line, 2U);
}

TEST(PacketReader, DisguisesRecordTagsInsideSections) {
    EXPECT_EQ(
        OnlyPacketOf("<record>a<!-- <record> --><![CDATA[b<record>c]]><?p <record> ?></record>"),
        PacketOf("<record>a<!-- <record  --><![CDATA[b<rec]]><![CDATA[ord>c]]><?p <record  ?>"
                 "</record>"));
}

TEST(PacketReader, LeavesOtherSectionsAsTheyAre) {
    std::string record = "<record>a<!-- x --><![CDATA[</record>]]><?p y?></record>";
    EXPECT_EQ(OnlyPacketOf(record), PacketOf(record));
}

TEST(PacketReader, KeepsTheTextOfADisguisedRecord) {
    std::string record = "<record>a<!-- <record> --></record>";
    EXPECT_EQ(reading::Raws(record), std::vector<std::string>{record});
}

// The importer asks of every packet whether it is configuration, and the name of a field element
// is free, so the element of a first field may be called just that.
TEST(PacketReader, KeepsARecordFromPassingForConfiguration) {
    std::string record = "<record><configuration name=\"a\">x</configuration></record>";
    std::vector<Read> records = ReadAtEveryChunkSize("<record>y</record>" + record);
    ASSERT_EQ(records.size(), 2U);
    EXPECT_EQ(records[1].packet, PacketOf("<records/>" + record));
    EXPECT_EQ(records[1].raw, record);
}

struct UndecodableCase {
    const char* what;
    std::string bytes;
    std::string raw;
    std::string error;
};

class Undecodable : public testing::TestWithParam<UndecodableCase> {};

TEST_P(Undecodable, CostsTheRecordInWhichItStands) {
    std::vector<Read> records = ReadAtEveryChunkSize(GetParam().bytes);
    ASSERT_EQ(records.size(), 3U);
    EXPECT_EQ(records[0].defect, RecordDefect::None);
    EXPECT_EQ(records[1].defect, RecordDefect::Undecodable);
    EXPECT_EQ(records[1].packet, "");
    EXPECT_EQ(records[1].raw, GetParam().raw);
    EXPECT_EQ(records[1].error, GetParam().error);
    EXPECT_EQ(records[2].raw, "<record>c</record>");
    EXPECT_EQ(records[2].error, "");
}

std::string ThreeRecords(const std::string& second) {
    return "<record>a</record>\n<record>\nb" + second + "</record>\n<record>c</record>";
}

std::string MendedRecord(const std::string& instead) {
    return "<record>\nb" + instead + "</record>";
}

// "?" becomes half of a surrogate pair.
std::string WithLoneSurrogate(const std::string& text) {
    std::string bytes = ToUtf16(text, false);
    std::size_t at = 2 * text.find('?');
    return "\xFF\xFE" + bytes.replace(at, 2, "\x01\xD8");
}

const std::vector<UndecodableCase> kUndecodableCases = {
    {"InvalidUtf8", ThreeRecords("\xE4x"), MendedRecord(kReplacement + "x"),
     "a byte that is not UTF-8 at byte 29 of the file (line 3)"},
    {"InvalidUtf8BehindAMark", "\xEF\xBB\xBF" + ThreeRecords("\xE4x"),
     MendedRecord(kReplacement + "x"), "a byte that is not UTF-8 at byte 32 of the file (line 3)"},
    {"SeveralBytes", ThreeRecords("\xC3\xA4\xC0\xAF"),
     MendedRecord("\xC3\xA4" + kReplacement + kReplacement),
     "a byte that is not UTF-8 at byte 31 of the file (line 3)"},
    {"ANul", ThreeRecords(std::string(1, '\0')), MendedRecord(kReplacement),
     "a NUL character at byte 29 of the file (line 3)"},
    {"ALoneSurrogate", WithLoneSurrogate(ThreeRecords("?")), MendedRecord(kReplacement),
     "an unpaired UTF-16 surrogate at byte 60 of the file (line 3)"},
};
INSTANTIATE_TEST_SUITE_P(Text, Undecodable, testing::ValuesIn(kUndecodableCases),
                         [](const auto& info) { return std::string(info.param.what); });

TEST(PacketReader, TakesNoNoticeOfUndecodableTextBetweenRecords) {
    std::vector<Read> records =
        ReadAtEveryChunkSize("\xFF<record>a</record>\xFF<record>b</record>");
    ASSERT_EQ(records.size(), 2U);
    EXPECT_EQ(records[0].error, "");
    EXPECT_EQ(records[1].error, "");
    EXPECT_EQ(records[1].offset, 20U);
}

TEST(PacketReader, SaysThatARecordDoesNotEnd) {
    std::vector<Read> records = ReadAtEveryChunkSize("<record>a\xFF<record>b</record>");
    ASSERT_EQ(records.size(), 2U);
    EXPECT_EQ(records[0].packet, "");
    EXPECT_EQ(records[0].raw, "<record>a" + kReplacement);
    EXPECT_EQ(records[0].error,
              "the record does not end: \"</record>\" is missing before the next \"<record>\" or "
              "the end of the file");
}

TEST(PacketReader, SaysThatARecordIsTooLong) {
    tool::ReaderOptions options;
    options.recordLimit = 1024 * 1024;
    std::vector<Read> records =
        reading::ReadRecords("<record>" + std::string(options.recordLimit, 'x'), options);
    ASSERT_EQ(records.size(), 1U);
    EXPECT_EQ(records[0].error,
              "the record is not shorter than 1 MiB, which --max-record-size sets");
}

const std::string kConfiguration = "<configuration>\n<record_type name=\"bug\"/></configuration>\n";

TEST(PacketReader, HandsOutAConfigurationWhole) {
    for (const std::string& bytes :
         {kConfiguration, "\xEF\xBB\xBF<?xml version='1.0' encoding='utf-8'?>" + kConfiguration,
          "\xFE\xFF" +
              ToUtf16("<?xml version=\"1.0\" encoding=\"UTF-16\"?>" + kConfiguration, true)}) {
        for (std::size_t chunk : reading::ChunkSizes()) {
            tool::ReaderOptions options;
            options.chunk = chunk;
            tool::PacketReader reader = ReaderOf(bytes, options);
            EXPECT_TRUE(reader.IsConfiguration());
            EXPECT_EQ(reader.ReadConfiguration(), PacketOf(kConfiguration));
        }
    }
}

TEST(PacketReader, TellsRecordDataFromConfiguration) {
    for (const char* text : {"", "<records/>", "<record>a</record>", "<a/><configuration/>"}) {
        EXPECT_FALSE(ReaderOf(text).IsConfiguration()) << text;
    }
}

TEST(PacketReader, RecognisesAConfigurationAfterALongComment) {
    EXPECT_TRUE(
        ReaderOf("<!--" + std::string(1000000, 'x') + "-->" + kConfiguration).IsConfiguration());
}

tool::SourceError RefusedConfiguration(std::string_view text, std::size_t limit) {
    tool::ReaderOptions options;
    options.configurationLimit = limit;
    tool::PacketReader reader = ReaderOf(text, options);
    try {
        reader.ReadConfiguration();
    } catch (const tool::SourceError& error) {
        return error;
    }
    return tool::SourceError("nothing was refused");
}

TEST(PacketReader, RefusesAConfigurationThatIsNoText) {
    tool::SourceError error = RefusedConfiguration("<configuration>\n\xFF", 100);
    EXPECT_STREQ(error.what(),
                 "text: a byte that is not UTF-8 at byte 16 of the file (line 2); save the "
                 "configuration packet as UTF-8 and run again");
}

TEST(PacketReader, RefusesAConfigurationThatIsTooLarge) {
    tool::SourceError error = RefusedConfiguration("<configuration>" + std::string(86, 'x'), 100);
    EXPECT_STREQ(error.what(),
                 "text: the file is larger than 100 bytes, the most that a configuration packet "
                 "may have; split it");
}

TEST(PacketReader, TakesAConfigurationOfTheLargestSize) {
    EXPECT_STREQ(RefusedConfiguration("<configuration>" + std::string(85, 'x'), 100).what(),
                 "nothing was refused");
}

TEST(PacketReader, ReportsRecordsInsideAConfiguration) {
    std::vector<tool::UnseenRecord> unseen;
    tool::ReaderOptions options;
    options.unseen = [&unseen](const tool::UnseenRecord& seen) { unseen.push_back(seen); };
    ReaderOf("<configuration/>\n<record>a</record>", options).ReadConfiguration();
    ASSERT_EQ(unseen.size(), 1U);
    EXPECT_EQ(unseen[0].kind, tool::UnseenKind::InsideConfiguration);
    EXPECT_EQ(unseen[0].line, 2U);
}

TEST(PacketReader, HandsOutRecordDataWhole) {
    tool::WholePacket packet = ReaderOf("<r><record>a</record><record >b</record></r>").ReadWhole();
    EXPECT_EQ(packet.text, PacketOf("<r><record>a</record><record >b</record></r>"));
    EXPECT_EQ(packet.error, "");
}

TEST(PacketReader, SaysThatAWholePacketIsNoText) {
    tool::WholePacket packet = ReaderOf("<record>\n\xFF</record>").ReadWhole();
    EXPECT_EQ(packet.text, PacketOf("<record>\n" + kReplacement + "</record>"));
    EXPECT_EQ(packet.error, "a byte that is not UTF-8 at byte 9 of the file (line 2)");
}

TEST(PacketReader, RefusesAWholePacketBeyondItsLimit) {
    tool::ReaderOptions options;
    options.wholeLimit = 10;
    EXPECT_THROW(ReaderOf("<record>abc</record>", options).ReadWhole(), tool::SourceError);
}

TEST(PacketReader, CountsTheBytesItHasRead) {
    std::string text = "<record>a</record><record>b</record>";
    tool::PacketReader reader = ReaderOf(text);
    tool::SourceRecord record;
    while (reader.NextRecord(record)) {
    }
    EXPECT_EQ(reader.BytesRead(), text.size());
}

// Gives the same record again and again.
class ManyRecords : public tool::ByteSource {
  public:
    explicit ManyRecords(std::size_t count) : m_left(count * m_record.size()) {}

    std::size_t Read(char* buffer, std::size_t size) override {
        std::size_t begin = m_given % m_record.size();
        std::size_t count = std::min({size, m_left, m_record.size() - begin});
        m_record.copy(buffer, count, begin);
        m_given += count;
        m_left -= count;
        return count;
    }

    const std::string& Name() const override { return m_name; }

  private:
    std::string m_name = "many";
    std::string m_record = "<record>" + std::string(983, 'x') + "</record>";
    std::size_t m_left;
    std::size_t m_given = 0;
};

long PeakMemoryInKilobytes() {
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

TEST(PacketReader, ReadsASourceOfAnySizeInConstantMemory) {
    constexpr std::size_t count = 60000;
    tool::PacketReader reader(std::make_unique<ManyRecords>(count));
    long before = PeakMemoryInKilobytes();
    tool::SourceRecord record;
    std::size_t read = 0;
    while (reader.NextRecord(record)) {
        ++read;
    }
    EXPECT_EQ(read, count);
    EXPECT_GT(reader.BytesRead(), 50U * 1024 * 1024);
    EXPECT_LT(PeakMemoryInKilobytes() - before, 10 * 1024);
}

TEST(PacketReader, NamesAFileThatIsNotThere) {
    try {
        tool::PacketReader reader("/nowhere/at/all.xml", "all.xml");
        FAIL() << "opened a file that is not there";
    } catch (const tool::SourceError& error) {
        EXPECT_STREQ(error.what(),
                     "all.xml: there is no such file; check the path and its spelling");
    }
}

}  // namespace
