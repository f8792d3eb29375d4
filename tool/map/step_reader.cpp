#include "tool/map/step_reader.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <string_view>

#include "tool/map/address_reader.h"
#include "tool/map/value_reader.h"

namespace tool {

namespace {

constexpr std::array<StepKind, 4> kKinds = {StepKind::Records, StepKind::History,
                                            StepKind::Attachments, StepKind::Duplicates};

class StepReader {
  public:
    StepReader(const YamlFile& file, const YamlNode& node, const std::vector<MapSource>& sources,
               MapTables& tables)
        : m_file(file), m_node(node), m_sources(sources), m_tables(tables) {}

    MapStep Read() {
        m_file.RequireMap(m_node, "a step");
        m_step.place = m_node.Place();
        ReadKind();
        m_file.AllowOnly(m_node,
                         {StepKindName(m_step.kind), "source", "each", "when", "key", "mode",
                          "same_key", "field", "fields"},
                         m_what);
        ReadSource();
        ReadEach();
        ReadWhen();
        ReadModes();
        ReadFields();
        ReadKey();
        return std::move(m_step);
    }

  private:
    void ReadKind() {
        const YamlNode* type = nullptr;
        for (const StepKind kind : kKinds) {
            const YamlNode* const node = m_node.Find(StepKindName(kind));
            if (node == nullptr) {
                continue;
            }
            if (type != nullptr) {
                m_file.Fail(node->Place(),
                            fmt::format("a step makes one thing; '{}' and '{}' are two",
                                        StepKindName(m_step.kind), StepKindName(kind)));
            }
            m_step.kind = kind;
            type = node;
        }
        if (type == nullptr) {
            m_file.Fail(m_node.Place(),
                        "a step must say what it makes: records, history, attachments or "
                        "duplicates, and of which record type, such as records: bug");
        }
        m_step.type = m_file.TextOf(*type, "the record type");
        m_step.typePlace = type->Place();
        m_what = fmt::format("the step '{}: {}'", StepKindName(m_step.kind), m_step.type);
    }

    void ReadSource() {
        const YamlNode& node =
            m_file.Require(m_node, "source", m_what, "it names one of the map's sources");
        const std::string& name = m_file.TextOf(node, "'source'");
        const auto found =
            std::find_if(m_sources.begin(), m_sources.end(),
                         [&](const MapSource& source) { return source.name == name; });
        if (found == m_sources.end()) {
            m_file.Fail(node.Place(), fmt::format("there is no source '{}' in 'sources'", name));
        }
        m_step.source = static_cast<std::size_t>(found - m_sources.begin());
        m_use.format = found->format;
    }

    void ReadEach() {
        const YamlNode* const node = m_node.Find("each");
        if (node == nullptr) {
            return;
        }
        if (!node->IsList()) {
            m_step.each.push_back(ReadItems(*node));
        }
        for (const YamlNode& item : node->Items()) {
            m_step.each.push_back(ReadItems(item));
        }
        if (m_step.each.empty()) {
            m_file.Fail(node->Place(), "'each' is an empty list");
        }
        m_use.hasItem = true;
    }

    MapEach ReadItems(const YamlNode& node) const {
        MapEach each;
        if (!node.IsMap() || node.Find("column") != nullptr) {
            each.from = ReadAddress(m_file, node, m_use);
            return each;
        }
        m_file.AllowOnly(node, {"from", "split", "optional"}, "'each'");
        each.from = ReadAddress(
            m_file, m_file.Require(node, "from", "'each'", "it names the items"), m_use);
        if (const YamlNode* const split = node.Find("split")) {
            each.split = m_file.TextOf(*split, "'split'");
            if (each.split->empty()) {
                m_file.Fail(split->Place(), "'split' is empty");
            }
        }
        const YamlNode* const optional = node.Find("optional");
        each.from.isOptional = optional != nullptr && m_file.BoolOf(*optional, "'optional'");
        return each;
    }

    void ReadWhen() {
        const YamlNode* const node = m_node.Find("when");
        if (node == nullptr) {
            return;
        }
        if (node->IsMap()) {
            m_step.when.push_back(ReadTest(*node));
        }
        for (const YamlNode& item : node->Items()) {
            m_step.when.push_back(ReadTest(item));
        }
        if (m_step.when.empty()) {
            m_file.Fail(node->Place(), "'when' must be a list of tests");
        }
    }

