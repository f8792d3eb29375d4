#ifndef TOOL_MAP_YAML_TREE_H
#define TOOL_MAP_YAML_TREE_H

#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tool/map/map_error.h"

namespace tool {

// A YAML file as a tree in which every scalar is a text, as it was written: the YAML library would
// take some words for "nothing", and of a key that is named twice it would keep both.
class YamlNode {
  public:
    enum class Kind { Text, List, Map };
    struct Member;

    YamlNode(Kind kind, MapPlace place, std::string text = {});

    Kind GetKind() const { return m_kind; }
    bool IsText() const { return m_kind == Kind::Text; }
    bool IsList() const { return m_kind == Kind::List; }
    bool IsMap() const { return m_kind == Kind::Map; }
    MapPlace Place() const { return m_place; }
    const std::string& Text() const { return m_text; }
    const std::vector<YamlNode>& Items() const { return m_items; }
    const std::vector<Member>& Members() const { return m_members; }

    // The value of a key; null when there is none, or this is no map.
    const YamlNode* Find(std::string_view key) const;

    void AddItem(YamlNode item);
    void AddMember(std::string key, MapPlace place, YamlNode value);

  private:
    Kind m_kind;
    MapPlace m_place;
    std::string m_text;
    std::vector<YamlNode> m_items;
    std::vector<Member> m_members;
};

struct YamlNode::Member {
    std::string key;
    MapPlace place;
    YamlNode value;
};

// The one document in `text`, the content of the file called `file`. Throws MapError when it is not
// YAML, a map in it has a key twice, or it has an alias.
YamlNode ReadYamlTree(const std::string& text, const std::string& file);

// The file that is being read, for errors, and what its nodes must be.
class YamlFile {
  public:
    explicit YamlFile(std::string name) : m_name(std::move(name)) {}

    const std::string& Name() const { return m_name; }
    [[noreturn]] void Fail(MapPlace place, const std::string& text) const;

    // Throw MapError, which calls the node `what`, when it is something else.
    void RequireMap(const YamlNode& node, const std::string& what) const;
    const std::string& TextOf(const YamlNode& node, const std::string& what) const;
    bool BoolOf(const YamlNode& node, const std::string& what) const;
    std::size_t NumberOf(const YamlNode& node, const std::string& what) const;  // at least 1
    // One text, or a list of one or more.
    std::vector<std::string> TextsOf(const YamlNode& node, const std::string& what) const;

    // Throws MapError at a key of a map that is not among those known.
    void AllowOnly(const YamlNode& map, std::initializer_list<std::string_view> known,
                   const std::string& what) const;
    // The value of a key. Throws MapError with the hint when there is none.
    const YamlNode& Require(const YamlNode& map, std::string_view key, const std::string& what,
                            const std::string& hint) const;

  private:
    std::string m_name;
};

}  // namespace tool

#endif
