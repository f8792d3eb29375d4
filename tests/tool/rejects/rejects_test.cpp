#include "tool/rejects/rejects.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <barrier>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

#include "temporary_folder.h"
#include "tool/sources/source_list.h"
#include "tool/sources/xml/packet_reader.h"

namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using tool::RejectedRecord;
using tool::RejectWriter;

const std::string kDeclaration = R"(<?xml version="1.0" encoding="UTF-8"?>)";
const std::string kBugs = "<configuration><record_type name=\"bug\"/></configuration>";
const std::string kUsers = "<configuration><record_type name=\"user\"/></configuration>";

RejectedRecord Rejected(std::string_view raw, const std::string& reason = "no good") {
    RejectedRecord record;
    record.source = "bugs.xml";
    record.number = 12;
    record.line = 340;
    record.reason = reason;
    record.raw = raw;
    return record;
}

class RejectsTest : public testing::Test {
  protected:
    fs::path Directory() const { return m_folder.Path() / "rejects"; }

    std::string Content(const std::string& name) const {
        std::ostringstream content;
        content << std::ifstream(Directory() / name).rdbuf();
        return content.str();
    }

    // The directory's files, read as the sources of a load: configurations as they are, records as
    // their raw text.
    std::vector<std::string> ReadBack() const {
        tool::SourceList list({Directory().string()});
        std::vector<std::string> texts;
        for (const tool::Source& source : list.Sources()) {
            tool::PacketReader reader(source.path, source.name);
            if (reader.IsConfiguration()) {
                texts.push_back(reader.ReadConfiguration());
            }
            tool::SourceRecord record;
            while (!reader.IsConfiguration() && reader.NextRecord(record)) {
                texts.emplace_back(record.raw);
            }
        }
        return texts;
    }

    std::vector<std::string> Names() const {
        tool::SourceList list({Directory().string()});
        std::vector<std::string> names;
        for (const tool::Source& source : list.Sources()) {
            names.push_back(source.path.filename().string());
        }
        return names;
    }

    TemporaryFolder m_folder;
};

TEST_F(RejectsTest, MakeNothingUntilARecordIsRejected) {
    RejectWriter writer(Directory());
    writer.SetConfiguration(kBugs);
    EXPECT_FALSE(fs::exists(Directory()));
    EXPECT_EQ(writer.Count(), 0U);
}

TEST_F(RejectsTest, StandUnderACommentWithPlaceAndReason) {
    RejectWriter writer(Directory());
    writer.SetConfiguration(kBugs);
    writer.Write(Rejected("<record>a</record>", "\nvalue \"x\" of field y"));
    EXPECT_EQ(Content("0001-records.xml"),
              kDeclaration +
                  "\n<records>\n<!-- bugs.xml, record 12, line 340: value \"x\" of field y "
                  "-->\n<record>a</record>\n</records>\n");
    EXPECT_EQ(Content("0001-configuration.xml"), kDeclaration + kBugs);
    EXPECT_EQ(writer.Count(), 1U);
}

TEST_F(RejectsTest, AreCompleteAfterEachRecord) {
    RejectWriter writer(Directory());
    writer.SetConfiguration(kBugs);
    for (const char* raw : {"<record>a</record>", "<record>bb</record>", "<record></record>"}) {
        writer.Write(Rejected(raw));
        EXPECT_THAT(Content("0001-records.xml"),
                    testing::EndsWith(std::string(raw) + "\n</records>\n"));
    }
    EXPECT_THAT(ReadBack(), ElementsAre(kDeclaration + kBugs, "<record>a</record>",
                                        "<record>bb</record>", "<record></record>"));
}

