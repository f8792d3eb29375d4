#ifndef TOOL_SOURCES_ROWS_ROW_TREE_H
#define TOOL_SOURCES_ROWS_ROW_TREE_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tool {

// The values of one row: those of a JSON value, or the cells of a CSV row as the members of an
// object, named by their columns. One tree serves row after row, so that its memory is used again.
class RowTree {
  public:
    using Index = std::uint32_t;
    static constexpr Index kNone = static_cast<Index>(-1);
    static constexpr Index kRoot = 0;

    enum class Kind : std::uint8_t { Null, Text, Number, Word, Object, List };

    // Drops all nodes. Names that were put in by AddLastingName stay.
    void Clear();

    // A name that nodes of many rows have. Returns its place, for AddNamed.
    std::size_t AddLastingName(std::string_view name);
    void ClearLastingNames();

    // Adds a node behind the other children of `parent`; the first node is the root and has none.
    // `name` is that of a member of an object.
    Index Add(Index parent, Kind kind, std::string_view name, std::string_view text);
    // The same with a lasting name.
    Index AddNamed(Index parent, Kind kind, std::size_t name, std::string_view text);

    // Of several children of an object with one name keeps the last one. Returns how many were
    // dropped; the name of one of them is put into `name`.
    std::size_t DropRepeated(Index object, std::string& name);

    bool IsEmpty() const { return m_nodes.empty(); }
    Kind KindOf(Index node) const { return m_nodes[node].kind; }
    bool IsScalar(Index node) const {
        return KindOf(node) != Kind::Object && KindOf(node) != Kind::List;
    }
    // A scalar's text: a number as it was written, true and false as words; empty for null. Valid
    // until the tree is changed.
    std::string_view Text(Index node) const {
        return {m_texts.data() + m_nodes[node].textBegin, m_nodes[node].textSize};
    }
    std::string_view Name(Index node) const {
        const Node& named = m_nodes[node];
        const std::string& texts = named.lastingName ? m_lastingTexts : m_texts;
        return {texts.data() + named.nameBegin, named.nameSize};
    }
    bool HasName(Index node, std::string_view name) const {
        return m_nodes[node].nameSize == name.size() && Name(node) == name;
    }
    Index FirstChild(Index node) const { return m_nodes[node].first; }
    Index Next(Index node) const { return m_nodes[node].next; }
    // The child of an object called `name`; the first one where several are.
    Index Child(Index object, std::string_view name) const;
    // The child of a list, or the cell of a row, at `place`, from 0.
    Index ChildAt(Index parent, std::size_t place) const;

  private:
    struct Node {
        Kind kind = Kind::Null;
        bool lastingName = false;
        Index next = kNone;
        Index first = kNone;
        Index last = kNone;
        std::size_t nameBegin = 0;
        std::size_t nameSize = 0;
        std::size_t textBegin = 0;
        std::size_t textSize = 0;
    };

    struct LastingName {
        std::size_t begin;
        std::size_t size;
    };

    Index Append(Index parent, Node node, std::string_view text);
    bool AreDifferent(const std::vector<Index>& children) const;
    void DropAmong(Index object, const std::vector<Index>& dropped);

    std::vector<Node> m_nodes;
    std::string m_texts;
    std::string m_lastingTexts;
    std::vector<LastingName> m_lastingNames;
    std::vector<Index> m_children;  // of one object, to be searched
};

}  // namespace tool

#endif
