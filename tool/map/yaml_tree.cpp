#include "tool/map/yaml_tree.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <yaml-cpp/eventhandler.h>
#include <yaml-cpp/yaml.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>
#include <sstream>

#include "platform/foundation/text_place.h"

namespace tool {

namespace {

// Far deeper than any map is nested.
constexpr std::size_t kMaxDepth = 64;

MapPlace PlaceOf(const YAML::Mark& mark) {
    return {mark.line + 1, mark.column + 1};
}

// The word at `place` that YAML takes for "nothing"; empty when none stands there.
std::string NothingAt(std::string_view text, int place) {
    if (place < 0 || static_cast<std::size_t>(place) > text.size()) {
        return {};
    }
    text.remove_prefix(static_cast<std::size_t>(place));
    constexpr std::array<std::string_view, 4> words = {"null", "Null", "NULL", "~"};
    for (const std::string_view word : words) {
        const bool ends = text.size() <= word.size() ||
                          std::string_view(" \t\r\n,]}:#").find(text[word.size()]) != text.npos;
        if (ends && text.starts_with(word)) {
            return std::string(word);
        }
    }
    return {};
}

// The library would read on behind such a byte, or complain of something else.
void RefuseNul(const YamlFile& file, const std::string& text) {
    if (const std::size_t at = text.find('\0'); at != std::string::npos) {
        const TextPlace place = PlaceInText(text, at);
        file.Fail({place.line + 1, place.column + 1}, "this is not valid YAML: a NUL byte");
    }
}

// Builds the tree from the library's events.
class TreeBuilder final : public YAML::EventHandler {
  public:
    TreeBuilder(const std::string& text, const YamlFile& file) : m_text(text), m_file(file) {}

    void OnDocumentStart(const YAML::Mark& mark) override {
        if (m_root) {
            m_file.Fail(PlaceOf(mark), "a map is one YAML document, not several");
        }
    }
    void OnDocumentEnd() override {}
    void OnNull(const YAML::Mark& mark, YAML::anchor_t /*anchor*/) override {
        AddText(PlaceOf(mark), NothingAt(m_text, mark.pos));
    }
    void OnAlias(const YAML::Mark& mark, YAML::anchor_t /*anchor*/) override {
        m_file.Fail(PlaceOf(mark),
                    "a map has no aliases; a table that is used more than once stands in 'tables'");
    }
    void OnScalar(const YAML::Mark& mark, const std::string& /*tag*/, YAML::anchor_t /*anchor*/,
                  const std::string& value) override {
        AddText(PlaceOf(mark), value);
    }
    void OnSequenceStart(const YAML::Mark& mark, const std::string& /*tag*/,
                         YAML::anchor_t /*anchor*/, YAML::EmitterStyle::value /*style*/) override {
        Open(YamlNode::Kind::List, PlaceOf(mark));
    }
    void OnSequenceEnd() override { Close(); }
    void OnMapStart(const YAML::Mark& mark, const std::string& /*tag*/, YAML::anchor_t /*anchor*/,
                    YAML::EmitterStyle::value /*style*/) override {
        Open(YamlNode::Kind::Map, PlaceOf(mark));
    }
    void OnMapEnd() override { Close(); }

    std::optional<YamlNode>& Root() { return m_root; }

  private:
    struct Level {
        YamlNode node;
        std::optional<std::pair<std::string, MapPlace>> key;
    };

    void Open(YamlNode::Kind kind, MapPlace place) {
        if (m_open.size() == kMaxDepth) {
            m_file.Fail(place, "the file is nested too deep");
        }
        if (!m_open.empty() && m_open.back().node.IsMap() && !m_open.back().key) {
            m_file.Fail(place, "a key must be a text");
        }
        m_open.push_back({YamlNode(kind, place), std::nullopt});
    }

    void Close() {
        YamlNode node = std::move(m_open.back().node);
        m_open.pop_back();
        Add(std::move(node));
    }

    void AddText(MapPlace place, std::string text) {
        if (!m_open.empty() && m_open.back().node.IsMap() && !m_open.back().key) {
            RefuseRepeated(m_open.back().node, text, place);
            m_open.back().key.emplace(std::move(text), place);
            return;
        }
        Add(YamlNode(YamlNode::Kind::Text, place, std::move(text)));
    }