TEST_F(RejectsTest, MakeAPairOfFilesForEachConfiguration) {
    RejectWriter writer(Directory());
    writer.SetConfiguration(kUsers);
    writer.Write(Rejected("<record>u</record>"));
    writer.SetConfiguration("<configuration><record_type name=\"never\"/></configuration>");
    writer.SetConfiguration(kBugs);
    writer.Write(Rejected("<record>b</record>"));
    EXPECT_THAT(ReadBack(), ElementsAre(kDeclaration + kUsers, "<record>u</record>",
                                        kDeclaration + kBugs, "<record>b</record>"));
    EXPECT_EQ(writer.Files().size(), 4U);
}

TEST_F(RejectsTest, GoOnInTheSameFilesUnderTheSameConfiguration) {
    RejectWriter writer(Directory());
    writer.SetConfiguration(kBugs);
    writer.Write(Rejected("<record>a</record>"));
    writer.SetConfiguration(kBugs);
    writer.Write(Rejected("<record>b</record>"));
    EXPECT_THAT(Names(), ElementsAre("0001-configuration.xml", "0001-records.xml"));
}

TEST_F(RejectsTest, NeedNoConfiguration) {
    RejectWriter writer(Directory());
    writer.Write(Rejected("<record>a</record>"));
    EXPECT_THAT(Names(), ElementsAre("0001-records.xml"));
}

TEST_F(RejectsTest, LeaveTheFilesOfEarlierRuns) {
    for (int run = 0; run < 2; ++run) {
        RejectWriter writer(Directory());
        writer.SetConfiguration(kBugs);
        writer.Write(Rejected(run == 0 ? "<record>a</record>" : "<record>b</record>"));
    }
    EXPECT_THAT(Names(), ElementsAre("0001-configuration.xml", "0001-records.xml",
                                     "0002-configuration.xml", "0002-records.xml"));
    EXPECT_THAT(Content("0001-records.xml"), HasSubstr("<record>a</record>"));
}

TEST_F(RejectsTest, AreNotWrittenAgainWhereTheyStandAlready) {
    const std::string odd = "<record>\n<!-- a line of its own -->\n</record>";
    for (int run = 0; run < 3; ++run) {
        RejectWriter writer(Directory());
        writer.SetConfiguration(kBugs);
        writer.Write(Rejected("<record>a</record>"));
        writer.Write(Rejected(odd));
        EXPECT_EQ(writer.Count(), 2U);
    }
    EXPECT_THAT(ReadBack(), ElementsAre(kDeclaration + kBugs, "<record>a</record>", odd));
}

TEST_F(RejectsTest, AreTheSameForAnotherReason) {
    for (const char* reason : {"waits for a", "waits for a, which was rejected too"}) {
        RejectWriter writer(Directory());
        writer.SetConfiguration(kBugs);
        writer.Write(Rejected("<record>b</record>", reason));
    }
    EXPECT_THAT(ReadBack(), ElementsAre(kDeclaration + kBugs, "<record>b</record>"));
}

struct LeftOff {
    const char* name;
    std::string end;  // of the file, after its one whole entry
};

class RejectsLeftOff : public RejectsTest, public testing::WithParamInterface<LeftOff> {};

TEST_P(RejectsLeftOff, AreLeftAsTheyAreAndKnownAsFarAsTheyAreWhole) {
    {
        RejectWriter writer(Directory());
        writer.SetConfiguration(kBugs);
        writer.Write(Rejected("<record>a</record>"));
    }
    std::string text = Content("0001-records.xml");
    text.resize(text.rfind("</records>"));
    text += GetParam().end;
    std::ofstream(Directory() / "0001-records.xml") << text;
    RejectWriter writer(Directory());
    writer.SetConfiguration(kBugs);
    writer.Write(Rejected("<record>a</record>"));
    writer.Write(Rejected("<record>whole</record>"));
    EXPECT_EQ(Content("0001-records.xml"), text);
    EXPECT_THAT(Content("0002-records.xml"),
                testing::AllOf(HasSubstr("<record>whole</record>"),
                               testing::Not(HasSubstr("<record>a</record>"))));
}

