#include <fmt/format.h>

#include "tool/html/html_table.h"
#include "tool/html/html_text.h"
#include "tool/html/page_parts.h"
#include "tool/text/number_text.h"

namespace tool {

namespace {

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

std::string PlaceNumber(std::uint64_t number) {
    return number == 0 ? "" : Grouped(number);
}

// In the column of records, so that only something else is named.
std::string RecordCell(const Example& example) {
    const bool isOther = example.record != 0 && example.unit != "record";
    return (isOther ? HtmlText(example.unit) + " " : "") + PlaceNumber(example.record);
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

std::string DetailsHtml(const std::vector<ExampleDetail>& details) {
    std::string html;
    for (const ExampleDetail& detail : details) {
        html += "<span class=\"detail\">";
        if (!detail.label.empty()) {
            html += fmt::format("<span class=\"kind\">{}</span> ", HtmlText(detail.label));
        }
        html += "<span>" + HtmlText(detail.text) + "</span></span>";
    }
    return html;
}

std::string ExamplesTable(const ExampleGroup& group, std::string_view detailTitle) {
    using Kind = HtmlTable::Kind;
    HtmlTable table(ExamplesCaption(group), {{"File"},
                                             {"Record", Kind::Number},
                                             {"Line", Kind::Number},
                                             {"Source id"},
                                             {std::string(detailTitle), Kind::LongText}});
    for (const Example& example : group.examples) {
        table.AddRow({HtmlText(example.source), RecordCell(example), PlaceNumber(example.line),
                      HtmlText(example.sourceId), DetailsHtml(example.details)});
    }
    return table.Html();
}

// A group's share as a bar whose full length stands for all.
std::string ShareBar(std::uint64_t part, std::uint64_t all) {
    return fmt::format(
        "<svg class=\"share\" width=\"100%\" aria-hidden=\"true\">"
        "<rect class=\"all\" width=\"100%\" height=\"100%\"/>"
        "<rect width=\"{:.2f}%\" height=\"100%\"/></svg>\n",
        100.0 * static_cast<double>(part) / static_cast<double>(all));
}

}  // namespace

std::string NumberCell(std::uint64_t number, bool wantsAttention) {
    if (number == 0) {
        return "<span class=\"zero\">0</span>";
    }
    return wantsAttention ? fmt::format("<span class=\"attention\">{}</span>", Grouped(number))
                          : Grouped(number);
}

std::string TypesTable(std::string caption, const std::vector<TypeTotals>& types,
                       const LoadTotals& all) {
    using Kind = HtmlTable::Kind;
    HtmlTable table(std::move(caption), {{"Record type"},
                                         {"Read", Kind::Number},
                                         {"Created", Kind::Number},
                                         {"Updated", Kind::Number},
                                         {"Rejected", Kind::Number},
                                         {"Skipped", Kind::Number},
                                         {"History entries", Kind::Number},
                                         {"Attachments", Kind::Number},
                                         {"Duplicate marks", Kind::Number}});
    for (const TypeTotals& type : types) {
        table.AddRow(TypeRow(fmt::format("{} <span class=\"kind\">{}</span>", HtmlText(type.type),
                                         DataName(type.data)),
                             type.totals));
    }
    table.SetTotals(TypeRow("All", all));
    return table.Html();
}

std::string GroupHtml(const ExampleGroup& group, std::uint64_t all, std::string_view detailTitle) {
    return fmt::format(
        "<div class=\"group\">\n<h3><span class=\"count\">{}</span> <span>{}</span></h3>\n{}{}"
        "</div>\n",
        Grouped(group.count), HtmlText(group.title), ShareBar(group.count, all),
        ExamplesTable(group, detailTitle));
}

}  // namespace tool
