#include "tool/commands/survey_command.h"

#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <sstream>

#include "survey_fixture.h"
#include "tool/process/usage_error.h"

namespace tool {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

class SurveyCommandTest : public SurveyFixture {
  protected:
    SurveyCommandTest() {
        Write("in/a.csv", "id,name\n1,x\n2,y\n");
        m_request.sources = {m_folder.File("in")};
    }
    std::string Run() const {
        std::ostringstream out;
        RunSurvey(m_request, out);
        return out.str();
    }
    std::string ErrorOf() const {
        try {
            return "no error: " + Run();
        } catch (const UsageError& error) {
            return error.what();
        }
    }
    std::string Content(std::string_view name) const {
        std::ifstream file(m_folder.File(name), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    SurveyRequest m_request;
};

TEST_F(SurveyCommandTest, WritesTheDrafts) {
    m_request.writeSchema = m_folder.File("schema.yaml");
    m_request.writeMap = m_folder.File("map.yaml");
    EXPECT_THAT(Run(), HasSubstr("2 rows"));
    EXPECT_THAT(Content("schema.yaml"), HasSubstr("\nrecord_types:\n  a:\n"));
    EXPECT_THAT(Content("map.yaml"), HasSubstr("\nmap: 1\n"));
}

TEST_F(SurveyCommandTest, WritesAReport) {
    Write("in/a.csv", "id,day,note\n1,02.05.1998,x\x01\n2,03.06.1999,x\n3,04.06.1999,x\n4\n");
    m_request.report = m_folder.File("report.json");
    Run();
    const auto report = nlohmann::json::parse(Content("report.json"));
    const auto& source = report.at("sources").at(0);
    EXPECT_EQ(source.at("rows"), 3);
    EXPECT_EQ(source.at("bad_rows").at(0).at("line"), 5);
    EXPECT_EQ(source.at("keys"), nlohmann::json::parse(R"([["id"]])"));
    EXPECT_EQ(source.at("addresses").at(1).at("dates").at("formats").at(0), "%d.%m.%Y");
    EXPECT_EQ(source.at("addresses").at(2).at("forbidden_characters"), 1);
    EXPECT_EQ(source.at("addresses").at(2).at("frequent").at(0).at("value"), "x");
}

TEST_F(SurveyCommandTest, NeverWritesOverAnEarlierDraft) {
    m_request.writeMap = m_folder.Write("map.yaml", "my work");
    EXPECT_THAT(ErrorOf(), HasSubstr("the file exists already"));
    EXPECT_EQ(Content("map.yaml"), "my work");
}

TEST_F(SurveyCommandTest, NeverWritesOverWhatItReads) {
    const std::string before = Content("in/a.csv");
    std::filesystem::create_symlink(m_folder.File("in/a.csv"), m_folder.File("link"));
    m_request.writeSchema = m_folder.File("link");
    EXPECT_THAT(ErrorOf(), HasSubstr("would be written over the source"));
    EXPECT_EQ(Content("in/a.csv"), before);
}

TEST_F(SurveyCommandTest, KeepsItsOutputsApart) {
    m_request.writeSchema = m_folder.File("one.yaml");
    m_request.writeMap = m_folder.Write("one.yaml", "");
    EXPECT_THAT(ErrorOf(), StartsWith("--write-map " + m_folder.File("one.yaml")));
}

TEST_F(SurveyCommandTest, LeavesNoDraftOfNothing) {
    Write("in/a.csv", "id,name\n");
    m_request.writeMap = m_folder.File("map.yaml");
    EXPECT_THAT(ErrorOf(), HasSubstr("there are no rows to draft"));
    EXPECT_FALSE(std::filesystem::exists(m_folder.File("map.yaml")));
}

TEST_F(SurveyCommandTest, RefusesOddSeparatorsAndEncodings) {
    m_request.separator = ",,";
    EXPECT_THAT(ErrorOf(), HasSubstr("--separator"));
    m_request.separator = "tab";
    m_request.encoding = "klingon";
    EXPECT_THAT(ErrorOf(), HasSubstr("there is no encoding 'klingon'"));
}

}  // namespace
}  // namespace tool
