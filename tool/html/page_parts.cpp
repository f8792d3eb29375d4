#include "tool/html/page_parts.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>

#include "tool/html/html_style.h"
#include "tool/html/html_text.h"
#include "tool/text/number_text.h"

namespace tool {

namespace {

// Keeps a browser from fetching anything, and from running anything, whatever the data say.
constexpr std::string_view kPolicy =
    "default-src 'none'; style-src 'unsafe-inline'; base-uri 'none'; form-action 'none'";

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

std::string Header(const PageFacts& facts, const PageVerdict& verdict) {
    const std::string why =
        verdict.why.empty() ? "" : "<p class=\"why\">" + HtmlText(verdict.why) + "</p>\n";
    return fmt::format(
        "<header>\n<p class=\"eyebrow\"><time datetime=\"{}\">{}</time> &#183; {}</p>\n"
        "<h1>{}</h1>\n<div class=\"verdict {}\">\n<p class=\"state\">{}</p>\n"
        "<p class=\"sentence\">{}</p>\n{}</div>\n</header>\n",
        UtcAttribute(facts.start), UtcText(facts.start), DurationText(facts.seconds),
        HtmlText(facts.title), ClassOf(verdict.tone), HtmlText(verdict.state),
        HtmlText(verdict.sentence), why);
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

}  // namespace

std::string TitleFor(std::string_view what, const std::string& database) {
    const std::string name = std::filesystem::path(database).filename().string();
    return fmt::format("{} {}", what, name.empty() ? database : name);
}

std::string PageDocument(const PageFacts& facts, const PageVerdict& verdict,
                         const std::string& sections) {
    return fmt::format(
        "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
        "<meta name=\"generator\" content=\"ztimport {}\">\n"
        "<meta http-equiv=\"Content-Security-Policy\" content=\"{}\">\n"
        "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
        "<meta name=\"color-scheme\" content=\"light dark\">\n"
        "<title>{}: {}</title>\n<style>{}</style>\n</head>\n<body>\n{}<main>\n{}</main>\n"
        "<footer><p>Written by ztimport {}.</p></footer>\n</body>\n</html>\n",
        HtmlText(facts.version), kPolicy, HtmlText(facts.title), HtmlText(verdict.state),
        HtmlStyle(), Header(facts, verdict), sections, HtmlText(facts.version));
}

std::string PageSection(std::string_view id, std::string_view title, const std::string& content) {
    return fmt::format(
        "<section id=\"{0}\" aria-labelledby=\"{0}-title\">\n<h2 id=\"{0}-title\">{1}</h2>\n{2}"
        "</section>\n",
        id, HtmlText(title), content);
}

std::string FactsSection(const PageFacts& facts) {
    const std::string list =
        Fact("Command", "ztimport " + HtmlText(facts.command)) +
        (facts.database.empty() ? "" : Fact("Database", HtmlText(facts.database))) +
        Fact(facts.sources.size() == 1 ? "Source" : "Sources", SourceListHtml(facts.sources)) +
        Fact("Started", UtcText(facts.start)) + Fact("Duration", DurationText(facts.seconds)) +
        Fact("Tool version", HtmlText(facts.version));
    return PageSection("run", "What was run", "<dl class=\"facts\">\n" + list + "</dl>\n");
}

std::string StepsSection(const std::vector<NextStep>& steps) {
    std::string items;
    for (const NextStep& step : steps) {
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

std::string FigureRow(const std::vector<PageFigure>& figures, bool minor) {
    std::string items;
    for (const PageFigure& figure : figures) {
        const std::string_view look = figure.number == 0      ? R"( class="zero")"
                                      : figure.wantsAttention ? R"( class="attention")"
                                                              : "";
        items += fmt::format("<div><dt>{}</dt><dd{}>{}</dd></div>\n", figure.name, look,
                             Grouped(figure.number));
    }
    return fmt::format("<dl class=\"figures{}\">\n{}</dl>\n", minor ? " minor" : "", items);
}

}  // namespace tool