    MapTest ReadTest(const YamlNode& node) const {
        const std::string what = "a test of 'when'";
        m_file.RequireMap(node, what);
        m_file.AllowOnly(node, {"from", "is", "is_not", "in", "not_in", "has_value", "optional"},
                         what);
        MapTest test;
        test.from = ReadAddress(
            m_file, m_file.Require(node, "from", what, "it names what is tested"), m_use);
        if (const YamlNode* const optional = node.Find("optional")) {
            test.from.isOptional = m_file.BoolOf(*optional, "'optional'");
        }
        std::size_t count = 0;
        for (const std::string_view word : {"is", "is_not", "in", "not_in", "has_value"}) {
            const YamlNode* const value = node.Find(word);
            if (value != nullptr) {
                ++count;
                ReadTestValue(word, *value, test);
            }
        }
        if (count != 1) {
            m_file.Fail(node.Place(), what +
                                          " must have exactly one of 'is', 'is_not', 'in', "
                                          "'not_in' and 'has_value'");
        }
        return test;
    }

    void ReadTestValue(std::string_view word, const YamlNode& value, MapTest& test) const {
        const std::string what = fmt::format("'{}'", word);
        if (word == "has_value") {
            test.kind =
                m_file.BoolOf(value, what) ? MapTest::Kind::HasValue : MapTest::Kind::HasNoValue;
            return;
        }
        test.kind = word == "is" || word == "in" ? MapTest::Kind::OneOf : MapTest::Kind::NoneOf;
        if (word == "in" || word == "not_in") {
            test.texts = m_file.TextsOf(value, what);
        } else {
            test.texts = {m_file.TextOf(value, what)};
        }
    }

    void ReadModes() {
        if (const YamlNode* const node = For("mode", {StepKind::Records})) {
            const std::string& word = m_file.TextOf(*node, "'mode'");
            if (word != "create" && word != "update" && word != "update_or_create") {
                m_file.Fail(node->Place(), fmt::format("'mode' must be create, update or "
                                                       "update_or_create, not '{}'",
                                                       word));
            }
            m_step.mode = word == "create"   ? StepMode::Create
                          : word == "update" ? StepMode::Update
                                             : StepMode::UpdateOrCreate;
        }
        if (const YamlNode* const node =
                For("same_key", {StepKind::Records, StepKind::Duplicates})) {
            const std::string& word = m_file.TextOf(*node, "'same_key'");
            if (word != "reject" && word != "first" && word != "merge") {
                m_file.Fail(
                    node->Place(),
                    fmt::format("'same_key' must be reject, first or merge, not '{}'", word));
            }
            m_step.sameKey = word == "reject"  ? SameKey::Reject
                             : word == "first" ? SameKey::First
                                               : SameKey::Merge;
        }
        const YamlNode* const field = For("field", {StepKind::Attachments});
        if (field != nullptr) {
            m_step.attachmentsField = m_file.TextOf(*field, "'field'");
            m_step.attachmentsPlace = field->Place();
        } else if (m_step.kind == StepKind::Attachments) {
            m_file.Fail(m_step.place,
                        m_what + " lacks 'field', the field that the attachments belong to");
        }
    }

    // A key that is for some kinds of steps only.
    const YamlNode* For(std::string_view key, std::initializer_list<StepKind> kinds) const {
        const YamlNode* const node = m_node.Find(key);
        if (node != nullptr && std::find(kinds.begin(), kinds.end(), m_step.kind) == kinds.end()) {
            m_file.Fail(node->Place(), fmt::format("'{}' does not go with a step that makes {}",
                                                   key, StepKindName(m_step.kind)));
        }
        return node;
    }

    void ReadFields() {
        const YamlNode& fields =
            m_file.Require(m_node, "fields", m_what, "it says which field gets which value");
        m_file.RequireMap(fields, "'fields'");
        for (const YamlNode::Member& member : fields.Members()) {
            m_step.fields.push_back(
                {member.key, member.place,
                 ReadMapValue(m_file, member.value, fmt::format("the value of '{}'", member.key),
                              m_use, m_tables)});
        }
        if (m_step.fields.empty()) {
            m_file.Fail(fields.Place(), "'fields' is empty");
        }
    }

    void ReadKey() {
        const YamlNode& node = m_file.Require(
            m_node, "key", m_what, "it names the field by which the source knows a record");
        m_step.key = m_file.TextOf(node, "'key'");
        m_step.keyPlace = node.Place();
        if (m_step.FindField(m_step.key) == nullptr) {
            m_file.Fail(node.Place(),
                        fmt::format("the key '{}' is not among the fields of the step; its value "
                                    "must be there",
                                    m_step.key));
        }
    }

    const YamlFile& m_file;
    const YamlNode& m_node;
    const std::vector<MapSource>& m_sources;
    MapTables& m_tables;
    AddressUse m_use;
    std::string m_what;
    MapStep m_step;
};

}  // namespace

MapStep ReadMapStep(const YamlFile& file, const YamlNode& node,
                    const std::vector<MapSource>& sources, MapTables& tables) {
    return StepReader(file, node, sources, tables).Read();
}

}  // namespace tool
