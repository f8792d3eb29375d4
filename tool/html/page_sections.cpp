#include "tool/html/page_sections.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>

#include "tool/html/html_table.h"
#include "tool/html/html_text.h"
#include "tool/html/number_text.h"
#include "tool/html/rate_chart.h"
#include "tool/html/run_verdict.h"
#include "tool/html/shell_word.h"

namespace tool {

namespace {

// A command line may name any number of sources.
constexpr std::size_t kShownSources = 40;

std::string_view ClassOf(VerdictTone tone) {
    switch (tone) {
        case VerdictTone::Good:
            return "good";
        case VerdictTone::Attention:
            return "attention";
        default:
            return "bad";
    }
}

std::string_view DataName(ImportedData data) {
    switch (data) {
        case ImportedData::Records:
            return "records";
        case ImportedData::History:
            return "history";
        case ImportedData::Attachments:
            return "attachments";
        default:
            return "nothing imported";
    }
}

std::string Figure(std::string_view name, std::uint64_t number, bool wantsAttention = false) {
    const std::string_view look = number == 0      ? R"( class="zero")"
                                  : wantsAttention ? R"( class="attention")"
                                                   : "";
    return fmt::format("<div><dt>{}</dt><dd{}>{}</dd></div>\n", name, look, Grouped(number));
}

std::string Fact(std::string_view name, const std::string& html) {
    return fmt::format("<dt>{}</dt><dd>{}</dd>\n", name, html);
}

std::string SourceListHtml(const std::vector<std::string>& sources) {
    std::string items;
    for (std::size_t i = 0; i < std::min(sources.size(), kShownSources); ++i) {
        items += fmt::format("<li>{}</li>", HtmlText(Clipped(sources[i], 1000)));
    }
    if (sources.size() > kShownSources) {
        items += fmt::format("<li class=\"note\">and {} more</li>",
                             Grouped(sources.size() - kShownSources));
    }
    return "<ul>" + items + "</ul>";
}

// Breaks its lines between words, never inside an option.
std::string CommandHtml(const std::vector<std::string>& words) {
    std::string html;
    for (const std::string& word : words) {
        html += html.empty() ? "" : " ";
        html += "<span>" + HtmlText(ShellWord(word)) + "</span>";
    }
    return html;
}

// A zero is to be passed over by the eye; a number that somebody has to look at is not.
std::string NumberCell(std::uint64_t number, bool wantsAttention = false) {
    if (number == 0) {
        return "<span class=\"zero\">0</span>";
    }
    return wantsAttention ? fmt::format("<span class=\"attention\">{}</span>", Grouped(number))
                          : Grouped(number);
}

std::vector<std::string> TypeRow(std::string name, const LoadTotals& totals) {
    return {std::move(name),
            NumberCell(totals.read),
            NumberCell(totals.created),
            NumberCell(totals.updated),
            NumberCell(totals.rejected, true),
            NumberCell(totals.skipped),
            NumberCell(totals.history),
            NumberCell(totals.attachments),
            NumberCell(totals.duplicates)};
}

}  // namespace

std::string PageSection(std::string_view id, std::string_view title, const std::string& content) {
    return fmt::format(
        "<section id=\"{0}\" aria-labelledby=\"{0}-title\">\n<h2 id=\"{0}-title\">{1}</h2>\n{2}"
        "</section>\n",
        id, title, content);
}

std::string PageTitle(const RunSummary& summary) {
    const std::filesystem::path database = summary.Description().options.database;
    const std::string name = database.filename().string();
    return "Load into " + (name.empty() ? database.string() : name);
}

std::string PageHeader(const RunSummary& summary) {
    const RunDescription& run = summary.Description();
    const RunVerdict verdict = VerdictOf(summary);
    std::string why;
    if (!summary.EarlyEnd().empty()) {
        why = fmt::format("<p class=\"why\">{}</p>\n", HtmlText(summary.EarlyEnd()));
    }
    return fmt::format(
        "<header>\n<p class=\"eyebrow\"><time datetime=\"{}\">{}</time> &#183; "
        "{}</p>\n<h1>{}</h1>\n"
        "<div class=\"verdict {}\" role=\"status\">\n<p class=\"state\">{}</p>\n"
        "<p class=\"sentence\">{}</p>\n{}</div>\n</header>\n",
        UtcAttribute(run.start), UtcText(run.start), DurationText(summary.Totals().seconds),
        HtmlText(PageTitle(summary)), ClassOf(verdict.tone), HtmlText(verdict.state),
        HtmlText(verdict.sentence), why);
}

std::string FiguresSection(const RunSummary& summary) {
    const LoadTotals& totals = summary.Totals();
    return PageSection(
        "totals", "Totals",
        "<dl class=\"figures\">\n" + Figure("records read", totals.read) +
            Figure("created", totals.created) + Figure("updated", totals.updated) +
            Figure("rejected", totals.rejected, true) + Figure("skipped", totals.skipped) +
            "</dl>\n<dl class=\"figures minor\">\n" + Figure("history entries", totals.history) +
            Figure("attachments", totals.attachments) +
            Figure("duplicate marks", totals.duplicates) + "</dl>\n");
}

std::string NextStepsSection(const RunSummary& summary) {
    std::string items;
    for (const NextStep& step : NextSteps(summary)) {
        items += "<li>" + HtmlText(step.text);
        if (!step.command.empty()) {
            items += "<code class=\"command\">" + CommandHtml(step.command) + "</code>";
        }
        items += "</li>\n";
    }
    return items.empty() ? ""
                         : PageSection("next", "What to do next",
                                       "<ol class=\"steps\">\n" + items + "</ol>\n");
}

std::string TypesSection(const RunSummary& summary) {
    using Kind = HtmlTable::Kind;
    HtmlTable table("What the packets of each record type did",
                    {{"Record type"},
                     {"Read", Kind::Number},
                     {"Created", Kind::Number},
                     {"Updated", Kind::Number},
                     {"Rejected", Kind::Number},
                     {"Skipped", Kind::Number},
                     {"History entries", Kind::Number},
                     {"Attachments", Kind::Number},
                     {"Duplicate marks", Kind::Number}});
    for (const TypeTotals& type : summary.Types()) {
        table.AddRow(TypeRow(fmt::format("{} <span class=\"kind\">{}</span>", HtmlText(type.type),
                                         DataName(type.data)),
                             type.totals));
    }
    table.SetTotals(TypeRow("All", summary.Totals()));
    const std::string note =
        summary.Totals().skipped == 0
            ? ""
            : "<p class=\"note\">Skipped: loaded before, or passed over by the importer because "
              "there was nothing to import in them.</p>\n";
    return PageSection("types", "By record type", table.Html() + note);
}

std::string RateSection(const RunSummary& summary) {
    return PageSection("rate", "Records over time",
                       RateChart(summary.Rate(), summary.AverageRate()));
}

std::string RunSection(const RunSummary& summary) {
    const RunDescription& run = summary.Description();
    std::string facts = Fact("Command", "ztimport " + HtmlText(run.command)) +
                        Fact("Database", HtmlText(run.options.database)) +
                        Fact(run.options.sources.size() == 1 ? "Source" : "Sources",
                             SourceListHtml(run.options.sources)) +
                        Fact("Started", UtcText(run.start)) +
                        Fact("Duration", DurationText(summary.Totals().seconds)) +
                        Fact("Tool version", HtmlText(run.version));
    return PageSection("run", "What was run", "<dl class=\"facts\">\n" + facts + "</dl>\n");
}

}  // namespace tool
