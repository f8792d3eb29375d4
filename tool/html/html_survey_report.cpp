#include "tool/html/html_survey_report.h"

#include <utility>

#include "tool/html/survey_page.h"

namespace tool {

HtmlSurveyReport::HtmlSurveyReport(const std::filesystem::path& path,
                                   std::vector<std::string> sources)
    : m_file(path), m_sources(std::move(sources)), m_start(std::chrono::system_clock::now()) {}

void HtmlSurveyReport::Write(const Survey& survey) {
    PageFacts facts;
    facts.title =
        m_sources.size() == 1
            ? TitleFor("Survey of",
                       std::filesystem::path(m_sources.front()).lexically_normal().string())
            : "Survey";
    facts.command = "survey";
    facts.sources = m_sources;
    facts.start = m_start;
    facts.seconds =
        std::chrono::duration<double>(std::chrono::system_clock::now() - m_start).count();
    facts.version = ZT_VERSION;
    m_file.Append(SurveyPage(survey, facts));
    m_file.Finish();
}

}  // namespace tool