INSTANTIATE_TEST_SUITE_P(
    Cases, RejectsLeftOff,
    testing::Values(
        LeftOff{"Nowhere", ""}, LeftOff{"InTheComment", "<!-- bugs.xml, rec"},
        LeftOff{"BehindTheComment", "<!-- bugs.xml, record 12, line 340: no good -->\n"},
        LeftOff{"InTheRecord", "<!-- bugs.xml, record 12, line 340: no good -->\n<record>who"},
        LeftOff{"InTheClosingTag", "</reco"}),
    [](const auto& test) { return std::string(test.param.name); });

TEST_F(RejectsTest, ThatAPersonHasMendedAreLeftAsTheyAre) {
    fs::create_directory(Directory());
    const std::string mended =
        "<records><!-- bugs.xml, record 12, line 340: no --><record>b</record></records><!-- ok "
        "-->";
    std::ofstream(Directory() / "0001-records.xml") << mended;
    RejectWriter writer(Directory());
    writer.Write(Rejected("<record>a</record>"));
    EXPECT_EQ(Content("0001-records.xml"), mended);
    EXPECT_THAT(Content("0002-records.xml"), HasSubstr("<record>a</record>"));
}

TEST_F(RejectsTest, DoNotReachThroughLinks) {
    fs::create_directory(Directory());
    const std::string elsewhere = m_folder.Write("elsewhere", "<records>\n<record>a</record>\n");
    fs::create_symlink(elsewhere, Directory() / "0001-records.xml");
    fs::create_symlink(m_folder.File("nowhere"), Directory() / "0002-records.xml");
    RejectWriter writer(Directory());
    writer.Write(Rejected("<record>a</record>"));
    EXPECT_EQ(Content("0001-records.xml"), "<records>\n<record>a</record>\n");
    EXPECT_FALSE(fs::exists(m_folder.File("nowhere")));
    EXPECT_THAT(writer.Files(), ElementsAre(Directory() / "0003-records.xml"));
}

TEST_F(RejectsTest, DoNotWaitForAPipe) {
    fs::create_directory(Directory());
    ASSERT_EQ(mkfifo((Directory() / "0001-records.xml").c_str(), 0600), 0);
    RejectWriter writer(Directory());
    writer.Write(Rejected("<record>a</record>"));
    EXPECT_THAT(writer.Files(), ElementsAre(Directory() / "0002-records.xml"));
}

TEST_F(RejectsTest, OfTwoLoadsGoToFilesOfTheirOwn) {
    // Each round begins with an empty folder, for which both load at the same instant.
    constexpr int rounds = 20;
    std::barrier together(2);
    const auto load = [&](const std::string& name) {
        for (int round = 0; round < rounds; ++round) {
            RejectWriter writer(Directory() / std::to_string(round));
            writer.SetConfiguration(kBugs);
            together.arrive_and_wait();
            writer.Write(Rejected("<record>" + name + "</record>"));
            writer.Write(Rejected("<record>more of " + name + "</record>"));
            writer.Sync();
        }
    };
    std::thread other(load, "b");
    load("a");
    other.join();
    for (int round = 0; round < rounds; ++round) {
        std::string all;
        for (const auto& entry : fs::directory_iterator(Directory() / std::to_string(round))) {
            all += Content(fs::relative(entry.path(), Directory()).string());
        }
        for (const char* name : {"a", "more of a", "b", "more of b"}) {
            EXPECT_THAT(all, HasSubstr("<record>" + std::string(name) + "</record>"));
        }
    }
}

TEST_F(RejectsTest, AreNotKnownFromAFileThatIsBeingWritten) {
    {
        RejectWriter one(Directory());
        RejectWriter other(Directory());
        one.Write(Rejected("<record>a</record>"));
        other.Write(Rejected("<record>a</record>"));
        EXPECT_EQ(other.Files().size(), 1U);
    }
    RejectWriter third(Directory());
    third.Write(Rejected("<record>a</record>"));
    EXPECT_EQ(third.Files().size(), 0U);
}