    void RefuseRepeated(const YamlNode& map, const std::string& key, MapPlace place) const {
        for (const YamlNode::Member& member : map.Members()) {
            if (member.key == key) {
                m_file.Fail(place, fmt::format("the key '{}' stands here twice, first in line {}",
                                               key, member.place.line));
            }
        }
    }

    void Add(YamlNode node) {
        if (m_open.empty()) {
            m_root = std::move(node);
        } else if (Level& level = m_open.back(); level.node.IsList()) {
            level.node.AddItem(std::move(node));
        } else {
            level.node.AddMember(level.key->first, level.key->second, std::move(node));
            level.key.reset();
        }
    }

    const std::string& m_text;
    const YamlFile& m_file;
    std::vector<Level> m_open;
    std::optional<YamlNode> m_root;
};

}  // namespace

YamlNode::YamlNode(Kind kind, MapPlace place, std::string text)
    : m_kind(kind), m_place(place), m_text(std::move(text)) {}

void YamlNode::AddItem(YamlNode item) {
    m_items.push_back(std::move(item));
}

const YamlNode* YamlNode::Find(std::string_view key) const {
    const auto found = std::find_if(m_members.begin(), m_members.end(),
                                    [&](const Member& member) { return member.key == key; });
    return found == m_members.end() ? nullptr : &found->value;
}

void YamlNode::AddMember(std::string key, MapPlace place, YamlNode value) {
    m_members.push_back({std::move(key), place, std::move(value)});
}

YamlNode ReadYamlTree(const std::string& text, const std::string& name) {
    const YamlFile file(name);
    RefuseNul(file, text);
    TreeBuilder builder(text, file);
    try {
        std::istringstream stream(text);
        YAML::Parser parser(stream);
        // A second document is refused; at some errors the library would find them without end.
        while (parser.HandleNextDocument(builder)) {
        }
    } catch (const YAML::Exception& error) {
        file.Fail(PlaceOf(error.mark), "this is not valid YAML: " + error.msg);
    }
    if (!builder.Root()) {
        file.Fail({1, 1}, "the map is empty; it begins with 'map: 1'");
    }
    return std::move(*builder.Root());
}

void YamlFile::Fail(MapPlace place, const std::string& text) const {
    throw MapError(m_name, place, text);
}

void YamlFile::RequireMap(const YamlNode& node, const std::string& what) const {
    if (!node.IsMap()) {
        Fail(node.Place(), what + " must be a map of keys and values");
    }
}

const std::string& YamlFile::TextOf(const YamlNode& node, const std::string& what) const {
    if (!node.IsText()) {
        Fail(node.Place(), what + " must be a text");
    }
    return node.Text();
}

bool YamlFile::BoolOf(const YamlNode& node, const std::string& what) const {
    const std::string& text = TextOf(node, what);
    if (text != "true" && text != "false") {
        Fail(node.Place(), fmt::format("{} must be true or false, not '{}'", what, text));
    }
    return text == "true";
}

std::size_t YamlFile::NumberOf(const YamlNode& node, const std::string& what) const {
    const std::string& text = TextOf(node, what);
    std::uint32_t number = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || stop != end || number < 1) {
        Fail(node.Place(),
             fmt::format("{} must be a whole number of at least 1, not '{}'", what, text));
    }
    return number;
}

std::vector<std::string> YamlFile::TextsOf(const YamlNode& node, const std::string& what) const {
    if (!node.IsList()) {
        return {TextOf(node, what)};
    }
    if (node.Items().empty()) {
        Fail(node.Place(), what + " is an empty list");
    }
    std::vector<std::string> texts;
    for (const YamlNode& item : node.Items()) {
        texts.push_back(TextOf(item, "an item of " + what));
    }
    return texts;
}

void YamlFile::AllowOnly(const YamlNode& map, std::initializer_list<std::string_view> known,
                         const std::string& what) const {
    for (const YamlNode::Member& member : map.Members()) {
        if (std::find(known.begin(), known.end(), member.key) == known.end()) {
            Fail(member.place, fmt::format("unknown key '{}' in {}; known keys are {}", member.key,
                                           what, fmt::join(known, ", ")));
        }
    }
}

const YamlNode& YamlFile::Require(const YamlNode& map, std::string_view key,
                                  const std::string& what, const std::string& hint) const {
    const YamlNode* const node = map.Find(key);
    if (node == nullptr) {
        Fail(map.Place(), fmt::format("{} lacks '{}'; {}", what, key, hint));
    }
    return *node;
}

}  // namespace tool
