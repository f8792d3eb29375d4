#include "tool/html/html_table.h"

#include <fmt/format.h>

#include "tool/html/html_text.h"

namespace tool {

namespace {

std::string_view ClassOf(const HtmlTable::Column& column) {
    switch (column.kind) {
        case HtmlTable::Kind::Number:
            return R"( class="number")";
        case HtmlTable::Kind::LongText:
            return R"( class="long")";
        default:
            return "";
    }
}

}  // namespace

void HtmlTable::SetTotals(const std::vector<std::string>& cells) {
    m_totals.clear();
    AppendRow(m_totals, cells);
}

void HtmlTable::AppendRow(std::string& out, const std::vector<std::string>& cells) const {
    out += "<tr>";
    for (std::size_t i = 0; i < m_columns.size(); ++i) {
        out += i == 0 ? fmt::format(R"(<th scope="row">{}</th>)", cells[i])
                      : fmt::format(R"(<td{} data-label="{}">{}</td>)", ClassOf(m_columns[i]),
                                    HtmlText(m_columns[i].title), cells[i]);
    }
    out += "</tr>\n";
}

std::string HtmlTable::Html() const {
    std::string head;
    for (const Column& column : m_columns) {
        head +=
            fmt::format(R"(<th scope="col"{}>{}</th>)", ClassOf(column), HtmlText(column.title));
    }
    const std::string foot = m_totals.empty() ? "" : "<tfoot>\n" + m_totals + "</tfoot>\n";
    return fmt::format(
        "<table>\n<caption>{}</caption>\n<thead><tr>{}</tr></thead>\n<tbody>\n{}</tbody>\n{}"
        "</table>\n",
        HtmlText(m_caption), head, m_rows, foot);
}

}  // namespace tool
