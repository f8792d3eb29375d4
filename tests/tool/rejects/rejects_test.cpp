#include "tool/rejects/rejects.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <system_error>
#include <vector>

#include "rejects_fixture.h"

namespace {

using namespace rejects;
using testing::ElementsAre;
using testing::HasSubstr;

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
