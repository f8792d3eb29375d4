#include "tool/html/finding_list.h"

#include <fmt/format.h>

#include "tool/html/html_table.h"
#include "tool/html/html_text.h"
#include "tool/html/page_parts.h"
#include "tool/text/number_text.h"

namespace tool {

namespace {

constexpr std::size_t kFindingTextLimit = 4000;

std::string_view MeaningOf(FindingWeight weight) {
    switch (weight) {
        case FindingWeight::Count:
            return "as the map says";
        case FindingWeight::Note:
            return "to be looked at";
        default:
            return "loss";
    }
}

std::string TextHtml(const MapFinding& finding) {
    std::string html = HtmlText(finding.text);
    if (!finding.paste.empty()) {
        html += "<span class=\"detail\">To be pasted into the map:\n" + HtmlText(finding.paste) +
                "</span>";
    }
    return html;
}

}  // namespace

void FindingList::Add(const MapFinding& finding) {
    if (++m_count > kFindingsKept) {
        return;
    }
    m_kept.push_back(finding);
    m_kept.back().text = Clipped(finding.text, kFindingTextLimit);
    m_kept.back().paste = Clipped(finding.paste, kFindingTextLimit);
}

std::string FindingList::SectionHtml() const {
    if (m_count == 0) {
        return "";
    }
    using Kind = HtmlTable::Kind;
    HtmlTable table("Values, rows and files that the map leaves out, changes or does not know",
                    {{"Meaning"}, {"Number", Kind::Number}, {"Finding", Kind::LongText}});
    for (const MapFinding& finding : m_kept) {
        table.AddRow({HtmlText(MeaningOf(finding.weight)),
                      NumberCell(finding.count, finding.weight == FindingWeight::Loss),
                      TextHtml(finding)});
    }
    std::string rest;
    if (m_count > m_kept.size()) {
        rest = fmt::format("<p class=\"note\">{} more; the report of --report lists all.</p>\n",
                           Grouped(m_count - m_kept.size()));
    }
    return PageSection("map", "What the map found", table.Html() + rest);
}

}  // namespace tool
