#include "tool/html/survey_page.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "tool/html/html_table.h"
#include "tool/html/html_text.h"
#include "tool/survey/survey_words.h"
#include "tool/text/number_text.h"

namespace tool {

namespace {

constexpr std::size_t kShownOnPage = 12;  // of the values at an address
constexpr std::size_t kNamedFiles = 40;   // of those that were not read

struct SurveyTotals {
    std::uint64_t files = 0;
    std::uint64_t rows = 0;
    std::uint64_t badRows = 0;
    std::uint64_t addresses = 0;
};

SurveyTotals TotalsOf(const Survey& survey) {
    SurveyTotals totals;
    for (const SourceSurvey& source : survey.sources) {
        totals.files += source.group.files.size();
        totals.rows += source.rows;
        totals.badRows += source.badRows;
        totals.addresses += source.addresses.size();
    }
    return totals;
}

PageVerdict VerdictOf(const SurveyTotals& totals) {
    const std::string found =
        fmt::format("{} of {} {} looked at.", CountOf(totals.rows, "row"),
                    CountOf(totals.files, "file"), totals.rows == 1 ? "was" : "were");
    if (totals.badRows == 0) {
        return {VerdictTone::Good, "All rows can be used", found, ""};
    }
    return {VerdictTone::Attention, "Some rows cannot be used",
            fmt::format("{} {} cannot be used.", found, CountOf(totals.badRows, "more row")), ""};
}

std::string FiguresSection(const Survey& survey, const SurveyTotals& totals) {
    return PageSection("totals", "Totals",
                       FigureRow({{"files", totals.files},
                                  {"rows", totals.rows},
                                  {"rows that cannot be used", totals.badRows, true},
                                  {"columns and addresses", totals.addresses},
                                  {"files not read", survey.notRead.size()}}));
}

std::vector<NextStep> NextSurveySteps(const PageFacts& facts) {
    const auto command = [&](std::vector<std::string> begin, const std::vector<std::string>& end) {
        begin.insert(begin.end(), facts.sources.begin(), facts.sources.end());
        begin.insert(begin.end(), end.begin(), end.end());
        return begin;
    };
    return {
        {"Have a schema and a map drafted.",
         command({"ztimport", "survey"},
                 {"--write-schema", "schema.yaml", "--write-map", "map.yaml"})},
        {"Look through both, above all at the lines that begin with \"decide:\".", {}},
        {"Make a database of the schema.", {"ztimport", "init", "new.db", "schema.yaml"}},
        {"Rehearse the load.", command({"ztimport", "check", "new.db"}, {"--map", "map.yaml"})}};
}

std::string Details(const std::vector<std::string>& texts) {
    std::string html;
    for (const std::string& text : texts) {
        html += "<span class=\"detail\">" + HtmlText(text) + "</span>";
    }
    return html;
}

std::string ValuesHtml(const Survey& survey, AddressRef ref) {
    std::string html = HtmlText(ValuesText(survey.At(ref), kShownOnPage));
    for (const Remark& remark : Remarks(survey, ref)) {
        html += "<span class=\"detail note\">" + HtmlText(remark.text) + "</span>";
    }
    return html;
}

std::string SourcesSection(const Survey& survey) {
    using Kind = HtmlTable::Kind;
    HtmlTable table("What was looked at", {{"Files"},
                                           {"Format"},
                                           {"Rows", Kind::Number},
                                           {"Not usable", Kind::Number},
                                           {"Columns", Kind::Number}});
    for (std::size_t i = 0; i < survey.sources.size(); ++i) {
        const SourceSurvey& source = survey.sources[i];
        table.AddRow(
            {fmt::format("<a href=\"#source-{}\">{}</a>", i + 1, HtmlText(FilesText(source))),
             HtmlText(FormatText(source)), NumberCell(source.rows),
             NumberCell(source.badRows, true), NumberCell(source.addresses.size())});
    }
    return PageSection("sources", "Files", table.Html());
}

std::string SourceSection(const Survey& survey, std::size_t place) {
    using Kind = HtmlTable::Kind;
    const SourceSurvey& source = survey.sources[place];
    HtmlTable table(fmt::format("{}, {}", FormatText(source), CountOf(source.rows, "row")),
                    {{source.IsCsv() ? "Column" : "Address"},
                     {"Kind"},
                     {"Values", Kind::Number},
                     {"Empty", Kind::Number},
                     {"Longest", Kind::Number},
                     {"Different", Kind::Number},
                     {"Which", Kind::LongText}});
    for (std::size_t i = 0; i < source.addresses.size(); ++i) {
        const AddressSurvey& address = source.addresses[i];
        const bool holdsOthers = address.Values() == 0 && !address.IsScalarOnly();
        table.AddRow({HtmlText(AddressText(source, address)), HtmlText(KindText(address)),
                      NumberCell(holdsOthers ? address.objects + address.lists : address.Values()),
                      NumberCell(address.empties + address.nulls),
                      holdsOthers ? "" : NumberCell(address.longest),
                      holdsOthers ? "" : HtmlText(DistinctText(address)),
                      ValuesHtml(survey, {place, i})});
    }
    const std::vector<std::string> remarks = Remarks(source);
    return PageSection(fmt::format("source-{}", place + 1), FilesText(source),
                       (remarks.empty() ? "" : "<p>" + Details(remarks) + "</p>\n") + table.Html());
}

std::string NotReadSection(const Survey& survey) {
    if (survey.notRead.empty()) {
        return {};
    }
    std::string items;
    for (std::size_t i = 0; i < std::min(survey.notRead.size(), kNamedFiles); ++i) {
        items += "<li>" + HtmlText(Clipped(survey.notRead[i], 1000)) + "</li>\n";
    }
    if (survey.notRead.size() > kNamedFiles) {
        items += fmt::format("<li class=\"note\">and {} more</li>\n",
                             Grouped(survey.notRead.size() - kNamedFiles));
    }
    return PageSection("unread", "Files that were not read", "<ul>\n" + items + "</ul>\n");
}

}  // namespace

std::string SurveyPage(const Survey& survey, const PageFacts& facts) {
    const SurveyTotals totals = TotalsOf(survey);
    std::string sections = FiguresSection(survey, totals) + StepsSection(NextSurveySteps(facts)) +
                           SourcesSection(survey);
    for (std::size_t source = 0; source < survey.sources.size(); ++source) {
        sections += SourceSection(survey, source);
    }
    return PageDocument(facts, VerdictOf(totals),
                        sections + NotReadSection(survey) + FactsSection(facts));
}

}  // namespace tool
