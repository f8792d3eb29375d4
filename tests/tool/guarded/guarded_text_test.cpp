#include "tool/guarded/guarded_text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include "platform/core/adtext.h"
#include "platform/foundation/obx_string.h"
#include "random_records.h"
#include "tool/guarded/blank_word.h"
#include "tool/packet/importer_fields.h"
#include "tool/packet/importer_text.h"
#include "tool/packet/source_formats.h"
#include "tool/packet/xml_text.h"

namespace {

using tool::Guarded;
using tool::IsGuarded;
using tool::PacketPlace;
using tool::Restored;

constexpr std::array kPlaces = {PacketPlace::Text,           PacketPlace::Reference,
                                PacketPlace::ListItem,       PacketPlace::HistoryColumn,
                                PacketPlace::AttachmentLine, PacketPlace::None};

// What the importer's parser reads of a field with this value, in a packet that was written as XML.
std::string Carried(const std::string& value) {
    tool::ImporterFieldReader reader;
    tool::ImporterFields fields;
    const std::string problem = reader.Read(
        "<record><f name=\"x\">" + tool::EscapedAttribute(value) + "</f></record>", fields);
    return problem.empty() && fields.size() == 1 ? fields.front().value : "? " + problem;
}

void ForRandomValues(void (*check)(const std::string& value)) {
    const unsigned seed = reading::NewSeed();
    reading::RandomText random(seed);
    for (int round = 0; round < 2'000 && !testing::Test::HasFailure(); ++round) {
        const std::string value = random.Value();
        SCOPED_TRACE("seed " + std::to_string(seed) + ": " + testing::PrintToString(value));
        check(value);
    }
}

TEST(GuardedText, IsRestoredToTheValue) {
    ForRandomValues([](const std::string& value) {
        for (const PacketPlace place : kPlaces) {
            EXPECT_EQ(Restored(Guarded(value, place)), value);
            const Obx_String units = Obx_String::FromUtf8(value);
            EXPECT_EQ(Restored(Guarded(units, place)), units);
        }
    });
}

TEST(GuardedText, StandsInAPacketAsItIs) {
    ForRandomValues([](const std::string& value) {
        const std::string guarded = Guarded(value, PacketPlace::Text);
        EXPECT_EQ(Carried(guarded), guarded);
        EXPECT_FALSE(tool::IsBlankWord(guarded));
    });
}

TEST(GuardedText, IsNotTrimmedAsAReference) {
    ForRandomValues([](const std::string& value) {
        const std::string guarded = Guarded(value, PacketPlace::Reference);
        EXPECT_EQ(Carried(guarded), guarded);
        EXPECT_EQ(tool::Trimmed(guarded), guarded);
        EXPECT_FALSE(tool::IsBlankWord(guarded));
    });
}

TEST(GuardedText, StaysOneItemOfAList) {
    ForRandomValues([](const std::string& value) {
        if (!value.empty()) {
            const std::string guarded = Guarded(value, PacketPlace::ListItem);
            EXPECT_EQ(tool::ReadListItems(Carried("first," + guarded + ",last")),
                      (std::vector<std::string>{"first", guarded, "last"}));
        }
    });
}

TEST(GuardedText, StaysOneColumnOfHistory) {
    ForRandomValues([](const std::string& value) {
        const std::string guarded = Guarded(value, PacketPlace::HistoryColumn);
        const auto lines =
            tool::ReadHistoryLines(Carried("1\t2012\t" + guarded + "\ta\tb\tc\n2\t2012\td"));
        ASSERT_EQ(lines.size(), 2U);
        EXPECT_EQ(lines.front().count, 6U);
        EXPECT_EQ(lines.front().columns[tool::kTimeColumn + 1], guarded);
    });
}

TEST(GuardedText, StaysOneLineOfAnAttachment) {
    ForRandomValues([](const std::string& value) {
        const std::string guarded = Guarded(value, PacketPlace::AttachmentLine);
        const auto attachments =
            tool::ReadAttachmentLines(Carried("1\n" + guarded + "\n3\n" + guarded + "\n"));
        ASSERT_EQ(attachments.size(), 1U);
        EXPECT_EQ(attachments.front().fileName, guarded);
        if (!value.empty()) {
            EXPECT_EQ(attachments.front().description, guarded);
        }
    });
}

std::u16string BaseName(const std::string& path) {
    return std::u16string(AdBasename(Obx_String::FromUtf8(path)).View());
}

TEST(GuardedText, LetsNamesOfFilesBeComparedAsTheyAre) {
    const unsigned seed = reading::NewSeed();
    SCOPED_TRACE("seed " + std::to_string(seed));
    reading::RandomText random(seed);
    for (int round = 0; round < 2'000; ++round) {
        const std::string a = random.Value();
        std::string b = random.Below(2) == 0 ? random.Value() : a;
        std::transform(b.begin(), b.end(), b.begin(), [&random](char c) {
            return c >= 'a' && c <= 'z' && random.Below(2) == 0 ? static_cast<char>(c - 32) : c;
        });
        const auto same = [](const std::string& left, const std::string& right) {
            return Obx_String(BaseName(left)).CompareNoCase(Obx_String(BaseName(right))) == 0;
        };
        ASSERT_EQ(
            same(Guarded(a, PacketPlace::AttachmentLine), Guarded(b, PacketPlace::AttachmentLine)),
            same(a, b))
            << testing::PrintToString(a) << " and " << testing::PrintToString(b);
    }
}

TEST(GuardedText, IsTheSameWhereNoRuleLooksAtIt) {
    for (const std::string_view value :
         {"", "plain", "R&D", "&amp;", "a <b> c", " outer blanks\n", "a,b", "tab\tand\nline",
          "BLANKET", "\xC3\xBC\xE2\x80\x93\xF0\x9F\x90\x9E"}) {
        EXPECT_EQ(Guarded(value, PacketPlace::Text), value);
        EXPECT_FALSE(IsGuarded(Guarded(value, PacketPlace::Text)));
    }
    EXPECT_EQ(Guarded("BLANK", PacketPlace::ListItem), "BLANK");
    EXPECT_EQ(Guarded("a, b", PacketPlace::Reference), "a, b");
    EXPECT_EQ(Guarded("\x01 &lt; ,", PacketPlace::None), "\x01 &lt; ,");
}

TEST(GuardedText, TakesOneUnitForEachCharacter) {
    const Obx_String name = Obx_String::FromUtf8("J\xC3\xB6rg &quot;\x02\tX&quot;");
    EXPECT_EQ(Guarded(name, PacketPlace::HistoryColumn).GetLength(), name.GetLength());
}

TEST(GuardedText, ShowsInTheTextAroundIt) {
    const std::string value = "a&lt;b, BLANK";
    const std::string message = "The tag \"" + Guarded(value, PacketPlace::ListItem) + "\" and \"" +
                                Guarded("BLANK", PacketPlace::Text) + "\"";
    EXPECT_TRUE(IsGuarded(message));
    EXPECT_EQ(Restored(message), "The tag \"" + value + "\" and \"BLANK\"");
}

}  // namespace
