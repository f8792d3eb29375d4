#include "recorddb/schemafile/yaml_map.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <utility>

#include "recorddb/errors.h"
#include "recorddb/model/names.h"

namespace recorddb::schema {

namespace {

// The text of a scalar. Fails for an empty one and for the words that YAML takes for "nothing".
std::string TextOf(const YamlSource& source, const YAML::Node& node, const std::string& what) {
    if (node.IsNull()) {
        source.Fail(node, what + " has no value; put a word that YAML takes for nothing in quotes");
    }
    if (!node.IsScalar()) {
        source.Fail(node, what + " must be a text");
    }
    if (node.Scalar().empty()) {
        source.Fail(node, what + " is empty");
    }
    if (node.Scalar().find('\0') != std::string::npos) {
        source.Fail(node, what + " holds a NUL character, which not every database can store");
    }
    return node.Scalar();
}

}  // namespace

YamlSource::YamlSource(std::string file) : m_file(std::move(file)) {}

void YamlSource::Fail(const YAML::Node& at, const std::string& text) const {
    Fail(at.Mark(), text);
}

void YamlSource::Fail(const YAML::Mark& at, const std::string& text) const {
    if (at.is_null()) {
        throw SchemaError(m_file, 0, 0, text);
    }
    throw SchemaError(m_file, at.line + 1, at.column + 1, text);
}

YamlMap::YamlMap(const YamlSource& source, YamlEntry entry)
    : m_source(source), m_self(std::move(entry)) {
    if (!m_self.value.IsMap() || m_self.value.size() == 0) {
        // An empty value has no place in the file, so the error names that of its key.
        const YAML::Node& at = m_self.value.IsNull() ? m_self.keyNode : m_self.value;
        m_source.Fail(at, m_self.what + " must be a map of at least one key");
    }
    for (const auto& pair : m_self.value) {
        Add(pair.first, pair.second);
    }
}

void YamlMap::Add(const YAML::Node& key, const YAML::Node& value) {
    std::string name = TextOf(m_source, key, "a key in " + m_self.what);
    if (const YamlEntry* const earlier = Find(name)) {
        m_source.Fail(
            key, fmt::format("'{}' stands twice in {}, first in line {} as '{}'", name, m_self.what,
                             earlier->keyNode.Mark().line + 1, earlier->key));
    }
    std::string what = fmt::format("'{}' of {}", name, m_self.what);
    m_entries.push_back({std::move(name), key, value, std::move(what)});
}

void YamlMap::AllowOnly(std::span<const std::string_view> known) const {
    for (const YamlEntry& entry : m_entries) {
        if (std::find(known.begin(), known.end(), entry.key) == known.end()) {
            m_source.Fail(entry.keyNode, fmt::format("unknown key '{}' in {}; known keys are {}",
                                                     entry.key, m_self.what, Joined(known)));
        }
    }
}

const YamlEntry* YamlMap::Find(std::string_view key) const {
    const auto found =
        std::find_if(m_entries.begin(), m_entries.end(),
                     [key](const YamlEntry& entry) { return SameName(entry.key, key); });
    return found == m_entries.end() ? nullptr : &*found;
}

const YamlEntry& YamlMap::Require(std::string_view key, const std::string& hint) const {
    const YamlEntry* const entry = Find(key);
    if (entry == nullptr) {
        m_source.Fail(m_self.keyNode, fmt::format("{} lacks '{}'; {}", m_self.what, key, hint));
    }
    return *entry;
}

std::string ReadText(const YamlSource& source, const YamlEntry& entry) {
    return TextOf(source, entry.value, entry.what);
}

bool ReadBool(const YamlSource& source, const YamlEntry& entry) {
    const std::string text = ReadText(source, entry);
    if (text != "true" && text != "false") {
        source.Fail(entry.value,
                    fmt::format("{} must be true or false, not '{}'", entry.what, text));
    }
    return text == "true";
}

std::int64_t ReadPositive(const YamlSource& source, const YamlEntry& entry) {
    const std::string text = ReadText(source, entry);
    const char* const end = text.data() + text.size();
    std::int64_t number = 0;
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || stop != end || number < 1) {
        source.Fail(entry.value, fmt::format("{} must be a whole number of at least 1, not '{}'",
                                             entry.what, text));
    }
    return number;
}

std::vector<YamlText> ReadTexts(const YamlSource& source, const YamlEntry& entry) {
    if (!entry.value.IsSequence() || entry.value.size() == 0) {
        const YAML::Node& at = entry.value.IsNull() ? entry.keyNode : entry.value;
        source.Fail(at, entry.what + " must be a list of at least one text, such as [one, two]");
    }
    std::vector<YamlText> texts;
    for (const YAML::Node& node : entry.value) {
        std::string text = TextOf(source, node, "an entry of " + entry.what);
        if (std::any_of(texts.begin(), texts.end(),
                        [&text](const YamlText& earlier) { return earlier.text == text; })) {
            source.Fail(node, fmt::format("'{}' stands twice in {}", text, entry.what));
        }
        texts.push_back({std::move(text), node.Mark()});
    }
    return texts;
}

std::string Joined(std::span<const std::string_view> texts) {
    return fmt::format("{}", fmt::join(texts, ", "));
}

}  // namespace recorddb::schema
