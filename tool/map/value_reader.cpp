#include "tool/map/value_reader.h"

#include <fmt/format.h>
#include <unicode/timezone.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <memory>
#include <string_view>
#include <utility>

namespace tool {

namespace {

class ValueReader {
  public:
    ValueReader(const YamlFile& file, const YamlNode& node, const AddressUse& use,
                MapTables& tables)
        : m_file(file), m_node(node), m_use(use), m_tables(tables) {}

    MapValue Read(const std::string& what) {
        m_value.place = m_node.Place();
        if (!m_node.IsMap() || m_node.Find("column") != nullptr) {
            m_value.from = ReadAddresses(m_file, m_node, m_use);
            return std::move(m_value);
        }
        m_file.AllowOnly(m_node,
                         {"from",       "text", "value", "optional", "split",    "null_if", "trim",
                          "replace",    "case", "table", "unknown",  "date",     "zone",    "cut",
                          "known_only", "join", "pick",  "default",  "required", "by"},
                         what);
        for (const YamlNode::Member& member : m_node.Members()) {
            m_value.keys[member.key] = member.place;
        }
        ReadOrigin(what);
        ReadTexts();
        ReadTable();
        ReadDate();
        ReadWhole();
        return std::move(m_value);
    }

  private:
    void ReadOrigin(const std::string& what) {
        const YamlNode* const from = m_node.Find("from");
        const YamlNode* const text = m_node.Find("text");
        const YamlNode* const constant = m_node.Find("value");
        if ((from != nullptr) + (text != nullptr) + (constant != nullptr) != 1) {
            m_file.Fail(m_node.Place(),
                        what + " must have exactly one of 'from', 'text' and 'value'");
        }
        if (from != nullptr) {
            m_value.from = ReadAddresses(m_file, *from, m_use);
        } else if (text != nullptr) {
            ReadPattern(*text);
        } else {
            m_value.constant = m_file.TextOf(*constant, "'value'");
        }
        if (Flag("optional")) {
            SetOptional();
        }
    }

    void SetOptional() {
        for (MapAddress& address : m_value.from) {
            address.isOptional = true;
        }
        for (TemplatePart& part : m_value.pattern) {
            if (part.address) {
                part.address->isOptional = true;
            }
        }
    }

    void ReadPattern(const YamlNode& node) {
        std::string_view rest = m_file.TextOf(node, "'text'");
        TemplatePart text;
        const auto endText = [&] {
            if (!text.text.empty()) {
                m_value.pattern.push_back(std::exchange(text, {}));
            }
        };
        while (!rest.empty()) {
            if (rest.starts_with("{{") || rest.starts_with("}}")) {
                text.text += rest.front();
                rest.remove_prefix(2);
            } else if (rest.front() == '{') {
                const std::size_t end = rest.find('}');
                if (end == rest.npos) {
                    m_file.Fail(node.Place(),
                                "a brace opens in 'text' and does not close; a brace "
                                "that is meant as one is doubled");
                }
                endText();
                m_value.pattern.push_back(
                    {"", ReadAddress(m_file, std::string(rest.substr(1, end - 1)), node.Place(),
                                     m_use)});
                rest.remove_prefix(end + 1);
            } else {
                text.text += rest.front();
                rest.remove_prefix(1);
            }
        }
        endText();
        if (std::none_of(m_value.pattern.begin(), m_value.pattern.end(),
                         [](const TemplatePart& part) { return part.address.has_value(); })) {
            m_file.Fail(node.Place(),
                        "'text' names no address in braces; a text that is always the same is a "
                        "'value'");
        }
    }

    void ReadTexts() {
        if (const YamlNode* const split = m_node.Find("split")) {
            m_value.split = NotEmpty(*split, "'split'");
        }
        if (const YamlNode* const nullIf = m_node.Find("null_if")) {
            m_value.nullIf = ReadNullTexts(m_file, *nullIf);
        }
        m_value.trim = Flag("trim");
        if (const YamlNode* const replace = m_node.Find("replace")) {
            m_file.RequireMap(*replace, "'replace'");
            for (const YamlNode::Member& member : replace->Members()) {
                if (member.key.empty()) {
                    m_file.Fail(member.place, "'replace' cannot replace the empty text");
                }
                m_value.replace.emplace_back(member.key,
                                             m_file.TextOf(member.value, "a text of 'replace'"));
            }
        }
        if (const YamlNode* const letterCase = m_node.Find("case")) {
            m_value.letterCase = OneOf(*letterCase, "'case'", {"lower", "upper"}) == "lower"
                                     ? LetterCase::Lower
                                     : LetterCase::Upper;
        }
        if (const YamlNode* const cut = m_node.Find("cut")) {
            m_value.cut = m_file.NumberOf(*cut, "'cut'");
        }
    }

