#include "tool/sources/mapped/row_item.h"

#include <algorithm>
#include <charconv>
#include <span>

namespace tool {

namespace {

using Index = RowTree::Index;

void FindFrom(const RowTree& tree, Index node, std::span<const std::string> steps,
              std::vector<Index>& nodes) {
    if (steps.empty()) {
        nodes.push_back(node);
        return;
    }
    const std::string& step = steps.front();
    if (tree.KindOf(node) == RowTree::Kind::Object) {
        // A CSV file may have several columns of one name.
        for (Index child = tree.FirstChild(node); child != RowTree::kNone;
             child = tree.Next(child)) {
            if (tree.HasName(child, step)) {
                FindFrom(tree, child, steps.subspan(1), nodes);
            }
        }
    } else if (tree.KindOf(node) == RowTree::Kind::List && step == "*") {
        for (Index child = tree.FirstChild(node); child != RowTree::kNone;
             child = tree.Next(child)) {
            FindFrom(tree, child, steps.subspan(1), nodes);
        }
    } else if (tree.KindOf(node) == RowTree::Kind::List) {
        std::size_t place = 0;
        const char* const end = step.data() + step.size();
        const auto [stop, error] = std::from_chars(step.data(), end, place);
        const Index child =
            error == std::errc() && stop == end ? tree.ChildAt(node, place) : RowTree::kNone;
        if (child != RowTree::kNone) {
            FindFrom(tree, child, steps.subspan(1), nodes);
        }
    }
}

FoundValue ValueOf(const RowTree& tree, Index node) {
    return {tree.IsScalar(node), tree.KindOf(node) == RowTree::Kind::Null,
            tree.IsScalar(node) ? tree.Text(node) : std::string_view()};
}

}  // namespace

void FindNodes(const RowTree& tree, Index start, const std::vector<std::string>& steps,
               std::vector<Index>& nodes) {
    FindFrom(tree, start, steps, nodes);
}

void FindValues(const RowItem& item, const MapAddress& address, std::vector<Index>& nodes,
                std::vector<FoundValue>& values) {
    values.clear();
    if (item.text && (address.isItem || !address.isFromRow)) {
        if (address.isItem) {
            values.push_back({true, false, *item.text});
        }
        return;
    }
    nodes.clear();
    if (address.isItem) {
        nodes.push_back(item.node);
    } else if (address.column) {
        const Index cell = item.tree->ChildAt(RowTree::kRoot, *address.column);
        if (cell != RowTree::kNone) {
            nodes.push_back(cell);
        }
    } else {
        FindNodes(*item.tree, address.isFromRow ? RowTree::kRoot : item.node, address.steps, nodes);
    }
    for (const Index node : nodes) {
        values.push_back(ValueOf(*item.tree, node));
    }
}

bool IsNoValue(std::string_view text, const std::vector<std::string>& nullIf) {
    return text.empty() || std::find(nullIf.begin(), nullIf.end(), text) != nullIf.end();
}

}  // namespace tool