TEST_F(RejectsTest, AreNotKnownFromABeginningOfTheirText) {
    const std::string text = "<record>\n<!-- x, record 1, line 1: no -->\nlast</record>";
    {
        RejectWriter writer(Directory());
        writer.Write(Rejected(text));
    }
    std::string content = Content("0001-records.xml");
    content.resize(content.find("last"));
    std::ofstream(Directory() / "0001-records.xml") << content;
    RejectWriter writer(Directory());
    writer.Write(Rejected(text));
    EXPECT_THAT(Content("0002-records.xml"), HasSubstr(text));
}

TEST_F(RejectsTest, GoToNewFilesWhenSomebodyHasSavedTheirs) {
    RejectWriter writer(Directory());
    writer.Write(Rejected("<record>a</record>"));
    writer.Sync();
    fs::remove(Directory() / "0001-records.xml");
    std::ofstream(Directory() / "0001-records.xml") << "mended";
    writer.Write(Rejected("<record>b</record>"));
    writer.Sync();
    EXPECT_EQ(Content("0001-records.xml"), "mended");
    EXPECT_THAT(Content("0002-records.xml"), HasSubstr("<record>b</record>"));
}

TEST_F(RejectsTest, ThatSomebodyHasChangedBeforeTheyAreSafeEndTheLoad) {
    RejectWriter writer(Directory());
    writer.Write(Rejected("<record>a</record>"));
    fs::remove(Directory() / "0001-records.xml");
    EXPECT_THROW(writer.Sync(), std::system_error);
}

TEST_F(RejectsTest, LeaveNothingButTheirFiles) {
    RejectWriter writer(Directory());
    writer.SetConfiguration(kBugs);
    writer.Write(Rejected("<record>a</record>"));
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(Directory())) {
        names.push_back(entry.path().filename().string());
    }
    EXPECT_THAT(names, testing::UnorderedElementsAre("0001-configuration.xml", "0001-records.xml"));
}

struct OtherReject {
    const char* difference;
    const char* configuration;
    std::uint64_t number;
    const char* reason;
    const char* raw;
};

class OtherRejects : public RejectsTest, public testing::WithParamInterface<OtherReject> {};

TEST_P(OtherRejects, AreWrittenBesideThoseThatStandThere) {
    for (const bool second : {false, true}) {
        RejectWriter writer(Directory());
        writer.SetConfiguration(second ? GetParam().configuration : kBugs);
        RejectedRecord record = Rejected(second ? GetParam().raw : "<record>a</record>",
                                         second ? GetParam().reason : "no good");
        record.number = second ? GetParam().number : 12;
        writer.Write(record);
    }
    EXPECT_EQ(Names().size(), 4U);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, OtherRejects,
    testing::Values(OtherReject{"configuration", kUsers.c_str(), 12, "no good",
                                "<record>a</record>"},
                    OtherReject{"number", kBugs.c_str(), 13, "no good", "<record>a</record>"},
                    OtherReject{"text", kBugs.c_str(), 12, "no good", "<record>b</record>"},
                    OtherReject{"textBehindAComment", kBugs.c_str(), 12, "no good",
                                "<record>a\n<!-- a -->\nb</record>"}),
    [](const auto& test) { return std::string(test.param.difference); });

TEST_F(RejectsTest, AreNumberedAfterTheHighestNumber) {
    fs::create_directory(Directory());
    for (const char* name :
         {"0041-records.xml", "0090-other.xml", "x.xml", "0007-configuration.xml"}) {
        std::ofstream(Directory() / name) << "x";
    }
    RejectWriter writer(Directory());
    writer.Write(Rejected("<record>a</record>"));
    EXPECT_THAT(writer.Files(), ElementsAre(Directory() / "0042-records.xml"));
}

