#ifndef TESTS_TOOL_SUPPORT_ROWS_READ_H
#define TESTS_TOOL_SUPPORT_ROWS_READ_H

#include <cstdint>
#include <string>
#include <vector>

#include "tool/sources/rows/row_file_reader.h"

namespace tool {

// The values of a tree as compact JSON; every scalar but null in quotes.
inline std::string Shown(const RowTree& tree, RowTree::Index node = RowTree::kRoot) {
    if (tree.IsEmpty()) {
        return {};
    }
    if (tree.IsScalar(node)) {
        return tree.KindOf(node) == RowTree::Kind::Null ? "null"
                                                        : '"' + std::string(tree.Text(node)) + '"';
    }
    const bool isObject = tree.KindOf(node) == RowTree::Kind::Object;
    std::string text = isObject ? "{" : "[";
    for (auto child = tree.FirstChild(node); child != RowTree::kNone; child = tree.Next(child)) {
        text += text.size() > 1 ? "," : "";
        text += isObject ? std::string(tree.Name(child)) + ':' : "";
        text += Shown(tree, child);
    }
    return text + (isObject ? "}" : "]");
}

// What a reader handed out.
class RowsRead final : public RowHandler {
  public:
    struct Entry {
        std::string values;
        std::uint64_t number;
        std::uint64_t line;
        std::string raw;
        std::string error;
        bool isLast;
        std::uint64_t nuls;
        std::uint64_t repeated;
        std::string repeatedName;

        bool operator==(const Entry&) const = default;
    };

    explicit RowsRead(RowFileReader& reader) { reader.Read(*this); }

    void TakeHeader(const std::vector<std::string>& columns) override { header = columns; }
    bool TakeRow(Row& row) override {
        rows.push_back({Shown(row.tree), row.number, row.line, std::string(row.raw), row.error,
                        row.isLast, row.nuls, row.repeated, row.repeatedName});
        return true;
    }
    void TakeOutside(const std::string& address, std::uint64_t line) override {
        outside.push_back(address + " in line " + std::to_string(line));
    }

    // The values of all rows, those with an error as their error.
    std::vector<std::string> Values() const {
        std::vector<std::string> values;
        for (const Entry& row : rows) {
            values.push_back(row.error.empty() ? row.values : row.error);
        }
        return values;
    }

    std::vector<std::string> header;
    std::vector<Entry> rows;
    std::vector<std::string> outside;
};

}  // namespace tool

#endif
