#include "recorddb/schemafile/field_reader.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <utility>

#include "recorddb/model/names.h"
#include "recorddb/schema.h"

namespace recorddb::schema {

namespace {

constexpr std::array<std::string_view, 6> kFieldKeys = {"type",   "max_length", "required",
                                                        "unique", "choices",    "to"};

// Which kinds of field an option is for. Attachments and history often arrive after the record
// itself, so a record without them must be possible. Long texts do not fit into a unique index.
bool Applies(std::string_view option, FieldKind kind) {
    if (option == "max_length") {
        return kind == FieldKind::Text || kind == FieldKind::Multiline;
    }
    if (option == "required") {
        return kind != FieldKind::Attachments && kind != FieldKind::History;
    }
    if (option == "unique") {
        return HasColumn(kind) && kind != FieldKind::Multiline;
    }
    if (option == "choices") {
        return kind == FieldKind::Choice;
    }
    if (option == "to") {
        return kind == FieldKind::Reference || kind == FieldKind::ReferenceList;
    }
    return true;
}

FieldKind ReadKind(const YamlMap& map) {
    const std::string hint = "types are " + Joined(FieldKindNames());
    const YamlEntry& entry = map.Require("type", hint);
    const std::string word = ReadText(map.Source(), entry);
    const auto kind = FieldKindFromName(word);
    if (!kind) {
        map.Source().Fail(entry.value,
                          fmt::format("unknown type '{}' of {}; {}", word, map.Self().what, hint));
    }
    return *kind;
}

void CheckOptions(const YamlMap& map, FieldKind kind) {
    for (const YamlEntry& entry : map.Entries()) {
        if (Applies(entry.key, kind)) {
            continue;
        }
        std::vector<std::string_view> names = FieldKindNames();
        std::erase_if(names, [&entry](std::string_view name) {
            return !Applies(entry.key, FieldKindFromName(name).value());
        });
        map.Source().Fail(entry.keyNode,
                          fmt::format("{} does not go with type {}; it goes with {}", entry.what,
                                      FieldKindName(kind), Joined(names)));
    }
}

void CheckFieldName(const YamlSource& source, const YamlEntry& entry) {
    if (!IsIdentifier(entry.key)) {
        source.Fail(entry.keyNode,
                    fmt::format("field name '{}' must be a letter or underscore followed by "
                                "letters, digits and underscores",
                                entry.key));
    }
    if (entry.key.size() > kMaxIdentifierLength) {
        source.Fail(entry.keyNode, fmt::format("field name '{}' is longer than {} characters",
                                               entry.key, kMaxIdentifierLength));
    }
    if (HasOwnPrefix(entry.key)) {
        source.Fail(entry.keyNode,
                    fmt::format("field name '{}' is reserved: names that start with zt_ are the "
                                "database's own",
                                entry.key));
    }
    if (SameName(entry.key, kDbIdName)) {
        source.Fail(entry.keyNode, fmt::format("field name '{}' is reserved: every record has this "
                                               "field, its own identifier",
                                               entry.key));
    }
    if (IsSystemColumn(entry.key)) {
        source.Fail(entry.keyNode,
                    fmt::format("field name '{}' is reserved: PostgreSQL has a column of its own "
                                "by this name",
                                entry.key));
    }
}

}  // namespace

ReadField ReadFieldEntry(const YamlSource& source, const YamlEntry& entry) {
    CheckFieldName(source, entry);
    if (!entry.value.IsMap()) {
        source.Fail(entry.value.IsNull() ? entry.keyNode : entry.value,
                    entry.what + " must be a map such as {type: text}");
    }
    const YamlMap map(source, entry);
    map.AllowOnly(kFieldKeys);

    ReadField read;
    Field& field = read.field;
    field.name = entry.key;
    field.kind = ReadKind(map);
    CheckOptions(map, field.kind);
    if (const YamlEntry* const maxLength = map.Find("max_length")) {
        field.maxLength = ReadPositive(source, *maxLength);
    }
    if (const YamlEntry* const required = map.Find("required")) {
        field.required = ReadBool(source, *required);
    }
    if (const YamlEntry* const unique = map.Find("unique")) {
        field.unique = ReadBool(source, *unique);
    }
    if (field.kind == FieldKind::Choice) {
        for (YamlText& choice :
             ReadTexts(source, map.Require("choices", "such as choices: [minor, major]"))) {
            field.choices.push_back(std::move(choice.text));
        }
    }
    if (Applies("to", field.kind)) {
        const YamlEntry& to = map.Require("to", "it names the record type that is referenced");
        read.target = {ReadText(source, to), to.value.Mark()};
    }
    return read;
}

}  // namespace recorddb::schema