TEST_F(RejectsTest, EndWhenTheNumbersAreUsedUp) {
    fs::create_directory(Directory());
    std::ofstream(Directory() / "9999-records.xml") << "x";
    RejectWriter writer(Directory());
    EXPECT_THROW(writer.Write(Rejected("<record>a</record>")), std::system_error);
}

TEST_F(RejectsTest, OfWhatIsNoTextSayWhatStandsInItsPlace) {
    RejectWriter writer(Directory());
    RejectedRecord record = Rejected("<record>\xEF\xBF\xBD</record>");
    record.defect = tool::RecordDefect::Undecodable;
    writer.Write(record);
    EXPECT_THAT(Content("0001-records.xml"),
                HasSubstr("(U+FFFD stands where the source holds what is no text) -->\n"
                          "<record>\xEF\xBF\xBD</record>\n"));
}

TEST_F(RejectsTest, OfTooLongRecordsAreTheCommentAlone) {
    RejectWriter writer(Directory());
    RejectedRecord record = Rejected("");
    record.defect = tool::RecordDefect::TooLong;
    writer.Write(record);
    EXPECT_THAT(Content("0001-records.xml"),
                HasSubstr("(the record is not repeated here: take it from the source) -->\n"
                          "</records>"));
}

TEST_F(RejectsTest, DoNotSwallowEachOther) {
    const std::vector<std::string> raws = {
        "<record>a<![CDATA[ x</record>", "<record>b<![CDATA[ ]]></record>",
        "<record>c<!-- x</record>",      "<record>d<!-- --></record>",
        "<record>e<?p x</record>",       "<record>f<?p ?></record>",
    };
    RejectWriter writer(Directory());
    for (const std::string& raw : raws) {
        RejectedRecord record = Rejected(raw);
        record.openSection = raw.find(" x<") != std::string::npos;
        writer.Write(record);
    }
    std::vector<std::string> read = ReadBack();
    ASSERT_EQ(read.size(), raws.size());
    for (std::size_t i = 0; i < raws.size(); ++i) {
        EXPECT_TRUE(read[i].starts_with(raws[i])) << read[i];
    }
}

TEST_F(RejectsTest, NeedADirectory) {
    m_folder.Write("file", "x");
    EXPECT_THROW(RejectWriter(m_folder.Path() / "file"), std::system_error);
    EXPECT_THROW(RejectWriter(m_folder.Path() / "file" / "below"), std::system_error);
}

TEST_F(RejectsTest, MakeTheirDirectoryWithItsParents) {
    RejectWriter writer(m_folder.Path() / "rejects" / "of" / "today");
    writer.Write(Rejected("<record>a</record>"));
    EXPECT_TRUE(fs::exists(Directory() / "of" / "today" / "0001-records.xml"));
}

struct CommentCase {
    const char* what;
    std::string text;
    std::string comment;
};

class Comments : public testing::TestWithParam<CommentCase> {};

TEST_P(Comments, AreSafe) {
    EXPECT_EQ(tool::CommentText(GetParam().text), GetParam().comment);
}

const std::vector<CommentCase> kCommentCases = {
    {"Plain", "a \xC3\xA4 <b>", "a \xC3\xA4 <b>"},
    {"Lines", "\n a\r\nb\tc\n", "a  b c"},
    {"ControlCharacters", std::string("a\0\x01\x7F z", 6), "a\xEF\xBF\xBD   z"},
    {"Dashes", "--a---b-->c", "- -a- - -b- ->c"},
    {"ADashAtTheEnd", "a-", "a-"},
    {"RecordTags", "<record><record>", "<record ><record >"},
    {"NotUtf8", "a\xFF", "a\xEF\xBF\xBD"},
    {"Noncharacters", "a\uFFFE\uFFFF", "a\uFFFD\uFFFD"},
    {"Nothing", " \n", ""},
};
INSTANTIATE_TEST_SUITE_P(Of, Comments, testing::ValuesIn(kCommentCases),
                         [](const auto& info) { return std::string(info.param.what); });

}  // namespace
