#include "tool/rejects/known_rejects.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <barrier>
#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

#include "rejects_fixture.h"

namespace {

using namespace rejects;
using testing::ElementsAre;
using testing::HasSubstr;

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

TEST_F(RejectsTest, AreKnownBehindARecordThatHoldsTheInstructionOfGuardedPackets) {
    for (int run = 0; run < 2; ++run) {
        RejectWriter writer(Directory());
        writer.SetConfiguration(kBugs);
        writer.Write(Rejected("<record>\n<?ztimport guarded?>\n</record>"));
        writer.Write(Rejected("<record>b</record>"));
        EXPECT_EQ(writer.Files().size(), run == 0 ? 2U : 0U);
    }
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

}  // namespace
