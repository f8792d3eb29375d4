#include "tool/packet/source_formats.h"

#include <gmock/gmock.h>

namespace tool {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(SourceFormatsTest, AHistoryLineHasItsColumns) {
    const auto lines = ReadHistoryLines("7\t2020-01-01T12:00:00+01:00\tann\topen\tNEW\tOPEN");
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines[0].id, "7");
    EXPECT_THAT(lines[0].columns,
                ElementsAre("2020-01-01T12:00:00+01:00", "ann", "open", "NEW", "OPEN", ""));
    EXPECT_EQ(lines[0].count, 6U);
}

TEST(SourceFormatsTest, ALongHistoryLineKeepsItsComment) {
    const auto lines = ReadHistoryLines("7\t2020-01-01\tann\topen\tNEW\tOPEN\twhy\tmore");
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines[0].columns[5], "why");
    EXPECT_EQ(lines[0].count, 8U);
}

TEST(SourceFormatsTest, NoHistoryLineIsLeftOut) {
    const auto lines = ReadHistoryLines("7\r\n\nnever\tnever\n");
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_EQ(lines[0].id, "7");
    EXPECT_EQ(lines[1].id, "");
    EXPECT_EQ(lines[2].columns[kTimeColumn], "never");
}

TEST(SourceFormatsTest, AnAttachmentTakesFourLines) {
    const auto attachments = ReadAttachmentLines("1\na/b.txt\n5\ntext\n2\nc.txt\n6\n\n");
    ASSERT_EQ(attachments.size(), 2U);
    EXPECT_EQ(attachments[0].id, "1");
    EXPECT_EQ(attachments[0].fileName, "a/b.txt");
    EXPECT_EQ(attachments[0].fileSize, "5");
    EXPECT_EQ(attachments[0].description, "text");
    EXPECT_EQ(attachments[1].fileName, "c.txt");
    EXPECT_EQ(attachments[1].description, "");
    EXPECT_TRUE(attachments[0].Complete() && attachments[1].Complete());
}

TEST(SourceFormatsTest, TheLinesLeftOverAreAnIncompleteAttachment) {
    for (const char* const rest : {"2", "2\nc.txt", "2\nc.txt\n6"}) {
        const auto attachments = ReadAttachmentLines(std::string("1\nb.txt\n5\ntext\n") + rest);
        ASSERT_EQ(attachments.size(), 2U);
        EXPECT_TRUE(attachments[0].Complete());
        EXPECT_FALSE(attachments[1].Complete());
        EXPECT_EQ(attachments[1].id, "2");
    }
}

TEST(SourceFormatsTest, ListItemsAreTrimmed) {
    EXPECT_THAT(ReadListItems(" a ,b c,, \t,d"), ElementsAre("a", "b c", "d"));
    EXPECT_THAT(ReadListItems(" , "), IsEmpty());
}

}  // namespace
}  // namespace tool
