#include <fmt/format.h>

#include "tool/html/html_table.h"
#include "tool/html/html_text.h"
#include "tool/html/number_text.h"
#include "tool/html/page_sections.h"

namespace tool {

namespace {

std::string PlaceNumber(std::uint64_t number) {
    return number == 0 ? "" : Grouped(number);
}

std::string ExamplesCaption(const ExampleGroup& group) {
    if (group.count == 1) {
        return "The one case";
    }
    return group.count <= group.examples.size()
               ? fmt::format("All {} cases", group.count)
               : fmt::format("The first {} of {} cases", group.examples.size(),
                             Grouped(group.count));
}

std::string ExamplesTable(const ExampleGroup& group, std::string_view textTitle) {
    using Kind = HtmlTable::Kind;
    HtmlTable table(ExamplesCaption(group), {{"File"},
                                             {"Record", Kind::Number},
                                             {"Line", Kind::Number},
                                             {"Source id"},
                                             {std::string(textTitle), Kind::LongText}});
    for (const Example& example : group.examples) {
        table.AddRow({HtmlText(example.source), PlaceNumber(example.record),
                      PlaceNumber(example.line), HtmlText(example.sourceId),
                      "<span class=\"reason\">" + HtmlText(example.text) + "</span>"});
    }
    return table.Html();
}

// The part that a group has in all, as a bar whose whole length is all of them.
std::string ShareBar(std::uint64_t part, std::uint64_t all) {
    return fmt::format(
        "<svg class=\"share\" width=\"100%\" aria-hidden=\"true\">"
        "<rect class=\"all\" width=\"100%\" height=\"100%\"/>"
        "<rect width=\"{:.2f}%\" height=\"100%\"/></svg>\n",
        100.0 * static_cast<double>(part) / static_cast<double>(all));
}

std::string GroupHtml(const ExampleGroup& group, std::uint64_t all, std::string_view textTitle) {
    return fmt::format(
        "<div class=\"group\">\n<h3><span class=\"count\">{}</span> <span>{}</span></h3>\n{}{}"
        "</div>\n",
        Grouped(group.count), HtmlText(group.title), ShareBar(group.count, all),
        ExamplesTable(group, textTitle));
}

}  // namespace

std::string RejectsSection(const RunSummary& summary) {
    const std::uint64_t rejected = summary.Totals().rejected;
    if (rejected == 0) {
        return PageSection("rejects", "Rejected records", "<p>No record was rejected.</p>\n");
    }
    const auto causes = summary.Causes();
    std::string content =
        fmt::format("<p>{} rejected, for {}.</p>\n",
                    rejected == 1 ? "One record was" : Grouped(rejected) + " records were",
                    CountOf(causes.size(), "cause"));
    for (const ExampleGroup& cause : causes) {
        content += GroupHtml(cause, rejected, "Reason");
    }
    return PageSection("rejects", "Rejected records", content);
}

std::string LossesSection(const RunSummary& summary) {
    const std::uint64_t losses = summary.LossCount();
    std::string content =
        "<p>What the rules for packets drop or change without an error, so that no record is "
        "rejected for it.</p>\n";
    if (losses == 0) {
        content +=
            "<p>The load noticed none. It does not look for them, though: ztimport check "
            "does.</p>\n";
    }
    for (const auto& [kind, group] : summary.Losses()) {
        content += GroupHtml(group, losses, "What is lost");
    }
    return PageSection("losses", "Silent losses", content);
}

}  // namespace tool
