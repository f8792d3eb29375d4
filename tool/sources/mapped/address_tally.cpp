#include "tool/sources/mapped/address_tally.h"

#include <algorithm>
#include <charconv>
#include <utility>

#include "tool/sources/mapped/row_item.h"

namespace tool {

namespace {

// Data that are used as names would make any number of addresses. Values at those past the limit
// are looked at anew each time, and counted together.
constexpr std::size_t kMostNodes = 20000;

std::string Encoded(std::string_view step) {
    std::string text;
    for (const char c : step) {
        if (c == '~' || c == '/') {
            text += c == '~' ? "~0" : "~1";
        } else {
            text += c;
        }
    }
    return text;
}

}  // namespace

// An address that rows have, or that of something around it.
struct AddressTally::Node {
    std::vector<std::string> path;
    std::size_t column = 0;  // its place among the columns of CSV
    bool isRead = false;
    Known* ignoring = nullptr;
    std::uint64_t values = 0;  // that are not read
    std::string place;         // of the first of them
    std::vector<std::unique_ptr<Node>> children;
    std::map<std::string, Node*, std::less<>> byName;
};

AddressTally::AddressTally(bool isCsv, const std::vector<std::string>& nullIf,
                           std::function<std::string()> place)
    : m_isCsv(isCsv),
      m_nullIf(nullIf),
      m_place(std::move(place)),
      m_root(std::make_unique<Node>()) {}

AddressTally::~AddressTally() = default;

void AddressTally::Know(const MapAddress& address, std::vector<std::string> steps, bool isIgnored) {
    for (const std::string& step : steps) {
        std::size_t place = 0;
        const char* const end = step.data() + step.size();
        const auto [stop, error] = std::from_chars(step.data(), end, place);
        if (error == std::errc() && stop == end) {
            m_places[place] = step;
        }
    }
    m_known.push_back({&address, std::move(steps), isIgnored, false, 0});
    m_root->isRead = m_root->isRead ||
                     (!isIgnored && m_known.back().steps.empty() && !address.column.has_value());
}

void AddressTally::Add(const RowTree& row) {
    ++m_rows;
    if (m_rows == 1) {
        Settle(*m_root);
    }
    Visit(row, RowTree::kRoot, *m_root);
}

bool AddressTally::IsIgnoredOutside(const std::string& address) {
    const auto known = std::find_if(m_known.begin(), m_known.end(), [&](const Known& candidate) {
        const std::string& text = candidate.address->text;
        return candidate.isIgnored && (address == text || address.starts_with(text + '/'));
    });
    if (known == m_known.end()) {
        return false;
    }
    known->isFound = true;
    return true;
}

bool AddressTally::HasValue(const RowTree& row, RowTree::Index value) const {
    return row.KindOf(value) != RowTree::Kind::Null && !IsNoValue(row.Text(value), m_nullIf);
}

void AddressTally::Visit(const RowTree& row, RowTree::Index value, Node& node) {
    if (row.IsScalar(value)) {
        if (!node.isRead && HasValue(row, value)) {
            if (node.ignoring != nullptr) {
                ++node.ignoring->values;
            } else if (++node.values == 1) {
                node.place = m_place();
            }
        }
        return;
    }
    const bool isList = row.KindOf(value) == RowTree::Kind::List;
    std::size_t place = 0;
    for (auto child = row.FirstChild(value); child != RowTree::kNone; child = row.Next(child)) {
        const std::string_view name = isList ? StepTo(place) : row.Name(child);
        Node* const below = ChildOf(node, name, place, isList);
        if (below != nullptr) {
            Visit(row, child, *below);
        } else {
            VisitBeyond(row, child, node, name, place);
        }
        ++place;
    }
}

// The step of addresses that leads to a place in a list.
std::string_view AddressTally::StepTo(std::size_t place) const {
    const auto digits = m_places.find(place);
    return digits == m_places.end() ? std::string_view("*") : digits->second;
}

// What is found out about an address past the limit is forgotten again.
void AddressTally::VisitBeyond(const RowTree& row, RowTree::Index value, const Node& node,
                               std::string_view name, std::size_t place) {
    Node passing = ChildNode(node, name, place);
    Settle(passing);
    Visit(row, value, passing);
    if (passing.values > 0) {
        m_beyond.place = m_beyond.values == 0 ? passing.place : m_beyond.place;
        m_beyond.values += passing.values;
    }
}

// Rows of one source are mostly alike, so the child that stands at the same place is nearly always
// the right one.
AddressTally::Node* AddressTally::ChildOf(Node& node, std::string_view name, std::size_t place,
                                          bool isElement) {
    if (!isElement && place < node.children.size() && node.children[place]->path.back() == name) {
        return node.children[place].get();
    }
    const auto found = node.byName.find(name);
    const bool isOtherColumn =
        m_isCsv && found != node.byName.end() && found->second->column != place;
    if (found != node.byName.end() && !isOtherColumn) {
        return found->second;
    }
    if (m_nodes == kMostNodes) {
        return nullptr;
    }
    ++m_nodes;
    auto child = std::make_unique<Node>(ChildNode(node, name, place));
    Settle(*child);
    Node* const added = child.get();
    node.children.push_back(std::move(child));
    node.byName.emplace(std::string(name), added);
    return added;
}

AddressTally::Node AddressTally::ChildNode(const Node& node, std::string_view name,
                                           std::size_t place) {
    Node child;
    child.path = node.path;
    child.path.emplace_back(name);
    child.column = place;
    return child;
}

// Finds out what the map does with the values at a new address.
void AddressTally::Settle(Node& node) {
    for (Known& known : m_known) {
        const bool isThere = Matches(known, node.path, false, node.column);
        known.isFound = known.isFound || isThere;
        if (known.isIgnored) {
            if (node.ignoring == nullptr && Matches(known, node.path, true, node.column)) {
                node.ignoring = &known;
            }
        } else {
            node.isRead = node.isRead || isThere;
        }
    }
}

// Whether an address of the map is that of `path`, or, `isPrefix`, of something around it.
bool AddressTally::Matches(const Known& known, const std::vector<std::string>& path, bool isPrefix,
                           std::size_t column) const {
    if (known.address->column) {
        return path.size() == 1 && column == *known.address->column;
    }
    if (isPrefix ? known.steps.size() > path.size() : known.steps.size() != path.size()) {
        return false;
    }
    for (std::size_t i = 0; i < known.steps.size(); ++i) {
        const bool isNumber =
            !path[i].empty() && path[i].find_first_not_of("0123456789") == std::string::npos;
        if (known.steps[i] != path[i] && !(known.steps[i] == "*" && isNumber)) {
            return false;
        }
    }
    return true;
}

void AddressTally::Collect(const Node& node, std::vector<Unread>& unread) const {
    if (node.values > 0) {
        std::string address;
        for (const std::string& step : node.path) {
            address += (address.empty() ? "" : "/") + (m_isCsv ? step : Encoded(step));
        }
        unread.push_back({address.empty() ? "." : address, node.values, node.place});
    }
    for (const auto& child : node.children) {
        Collect(*child, unread);
    }
}

std::vector<AddressTally::Unread> AddressTally::AllUnread() const {
    std::vector<Unread> unread;
    Collect(*m_root, unread);
    return unread;
}

}  // namespace tool
