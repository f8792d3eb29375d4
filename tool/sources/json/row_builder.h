#ifndef TOOL_SOURCES_JSON_ROW_BUILDER_H
#define TOOL_SOURCES_JSON_ROW_BUILDER_H

#include <string>
#include <string_view>
#include <vector>

#include "tool/sources/rows/row.h"
#include "tool/sources/rows/row_file_reader.h"

namespace tool {

// Builds the tree of a row from the events of its JSON value. A value that is too large or nested
// too deep is stepped over; the row then has an error.
class RowBuilder {
  public:
    explicit RowBuilder(RowLimits limits) : m_limits(limits) {}

    // Begins a row, which outlives the events of its value.
    void Begin(Row& row);

    void Value(RowTree::Kind kind, std::string_view text);
    void Open(RowTree::Kind kind);
    void Close();
    void Member(std::string_view name) { m_name = name; }

    // Whether the value is complete.
    bool IsComplete() const { return m_isComplete; }

    void Fail(std::string error);

  private:
    void AddNode(RowTree::Kind kind, std::string_view text);
    std::string_view WithoutNul(std::string_view text, std::string& mended);
    void DropRepeated(RowTree::Index object);

    RowLimits m_limits;
    Row* m_row = nullptr;
    std::vector<RowTree::Index> m_open;      // objects and lists, the innermost last
    RowTree::Index m_last = RowTree::kNone;  // the node added last
    std::size_t m_tooDeep = 0;               // further ones, of which nothing is kept
    std::size_t m_size = 0;                  // of texts and names
    std::string m_name;                      // of the member that comes next
    std::string m_mendedName;
    std::string m_mendedText;
    bool m_isComplete = false;
};

}  // namespace tool

#endif
