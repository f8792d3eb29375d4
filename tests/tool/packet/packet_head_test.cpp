#include "tool/packet/packet_head.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using tool::ClassifyHead;
using tool::HeadAnswer;

struct HeadCase {
    const char* what;
    const char* text;
    HeadAnswer answer;
};

class Head : public testing::TestWithParam<HeadCase> {};

TEST_P(Head, IsClassified) {
    EXPECT_EQ(ClassifyHead(GetParam().text, true), GetParam().answer);
}

TEST_P(Head, IsNeverClassifiedOtherwiseByItsBeginning) {
    std::string_view text = GetParam().text;
    for (std::size_t size = 0; size <= text.size(); ++size) {
        HeadAnswer answer = ClassifyHead(text.substr(0, size), false);
        EXPECT_TRUE(answer == HeadAnswer::Undecided || answer == GetParam().answer)
            << text.substr(0, size);
    }
}

const std::vector<HeadCase> kConfigurations = {
    {"Alone", "<configuration/>", HeadAnswer::Configuration},
    {"WithContent", "<configuration><record_type name='bug'/></configuration>",
     HeadAnswer::Configuration},
    {"WithAttributes", "<configuration a='>' b=\"'>\" >", HeadAnswer::Configuration},
    {"BehindTheDeclaration", "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<configuration>",
     HeadAnswer::Configuration},
    {"BehindBlanksAndADeclaration", " \r\n\t<?xml version='1.0'?> <configuration>",
     HeadAnswer::Configuration},
    {"BehindComments", "<!-- <a>x</a> --><!-- y --><configuration>", HeadAnswer::Configuration},
    {"BehindInstructions", "<?go <a>x</a>?><configuration>", HeadAnswer::Configuration},
    {"BehindADocumentType", "<!DOCTYPE a [<!ELEMENT a (b)>]><configuration>",
     HeadAnswer::Configuration},
    {"InsideOtherElements", "<a x='<' y=\">\"><b>\n<configuration>", HeadAnswer::Configuration},
    {"ThatDoesNotEnd", "<configuration a='x", HeadAnswer::Configuration},
};
INSTANTIATE_TEST_SUITE_P(OfConfiguration, Head, testing::ValuesIn(kConfigurations),
                         [](const auto& info) { return std::string(info.param.what); });

const std::vector<HeadCase> kData = {
    {"Nothing", "", HeadAnswer::Data},
    {"OnlyADeclaration", "<?xml version=\"1.0\" encoding=\"UTF-8\"?>", HeadAnswer::Data},
    {"Text", "x<configuration>", HeadAnswer::Data},
    {"TextInAnElement", "<a>x<configuration>", HeadAnswer::Data},
    {"ACDataSection", "<![CDATA[ ]]><configuration>", HeadAnswer::Data},
    {"AnEndTag", "<a></a><configuration>", HeadAnswer::Data},
    {"AnEmptyElement", "<a/><configuration>", HeadAnswer::Data},
    {"AnotherCase", "<Configuration>x", HeadAnswer::Data},
    {"ALongerName", "<configurations>x", HeadAnswer::Data},
    {"APrefix", "<x:configuration>x", HeadAnswer::Data},
    {"Records", "<records><record><field name='a'>configuration</field>", HeadAnswer::Data},
    {"AnOpenComment", "<!-- <configuration>", HeadAnswer::Data},
    {"AnOpenInstruction", "<?go <configuration>", HeadAnswer::Data},
    {"AnOpenDocumentType", "<!DOCTYPE a [ <configuration", HeadAnswer::Data},
    {"AnOpenTag", "<a b='<configuration>", HeadAnswer::Data},
};
INSTANTIATE_TEST_SUITE_P(OfData, Head, testing::ValuesIn(kData),
                         [](const auto& info) { return std::string(info.param.what); });

TEST(ClassifyHead, NeedsMoreUntilSomethingSettlesIt) {
    for (const char* text :
         {"", "  ", "<", "<conf", "<configuration", "<a><b>", "<!-- x", "<![CDA"}) {
        EXPECT_EQ(ClassifyHead(text, false), HeadAnswer::Undecided) << text;
    }
}

TEST(WithPacketDeclaration, PutsTheUsualDeclarationInFront) {
    const std::string declaration = R"(<?xml version="1.0" encoding="UTF-8"?>)";
    EXPECT_EQ(declaration.size(), 38U);
    for (const char* text : {"<a/>\n", "<?xml version=\"1.0\" encoding=\"UTF-8\"?><a/>\n",
                             "<?xml version='1.0' encoding='UTF-16' standalone='yes'?><a/>\n",
                             "\r\n <?xml version=\"1.0\" encoding=\"UTF-8\"?><a/>\n"}) {
        EXPECT_EQ(tool::WithPacketDeclaration(text), declaration + "<a/>\n");
    }
}

TEST(WithPacketDeclaration, LeavesOtherInstructionsAlone) {
    for (const char* text : {"<?xml-stylesheet href='a'?><a/>", "<?xml", " <a/>"}) {
        EXPECT_EQ(tool::WithPacketDeclaration(text), std::string(tool::kPacketDeclaration) + text);
    }
}

TEST(PacketHead, SaysWhetherThePacketIsGuarded) {
    for (const char* const text :
         {"<?ztimport guarded?>", "<?xml version=\"1.0\"?>\n<!-- a -->\n<?ztimport guarded?>\n<a>",
          "<?other?><?ztimport guarded?><record>"}) {
        EXPECT_TRUE(tool::HasGuardedInstruction(text)) << text;
    }
    for (const char* const text :
         {"", "<record>", "<records><?ztimport guarded?>", "<!-- <?ztimport guarded?> --><record>",
          "<?ztimport guarded ?>", "<?ztimport guarded", "text <?ztimport guarded?>"}) {
        EXPECT_FALSE(tool::HasGuardedInstruction(text)) << text;
    }
}

}  // namespace
