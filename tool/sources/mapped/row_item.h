#ifndef TOOL_SOURCES_MAPPED_ROW_ITEM_H
#define TOOL_SOURCES_MAPPED_ROW_ITEM_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tool/map/map_file.h"
#include "tool/packet/importer_text.h"
#include "tool/sources/rows/row_tree.h"

namespace tool {

// What a step makes one record of: a row, or an item in it.
struct RowItem {
    const RowTree* tree = nullptr;
    RowTree::Index node = RowTree::kRoot;
    std::optional<std::string_view> text;  // a part of a text that was split, instead of the node
};

// A value that was found: null, a text, or what holds others.
struct FoundValue {
    bool isScalar = true;
    bool isNull = false;
    std::string_view text;
};

// Appends the nodes that an address leads to, from `start` in the tree; none where it ends early.
void FindNodes(const RowTree& tree, RowTree::Index start, const std::vector<std::string>& steps,
               std::vector<RowTree::Index>& nodes);

// Replaces `values` by those at an address of a row or its item. `nodes` is room for the search.
void FindValues(const RowItem& item, const MapAddress& address, std::vector<RowTree::Index>& nodes,
                std::vector<FoundValue>& values);

// Calls `take` with each part of a text between separators, without the blanks around it.
template <typename Take>
void ForEachPart(std::string_view text, std::string_view separator, Take take) {
    for (std::size_t end = text.find(separator); end != text.npos; end = text.find(separator)) {
        take(Trimmed(text.substr(0, end)));
        text.remove_prefix(end + separator.size());
    }
    take(Trimmed(text));
}

// Whether a text means "no value".
bool IsNoValue(std::string_view text, const std::vector<std::string>& nullIf);

}  // namespace tool

#endif
