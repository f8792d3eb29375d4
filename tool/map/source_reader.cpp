#include "tool/map/source_reader.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <string_view>

#include "tool/io/charset_decoder.h"
#include "tool/map/address_reader.h"
#include "tool/map/file_ending.h"
#include "tool/map/value_reader.h"

namespace tool {

namespace {

// In bytes. Leaves room, in a name of a file, for what is put before and after it.
constexpr std::size_t kLongestName = 100;

class SourceReader {
  public:
    SourceReader(const YamlFile& file, const YamlNode::Member& member)
        : m_file(file), m_node(member.value), m_what(fmt::format("source '{}'", member.key)) {
        m_source.name = member.key;
        m_source.place = member.place;
    }

    MapSource Read() {
        CheckName();
        m_file.RequireMap(m_node, m_what);
        m_file.AllowOnly(m_node,
                         {"files", "format", "separator", "quote", "encoding", "header", "rows",
                          "ignore", "null_if", "zone"},
                         m_what);
        ReadFiles();
        ReadFormat();
        ReadCsv();
        if (const YamlNode* const rows = Only("rows", MapFormat::Json, "JSON documents")) {
            ReadRows(*rows);
        }
        if (const YamlNode* const ignore = m_node.Find("ignore")) {
            m_source.ignore = ReadAddresses(m_file, *ignore, {m_source.format, false});
        }
        if (const YamlNode* const nullIf = m_node.Find("null_if")) {
            m_source.nullIf = ReadNullTexts(m_file, *nullIf);
        }
        if (const YamlNode* const zone = m_node.Find("zone")) {
            m_source.zone = ReadZone(m_file, *zone);
        }
        return std::move(m_source);
    }

  private:
    // The rows that are rejected go to files that bear the names of their sources.
    void CheckName() const {
        const std::string& name = m_source.name;
        const bool hasOddCharacter = std::any_of(name.begin(), name.end(), [](char c) {
            return c == '/' || static_cast<unsigned char>(c) < ' ';
        });
        if (name.empty() || name.size() > kLongestName || hasOddCharacter) {
            m_file.Fail(m_source.place,
                        fmt::format("the name of a source becomes a part of names of files: it "
                                    "must have 1 to {} bytes, without '/' and control characters",
                                    kLongestName));
        }
    }

    void ReadFiles() {
        const YamlNode& files =
            m_file.Require(m_node, "files", m_what, "it names the files, such as files: bugs.csv");
        m_source.files = m_file.TextsOf(files, "'files'");
        for (const std::string& pattern : m_source.files) {
            CheckPattern(pattern, files.Place());
        }
    }

    void CheckPattern(const std::string& pattern, MapPlace place) const {
        const std::filesystem::path path(pattern);
        for (const auto& part : path) {
            const std::string name = part.string();
            if (name.empty() || name == ".." || name == "/") {
                m_file.Fail(place, fmt::format("'{}' must be the path of files below the SOURCEs "
                                               "of the command line, without '..'",
                                               pattern));
            }
            if (name != "**" && name.find("**") != name.npos) {
                m_file.Fail(place, fmt::format("in '{}', '**' must stand for whole folders: "
                                               "between '/'",
                                               pattern));
            }
        }
        if (path.empty()) {
            m_file.Fail(place, "'files' is empty");
        }
    }

    void ReadFormat() {
        const YamlNode& files = *m_node.Find("files");
        if (const YamlNode* const node = m_node.Find("format")) {
            const std::string& word = m_file.TextOf(*node, "'format'");
            if (word != "csv" && word != "jsonl" && word != "json") {
                m_file.Fail(node->Place(),
                            fmt::format("'format' must be csv, jsonl or json, not '{}'", word));
            }
            m_source.format = word == "csv"    ? MapFormat::Csv
                              : word == "json" ? MapFormat::Json
                                               : MapFormat::JsonLines;
            return;
        }
        const FileEnding* const first = EndingOf(m_source.files.front());
        for (const std::string& pattern : m_source.files) {
            const FileEnding* const ending = EndingOf(pattern);
            if (ending == nullptr || ending->format != first->format ||
                ending->separator != first->separator) {
                m_file.Fail(files.Place(),
                            fmt::format("the ending of '{}' does not tell its format; say format: "
                                        "csv, jsonl or json",
                                        pattern));
            }
        }
        m_source.format = first->format;
        m_source.csv.separator = first->separator;
    }

    // A key that is for one format only.
    const YamlNode* Only(std::string_view key, MapFormat format, std::string_view files) const {
        const YamlNode* const node = m_node.Find(key);
        if (node != nullptr && m_source.format != format) {
            m_file.Fail(node->Place(), fmt::format("'{}' is for {} only", key, files));
        }
        return node;
    }

    void ReadCsv() {
        constexpr std::string_view files = "CSV files";
        if (const YamlNode* const separator = Only("separator", MapFormat::Csv, files)) {
            m_source.csv.separator = CharacterOf(*separator, "'separator'");
        }
        if (const YamlNode* const quote = Only("quote", MapFormat::Csv, files)) {
            m_source.csv.quote = m_file.TextOf(*quote, "'quote'").empty()
                                     ? CsvFormat::kNoQuote
                                     : CharacterOf(*quote, "'quote'");
        }
        if (m_source.csv.quote == m_source.csv.separator) {
            m_file.Fail(m_node.Place(), m_what + " has the same character as separator and quote");
        }
        if (const YamlNode* const encoding = Only("encoding", MapFormat::Csv, files)) {
            m_source.csv.charset = m_file.TextOf(*encoding, "'encoding'");
            if (!IsKnownCharset(m_source.csv.charset)) {
                m_file.Fail(encoding->Place(),
                            fmt::format("there is no encoding '{}'; encodings are called UTF-8, "
                                        "windows-1252, ISO-8859-1, UTF-16",
                                        m_source.csv.charset));
            }
        }
        if (const YamlNode* const header = Only("header", MapFormat::Csv, files)) {
            m_source.csv.header = m_file.TextsOf(*header, "'header'");
        }
    }

    char CharacterOf(const YamlNode& node, const std::string& what) const {
        const std::string& text = m_file.TextOf(node, what);
        if (text.size() != 1 || text[0] == '\n' || text[0] == '\r' ||
            static_cast<unsigned char>(text[0]) >= 0x80) {
            m_file.Fail(node.Place(), what +
                                          " must be one ASCII character, such as \";\" or "
                                          "\"\\t\"");
        }
        return text[0];
    }

    void ReadRows(const YamlNode& node) {
        const std::string& text = m_file.TextOf(node, "'rows'");
        m_source.rows.emplace();
        if (text != "/") {
            m_source.rows =
                ReadPath(m_file, text.starts_with('/') ? text.substr(1) : text, node.Place());
        }
    }

    const YamlFile& m_file;
    const YamlNode& m_node;
    std::string m_what;
    MapSource m_source;
};

}  // namespace

MapSource ReadMapSource(const YamlFile& file, const YamlNode::Member& member) {
    return SourceReader(file, member).Read();
}

}  // namespace tool
