#include "tool/packet/field_search.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

namespace {

struct FieldCase {
    const char* what;
    const char* record;
    std::optional<std::string> value;  // of the field "id"
};

class FieldValue : public testing::TestWithParam<FieldCase> {};

TEST_P(FieldValue, IsFound) {
    EXPECT_EQ(tool::FindFieldValue(GetParam().record, "id"), GetParam().value);
}

const std::vector<FieldCase> kWellFormed = {
    {"Plain", R"(<record><f name="x">1</f><f name="id">7</f></record>)", "7"},
    {"NamedWithAnotherCase", R"(<record><f name="ID">7</f></record>)", "7"},
    {"InAnyElement", R"(<record><id name='id'>7</id></record>)", "7"},
    {"BehindOtherAttributes", R"(<record><f a="name='id'" b = "" name = "id" >7</f></record>)",
     "7"},
    {"TheLastOfSeveral", R"(<record><f name="id">7</f><f name="Id">8</f></record>)", "8"},
    {"WithoutContent", R"(<record><f name="id"/></record>)", ""},
    {"WithEmptyContent", R"(<record><f name="id"></f></record>)", ""},
    {"WithEscapes", R"(<record><f name="id">&amp;lt;&#x9;&#9;&quot;</f></record>)", "<\t&#9;\""},
    {"WithEscapesInTheName", R"(<record><f name="&#105;d">7</f></record>)", std::nullopt},
    {"AroundAComment", R"(<record><f name="id">7<!-- <x> -->8<?p <y>?>9</f></record>)", "789"},
    {"InACDataSection", R"(<record><f name="id"><![CDATA[<7>]]>&gt;</f></record>)", "<7>>"},
    {"WithBlanks", "<record><f name=\"id\"> 7 \n</f></record>", " 7 \n"},
    {"WithNestedElements", R"(<record><f name="id"><b>7</b></f></record>)", ""},
    {"InACommentOnly", R"(<record><!-- <f name="id">7</f> --></record>)", std::nullopt},
    {"InACDataSectionOnly", R"(<record><f name="x"><![CDATA[<f name="id">7</f>]]></f></record>)",
     std::nullopt},
    {"NotThere", R"(<record><f name="ids">7</f><f id="7">7</f></record>)", std::nullopt},
};
INSTANTIATE_TEST_SUITE_P(InAWellFormedRecord, FieldValue, testing::ValuesIn(kWellFormed),
                         [](const auto& info) { return std::string(info.param.what); });

const std::vector<FieldCase> kBrokenRecords = {
    {"Nothing", "", std::nullopt},
    {"BehindAStrayBracket", R"(<record>1 < 2 <f name="id">7</f>)", "7"},
    {"BehindAnUnknownEntity", R"(<record><f name="x">&nbsp;</f><f name="id">7</f>)", "7"},
    {"BehindAnUnclosedTag", R"(<record><f name="x" <f name="id">7</f>)", "7"},
    {"BehindAnAttributeWithoutQuotes", R"(<record><f a=b name="id">7</f>)", "7"},
    {"WithoutEndTag", R"(<record><f name="id">7)", "7"},
    {"WithAnotherEndTag", R"(<record><f name="id">7</g>)", "7"},
    {"InAnUnclosedTag", R"(<record><f name="id")", ""},
    {"InAnUnclosedCDataSection", R"(<record><f name="id"><![CDATA[7)", "7"},
    {"InAnUnclosedName", R"(<record><f name="id>7</f></record>)", std::nullopt},
    {"CutAfterABracket", "<record><", std::nullopt},
    {"CutInAComment", "<record><!-- ", std::nullopt},
};
INSTANTIATE_TEST_SUITE_P(InABrokenRecord, FieldValue, testing::ValuesIn(kBrokenRecords),
                         [](const auto& info) { return std::string(info.param.what); });

TEST(FindFieldValue, ComparesNamesWithoutRegardToCaseBeyondAscii) {
    EXPECT_EQ(tool::FindFieldValue("<f name='SCHL\xC3\x9CSSEL'>7</f>", "schl\xC3\xBCssel"), "7");
}

TEST(FindFieldValue, FindsNothingWithoutAName) {
    EXPECT_EQ(tool::FindFieldValue("<record><f>7</f></record>", ""), std::nullopt);
}

TEST(FindFieldValue, SurvivesEveryCutOfARecord) {
    const std::string record =
        "<record><f a='b' name=\"id\"><!-- x --><![CDATA[7]]>&lt;</f><?p q?></record>";
    EXPECT_EQ(tool::FindFieldValue(record, "id"), "7<");
    for (std::size_t size = 0; size < record.size(); ++size) {
        std::optional<std::string> value = tool::FindFieldValue(record.substr(0, size), "id");
        EXPECT_LE(value.value_or("").size(), 4U) << record.substr(0, size);
    }
}

}  // namespace
