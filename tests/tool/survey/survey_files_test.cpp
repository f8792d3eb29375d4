#include "tool/survey/survey_files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "survey_fixture.h"
#include "tool/io/source_error.h"

namespace tool {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;

class SurveyFilesTest : public SurveyFixture {
  protected:
    // Of each group: name, patterns, number of files.
    std::vector<std::string> Groups(const std::vector<std::string>& arguments) const {
        const SurveyFiles files(arguments);
        std::vector<std::string> texts;
        for (const SurveyGroup& group : files.Groups()) {
            texts.push_back(group.name + ": " + group.patterns.at(0) + ", " +
                            std::to_string(group.files.size()));
        }
        return texts;
    }
    std::string ErrorOf(const std::vector<std::string>& arguments) const {
        try {
            const SurveyFiles files(arguments);
            return "";
        } catch (const SourceError& error) {
            return error.what();
        }
    }
};

TEST_F(SurveyFilesTest, ReadsFoldersAndAllBelow) {
    Write("b.csv", "");
    Write("a.jsonl", "");
    Write("deep/er/c.json", "");
    Write(".hidden/d.csv", "");
    Write("note.txt", "");
    EXPECT_THAT(Groups({m_folder.Path().string()}),
                ElementsAre("a: a.jsonl, 1", "b: b.csv, 1", "c: deep/er/c.json, 1"));
    EXPECT_THAT(SurveyFiles({m_folder.Path().string()}).NotRead(),
                ElementsAre(m_folder.File("note.txt")));
}

TEST_F(SurveyFilesTest, OpensNothingInFoldersThatIsNoFile) {
    Write("b.csv", "");
    ASSERT_EQ(::mkfifo(m_folder.File("a.csv").c_str(), 0600), 0);
    std::filesystem::create_directory_symlink(m_folder.Path(), m_folder.File("c"));
    EXPECT_THAT(Groups({m_folder.Path().string()}), ElementsAre("b: b.csv, 1"));
    EXPECT_THAT(SurveyFiles({m_folder.Path().string()}).NotRead(),
                ElementsAre(m_folder.File("a.csv"), m_folder.File("c")));
}

TEST_F(SurveyFilesTest, PutsFilesTogetherThatDifferInNumbers) {
    Write("issues/issue-1.json", "");
    Write("issues/issue-20.json", "");
    Write("issues/project.json", "");
    EXPECT_THAT(Groups({m_folder.Path().string()}),
                ElementsAre("issue: issues/issue-*.json, 2", "project: issues/project.json, 1"));
}

TEST_F(SurveyFilesTest, KeepsFilesApartWhosePatternWouldFitOthers) {
    Write("1.json", "");
    Write("2.json", "");
    Write("project.json", "");
    EXPECT_THAT(Groups({m_folder.Path().string()}),
                ElementsAre("1: 1.json, 1", "2: 2.json, 1", "project: project.json, 1"));
}

TEST_F(SurveyFilesTest, SaysWhatToDoWhereAFormatIsNotKnown) {
    Write("data.txt", "a,b\n");
    EXPECT_THAT(ErrorOf({m_folder.File("data.txt")}), HasSubstr("--format"));
    EXPECT_THAT(ErrorOf({m_folder.Path().string()}),
                AllOf(HasSubstr("no *.csv"), HasSubstr(m_folder.Path().string())));
    EXPECT_THAT(ErrorOf({"-"}), HasSubstr("--format"));
    EXPECT_EQ(SurveyFiles({m_folder.File("data.txt")}, MapFormat::Csv).Groups().size(), 1U);
}

TEST_F(SurveyFilesTest, SaysWhichFileIsNotThere) {
    EXPECT_THAT(ErrorOf({m_folder.File("none.csv")}), HasSubstr("none.csv"));
}

TEST_F(SurveyFilesTest, ReadsStandardInput) {
    const int input = open(m_folder.Write("in", "{\"a\":1}\n").c_str(), O_RDONLY | O_CLOEXEC);
    const SurveyFiles files({"-"}, MapFormat::JsonLines, input);
    close(input);
    const Survey survey = SurveyAll(files, {});
    EXPECT_EQ(survey.sources.at(0).rows, 1U);
    EXPECT_EQ(FilesText(survey.sources.at(0)), "standard input");
}

}  // namespace
}  // namespace tool
