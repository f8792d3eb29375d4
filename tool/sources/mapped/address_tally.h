#ifndef TOOL_SOURCES_MAPPED_ADDRESS_TALLY_H
#define TOOL_SOURCES_MAPPED_ADDRESS_TALLY_H

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "tool/map/map_file.h"
#include "tool/sources/rows/row_tree.h"

namespace tool {

// Which addresses the rows of a source have values at, and whether the map reads or ignores them.
// Takes memory for each address, of which only so many are told apart.
class AddressTally {
  public:
    // An address of the map, from the row on.
    struct Known {
        const MapAddress* address = nullptr;
        std::vector<std::string> steps;
        bool isIgnored = false;    // with all that is below it
        bool isFound = false;      // rows have something there
        std::uint64_t values = 0;  // that it has kept out, when it is ignored
    };
    // An address that no step reads and that is not ignored.
    struct Unread {
        std::string address;
        std::uint64_t values = 0;
        std::string place;  // of the first one
    };

    // `place` composes the place of the row that is added.
    AddressTally(bool isCsv, const std::vector<std::string>& nullIf,
                 std::function<std::string()> place);
    ~AddressTally();

    void Know(const MapAddress& address, std::vector<std::string> steps, bool isIgnored);
    void Add(const RowTree& row);
    // Whether the map leaves out a value outside of the rows, with its address from the document
    // on.
    bool IsIgnoredOutside(const std::string& address);

    const std::vector<Known>& AllKnown() const { return m_known; }
    std::vector<Unread> AllUnread() const;
    // Values that no step reads at the addresses past the limit, all together, without an address.
    const Unread& UnreadBeyond() const { return m_beyond; }
    std::uint64_t Rows() const { return m_rows; }

  private:
    struct Node;

    void Visit(const RowTree& row, RowTree::Index value, Node& node);
    void VisitBeyond(const RowTree& row, RowTree::Index value, const Node& node,
                     std::string_view name, std::size_t place);
    std::string_view StepTo(std::size_t place) const;
    Node* ChildOf(Node& node, std::string_view name, std::size_t place, bool isElement);
    static Node ChildNode(const Node& node, std::string_view name, std::size_t place);
    void Settle(Node& node);
    bool Matches(const Known& known, const std::vector<std::string>& path, bool isPrefix,
                 std::size_t column) const;
    bool HasValue(const RowTree& row, RowTree::Index value) const;
    void Collect(const Node& node, std::vector<Unread>& unread) const;

    bool m_isCsv;
    const std::vector<std::string>& m_nullIf;
    std::function<std::string()> m_place;
    std::vector<Known> m_known;
    std::map<std::size_t, std::string> m_places;  // in lists, that addresses name by their number
    std::unique_ptr<Node> m_root;
    std::uint64_t m_rows = 0;
    std::size_t m_nodes = 0;
    Unread m_beyond;
};

}  // namespace tool

#endif
