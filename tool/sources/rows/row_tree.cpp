#include "tool/sources/rows/row_tree.h"

#include <algorithm>

namespace tool {

void RowTree::Clear() {
    m_nodes.clear();
    m_texts.clear();
}

std::size_t RowTree::AddLastingName(std::string_view name) {
    m_lastingNames.push_back({m_lastingTexts.size(), name.size()});
    m_lastingTexts += name;
    return m_lastingNames.size() - 1;
}

void RowTree::ClearLastingNames() {
    m_lastingNames.clear();
    m_lastingTexts.clear();
}

RowTree::Index RowTree::Add(Index parent, Kind kind, std::string_view name, std::string_view text) {
    Node node;
    node.kind = kind;
    node.nameBegin = m_texts.size();
    node.nameSize = name.size();
    m_texts += name;
    return Append(parent, node, text);
}

RowTree::Index RowTree::AddNamed(Index parent, Kind kind, std::size_t name, std::string_view text) {
    Node node;
    node.kind = kind;
    node.lastingName = true;
    node.nameBegin = m_lastingNames[name].begin;
    node.nameSize = m_lastingNames[name].size;
    return Append(parent, node, text);
}

RowTree::Index RowTree::Append(Index parent, Node node, std::string_view text) {
    node.textBegin = m_texts.size();
    node.textSize = text.size();
    m_texts += text;
    const auto index = static_cast<Index>(m_nodes.size());
    m_nodes.push_back(node);
    if (parent != kNone) {
        Node& above = m_nodes[parent];
        (above.first == kNone ? above.first : m_nodes[above.last].next) = index;
        above.last = index;
    }
    return index;
}

RowTree::Index RowTree::Child(Index object, std::string_view name) const {
    for (Index child = FirstChild(object); child != kNone; child = Next(child)) {
        if (HasName(child, name)) {
            return child;
        }
    }
    return kNone;
}

RowTree::Index RowTree::ChildAt(Index parent, std::size_t place) const {
    Index child = FirstChild(parent);
    while (child != kNone && place > 0) {
        child = Next(child);
        --place;
    }
    return child;
}

bool RowTree::AreDifferent(const std::vector<Index>& children) const {
    for (std::size_t i = 1; i < children.size(); ++i) {
        const std::string_view name = Name(children[i]);
        for (std::size_t before = 0; before < i; ++before) {
            if (HasName(children[before], name)) {
                return false;
            }
        }
    }
    return true;
}

// Comparing each with each is the fastest way for few; sorting keeps the work small for an object
// of any size.
std::size_t RowTree::DropRepeated(Index object, std::string& name) {
    constexpr std::size_t few = 32;
    std::vector<Index>& children = m_children;
    children.clear();
    for (Index child = FirstChild(object); child != kNone; child = Next(child)) {
        children.push_back(child);
    }
    if (children.size() <= few && AreDifferent(children)) {
        return 0;
    }
    std::sort(children.begin(), children.end(), [this](Index a, Index b) {
        const int order = Name(a).compare(Name(b));
        return order < 0 || (order == 0 && a < b);
    });
    std::vector<Index> dropped;
    for (std::size_t i = 1; i < children.size(); ++i) {
        if (Name(children[i - 1]) == Name(children[i])) {
            dropped.push_back(children[i - 1]);
        }
    }
    if (!dropped.empty()) {
        name = Name(dropped.front());
        std::sort(dropped.begin(), dropped.end());
        DropAmong(object, dropped);
    }
    return dropped.size();
}

// `dropped` are some of the children, in their order, which is that of the indexes.
void RowTree::DropAmong(Index object, const std::vector<Index>& dropped) {
    Index previous = kNone;
    auto next = dropped.begin();
    for (Index child = FirstChild(object); child != kNone; child = Next(child)) {
        if (next != dropped.end() && *next == child) {
            ++next;
        } else {
            (previous == kNone ? m_nodes[object].first : m_nodes[previous].next) = child;
            previous = child;
        }
    }
    m_nodes[object].last = previous;
    m_nodes[previous].next = kNone;
}

}  // namespace tool