    void ReadTable() {
        const YamlNode* const unknown = m_node.Find("unknown");
        if (const YamlNode* const table = m_node.Find("table")) {
            m_value.table = m_tables.Use(*table);
        } else if (unknown != nullptr) {
            m_file.Fail(m_value.PlaceOf("unknown"),
                        "'unknown' says what becomes of values that a table lacks, and there is no "
                        "'table' here");
        }
        if (unknown == nullptr) {
            return;
        }
        m_value.unknownText = m_file.TextOf(*unknown, "'unknown'");
        const std::string& word = m_value.unknownText;
        m_value.unknown = word == "reject"      ? UnknownValue::Reject
                          : word == "keep"      ? UnknownValue::Keep
                          : word == "leave_out" ? UnknownValue::LeaveOut
                                                : UnknownValue::Replace;
    }

    void ReadDate() {
        const YamlNode* const zone = m_node.Find("zone");
        if (zone != nullptr) {
            m_value.zone = ReadZone(m_file, *zone);
        }
        const YamlNode* const date = m_node.Find("date");
        if (date == nullptr) {
            return;
        }
        m_value.date = m_file.TextsOf(*date, "'date'");
        for (const std::string& format : m_value.date) {
            CheckFormat(format, date->Place());
        }
    }

    void CheckFormat(const std::string& format, MapPlace place) const {
        if (format == "epoch" || format == "epoch_ms") {
            return;
        }
        constexpr std::string_view known = "YmdHMSybBz%";
        for (std::size_t at = format.find('%'); at != std::string::npos;
             at = format.find('%', at + 2)) {
            if (at + 1 == format.size() || known.find(format[at + 1]) == known.npos) {
                m_file.Fail(place, fmt::format("'{}' is no format of a date: it is epoch, epoch_ms "
                                               "or made of %Y %m %d %H %M %S %y %b %B %z",
                                               format));
            }
        }
        const auto has = [&](std::string_view a, std::string_view b, std::string_view c) {
            return format.find(a) != format.npos || format.find(b) != format.npos ||
                   format.find(c) != format.npos;
        };
        if (!has("%Y", "%y", "%y") || !has("%m", "%b", "%B") || !has("%d", "%d", "%d")) {
            m_file.Fail(place,
                        fmt::format("the format '{}' must name year, month and day", format));
        }
    }

    void ReadWhole() {
        m_value.knownOnly = Flag("known_only");
        m_value.required = Flag("required");
        if (const YamlNode* const join = m_node.Find("join")) {
            m_value.join = m_file.TextOf(*join, "'join'");
        }
        if (const YamlNode* const pick = m_node.Find("pick")) {
            m_value.pick =
                OneOf(*pick, "'pick'", {"first", "last"}) == "first" ? Pick::First : Pick::Last;
            if (m_value.join) {
                m_file.Fail(m_value.PlaceOf("pick"), "'join' and 'pick' exclude each other");
            }
        }
        if (const YamlNode* const text = m_node.Find("default")) {
            m_value.defaultText = NotEmpty(*text, "'default'");
        }
        if (const YamlNode* const by = m_node.Find("by")) {
            m_value.by = NotEmpty(*by, "'by'");
        }
    }

    bool Flag(std::string_view key) const {
        const YamlNode* const node = m_node.Find(key);
        return node != nullptr && m_file.BoolOf(*node, fmt::format("'{}'", key));
    }

    const std::string& NotEmpty(const YamlNode& node, const std::string& what) const {
        if (m_file.TextOf(node, what).empty()) {
            m_file.Fail(node.Place(), what + " is empty");
        }
        return node.Text();
    }

    const std::string& OneOf(const YamlNode& node, const std::string& what,
                             std::initializer_list<std::string_view> words) const {
        const std::string& word = m_file.TextOf(node, what);
        if (std::find(words.begin(), words.end(), word) == words.end()) {
            m_file.Fail(node.Place(), fmt::format("{} must be {} or {}, not '{}'", what,
                                                  *words.begin(), *(words.begin() + 1), word));
        }
        return word;
    }

    const YamlFile& m_file;
    const YamlNode& m_node;
    const AddressUse& m_use;
    MapTables& m_tables;
    MapValue m_value;
};

}  // namespace

MapValue ReadMapValue(const YamlFile& file, const YamlNode& node, const std::string& what,
                      const AddressUse& use, MapTables& tables) {
    return ValueReader(file, node, use, tables).Read(what);
}

std::string ReadZone(const YamlFile& file, const YamlNode& node) {
    const std::string& name = file.TextOf(node, "'zone'");
    const icu::TimeZone& unknown = icu::TimeZone::getUnknown();
    const std::unique_ptr<icu::TimeZone> zone(
        icu::TimeZone::createTimeZone(icu::UnicodeString::fromUTF8(name)));
    if (name.empty() || *zone == unknown) {
        file.Fail(node.Place(),
                  fmt::format("there is no time zone '{}'; zones are called UTC, Europe/Berlin, "
                              "GMT+02:00",
                              name));
    }
    return name;
}

std::vector<std::string> ReadNullTexts(const YamlFile& file, const YamlNode& node) {
    return file.TextsOf(node, "'null_if'");
}

}  // namespace tool
