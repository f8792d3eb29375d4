#ifndef RECORDDB_SCHEMAFILE_YAML_MAP_H
#define RECORDDB_SCHEMAFILE_YAML_MAP_H

#include <yaml-cpp/yaml.h>

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace recorddb::schema {

// The file that is being read, for errors.
class YamlSource {
  public:
    explicit YamlSource(std::string file);

    // Throws SchemaError at the place of a node.
    [[noreturn]] void Fail(const YAML::Node& at, const std::string& text) const;
    [[noreturn]] void Fail(const YAML::Mark& at, const std::string& text) const;

  private:
    std::string m_file;
};

// A key of a map with its value. `what` names the value in errors, such as "'max_length' of field
// 'login'".
struct YamlEntry {
    std::string key;
    YAML::Node keyNode;
    YAML::Node value;
    std::string what;
};

// A YAML map whose keys are texts, no two of which are the same without regard to case.
class YamlMap {
  public:
    // Reads the map that is the value of an entry. Throws SchemaError when it is anything else.
    YamlMap(const YamlSource& source, YamlEntry entry);

    // Throws SchemaError at the first key that is not among those known.
    void AllowOnly(std::span<const std::string_view> known) const;

    // The entry of a key; null when there is none.
    const YamlEntry* Find(std::string_view key) const;

    // The entry of a key. Throws SchemaError with the hint when there is none.
    const YamlEntry& Require(std::string_view key, const std::string& hint) const;

    // In the order of the file.
    const std::vector<YamlEntry>& Entries() const { return m_entries; }

    // The entry that the map is the value of.
    const YamlEntry& Self() const { return m_self; }
    const YamlSource& Source() const { return m_source; }

  private:
    void Add(const YAML::Node& key, const YAML::Node& value);

    const YamlSource& m_source;
    YamlEntry m_self;
    std::vector<YamlEntry> m_entries;
};

// The value of an entry as a text, true or false, or a whole number of at least 1. Throw
// SchemaError when it is anything else.
std::string ReadText(const YamlSource& source, const YamlEntry& entry);
bool ReadBool(const YamlSource& source, const YamlEntry& entry);
std::int64_t ReadPositive(const YamlSource& source, const YamlEntry& entry);

// A text with its place.
struct YamlText {
    std::string text;
    YAML::Mark place;
};

// A list of at least one text, all different (exact).
std::vector<YamlText> ReadTexts(const YamlSource& source, const YamlEntry& entry);

// The texts as a list for people: "a, b, c".
std::string Joined(std::span<const std::string_view> texts);

}  // namespace recorddb::schema

#endif
