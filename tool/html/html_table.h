#ifndef TOOL_HTML_HTML_TABLE_H
#define TOOL_HTML_HTML_TABLE_H

#include <string>
#include <utility>
#include <vector>

namespace tool {

// A table of a page. On narrow screens each row becomes a block of lines, so that every cell
// carries its column's title, too.
class HtmlTable {
  public:
    enum class Kind { Text, LongText, Number };
    struct Column {
        std::string title;
        Kind kind = Kind::Text;
    };

    // `caption` and titles are plain text. The first column names the row.
    HtmlTable(std::string caption, std::vector<Column> columns)
        : m_caption(std::move(caption)), m_columns(std::move(columns)) {}

    // `cells` are HTML, one for each column.
    void AddRow(const std::vector<std::string>& cells) { AppendRow(m_rows, cells); }
    // The row of sums, below all others.
    void SetTotals(const std::vector<std::string>& cells);

    std::string Html() const;

  private:
    void AppendRow(std::string& out, const std::vector<std::string>& cells) const;

    std::string m_caption;
    std::vector<Column> m_columns;
    std::string m_rows;
    std::string m_totals;
};

}  // namespace tool

#endif
