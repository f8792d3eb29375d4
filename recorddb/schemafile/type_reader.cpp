#include "recorddb/schemafile/type_reader.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <utility>

#include "recorddb/model/names.h"
#include "recorddb/schemafile/field_reader.h"

namespace recorddb::schema {

namespace {

constexpr std::array<std::string_view, 6> kTypeKeys = {
    "key", "prefix", "states", "duplicate_state", "spread", "fields"};
constexpr std::size_t kMaxPrefixLength = 20;

void CheckTypeName(const YamlSource& source, const YamlEntry& entry) {
    const std::string& name = entry.key;
    if (!IsIdentifier(name)) {
        source.Fail(entry.keyNode,
                    fmt::format("record type name '{}' must be a letter or underscore followed by "
                                "letters, digits and underscores",
                                name));
    }
    if (name.size() > kMaxTypeNameLength) {
        source.Fail(entry.keyNode, fmt::format("record type name '{}' is longer than {} characters",
                                               name, kMaxTypeNameLength));
    }
    // The engines keep tables of their own under the other two prefixes.
    if (HasOwnPrefix(name) || SameName(std::string_view(name).substr(0, 7), "sqlite_") ||
        SameName(std::string_view(name).substr(0, 3), "pg_")) {
        source.Fail(entry.keyNode,
                    fmt::format("record type name '{}' is reserved: names that start with zt_, "
                                "sqlite_ or pg_ are the database's own",
                                name));
    }
}

void RefuseKeys(const YamlMap& map, std::span<const std::string_view> keys,
                std::string_view reason) {
    for (const std::string_view key : keys) {
        if (const YamlEntry* const entry = map.Find(key)) {
            map.Source().Fail(entry->keyNode,
                              fmt::format("{} is out of place: {}", entry->what, reason));
        }
    }
}

std::string ReadPrefix(const YamlSource& source, const YamlEntry& entry) {
    std::string prefix = ReadText(source, entry);
    const auto isDigit = [](char character) { return character >= '0' && character <= '9'; };
    // A digit at the end would run into the number that follows.
    if (!IsIdentifier(prefix) || isDigit(prefix.back()) || prefix.size() > kMaxPrefixLength) {
        source.Fail(entry.value,
                    fmt::format("{} must be at most {} letters, digits and underscores that start "
                                "with a letter or underscore and do not end in a digit, not '{}'",
                                entry.what, kMaxPrefixLength, prefix));
    }
    return prefix;
}

void ReadStates(const YamlMap& map, const YamlEntry& entry, RecordType& type) {
    for (YamlText& state : ReadTexts(map.Source(), entry)) {
        if (Utf16Length(state.text) > kMaxStateLength) {
            map.Source().Fail(state.place,
                              fmt::format("state '{}' is longer than {} characters, which is the "
                                          "room that history has for it",
                                          state.text, kMaxStateLength));
        }
        type.states.push_back(std::move(state.text));
    }
    if (const YamlEntry* const duplicate = map.Find("duplicate_state")) {
        type.duplicateState = ReadText(map.Source(), *duplicate);
        if (!type.IsState(*type.duplicateState)) {
            map.Source().Fail(
                duplicate->value,
                fmt::format("{} is '{}', which is not among the states {}", duplicate->what,
                            *type.duplicateState, fmt::join(type.states, ", ")));
        }
    }
}

void AddOwnField(RecordType& type, std::string_view name, FieldKind kind) {
    Field field;
    field.name = name;
    field.kind = kind;
    field.index = type.fields.size();
    field.required = true;
    field.unique = kind != FieldKind::State;
    type.fields.push_back(std::move(field));
}

// The engine's own message would show the whole statement, and not the place in the file.
void CheckColumnCount(const YamlSource& source, const YamlEntry& entry, const RecordType& type) {
    const auto columns = std::count_if(
        type.fields.begin(), type.fields.end(),
        [](const Field& one) { return one.kind != FieldKind::DbId && HasColumn(one.kind); });
    if (static_cast<std::size_t>(columns) > kMaxColumnFields) {
        source.Fail(entry.keyNode,
                    fmt::format("{} is one too many: a record type has at most {} fields that hold "
                                "a value, id and state included; spread them over several types",
                                entry.what, kMaxColumnFields));
    }
}

void ReadFields(const YamlMap& map, ReadType& read) {
    const YamlEntry& entry = map.Require("fields", "it lists the fields of the type");
    const YamlMap fields(map.Source(), entry);
    for (YamlEntry fieldEntry : fields.Entries()) {
        fieldEntry.what = fmt::format("field '{}' of {}", fieldEntry.key, map.Self().what);
        if (const Field* const own = read.type.FindField(fieldEntry.key);
            own != nullptr && own->kind != FieldKind::DbId) {
            map.Source().Fail(fieldEntry.keyNode,
                              fmt::format("field name '{}' is reserved: a record type with states "
                                          "has the fields id and state by itself",
                                          fieldEntry.key));
        }
        ReadField field = ReadFieldEntry(map.Source(), fieldEntry);
        field.field.index = read.type.fields.size();
        if (!field.target.text.empty()) {
            read.references.push_back({field.field.index, std::move(field.target)});
        }
        read.type.fields.push_back(std::move(field.field));
        CheckColumnCount(map.Source(), fieldEntry, read.type);
    }
}

void ReadKey(const YamlMap& map, RecordType& type) {
    const YamlEntry& entry =
        map.Require("key", "a record type without states needs one, such as key: [name]");
    for (const YamlText& part : ReadTexts(map.Source(), entry)) {
        const Field* const found = type.FindField(part.text);
        if (found == nullptr) {
            map.Source().Fail(part.place, fmt::format("{} names '{}', which is not a field of the "
                                                      "type",
                                                      entry.what, part.text));
        }
        Field& field = type.fields[found->index];
        if (!HasColumn(field.kind) || field.kind == FieldKind::Multiline) {
            map.Source().Fail(part.place,
                              fmt::format("{} names '{}', a field of type {}, which cannot be part "
                                          "of a key",
                                          entry.what, part.text, FieldKindName(field.kind)));
        }
        if (std::find(type.key.begin(), type.key.end(), field.index) != type.key.end()) {
            map.Source().Fail(part.place,
                              fmt::format("'{}' stands twice in {}", part.text, entry.what));
        }
        if (type.key.size() == kMaxKeyFields) {
            map.Source().Fail(part.place, fmt::format("'{}' is one too many: {} has at most {} "
                                                      "fields",
                                                      part.text, entry.what, kMaxKeyFields));
        }
        // A record without a part of its key could not be told from others.
        field.required = true;
        type.key.push_back(field.index);
    }
}

void ReadWithStates(const YamlMap& map, const YamlEntry& states, ReadType& read) {
    constexpr std::array<std::string_view, 1> refused = {"key"};
    RefuseKeys(map, refused, "the key of a record type with states is its display id");
    RecordType& type = read.type;
    type.kind = RecordKind::WithStates;
    const YamlEntry& prefix =
        map.Require("prefix", "a record type with states needs one for its display ids");
    type.prefix = ReadPrefix(map.Source(), prefix);
    read.prefixPlace = prefix.value.Mark();
    ReadStates(map, states, type);
    AddOwnField(type, kDisplayIdName, FieldKind::DisplayId);
    type.key.push_back(type.fields.back().index);
    AddOwnField(type, kStateName, FieldKind::State);
    ReadFields(map, read);
}

void ReadWithoutStates(const YamlMap& map, ReadType& read) {
    constexpr std::array<std::string_view, 2> refused = {"prefix", "duplicate_state"};
    RefuseKeys(map, refused, "it goes with 'states' only, which the record type lacks");
    ReadFields(map, read);
    ReadKey(map, read.type);
}

}  // namespace

ReadType ReadTypeEntry(const YamlSource& source, const YamlEntry& entry) {
    CheckTypeName(source, entry);
    const YamlMap map(source, entry);
    map.AllowOnly(kTypeKeys);

    ReadType read;
    read.type.name = entry.key;
    AddOwnField(read.type, kDbIdName, FieldKind::DbId);
    if (const YamlEntry* const spread = map.Find("spread")) {
        read.spread = ReadBool(source, *spread);
        read.spreadPlace = spread->value.Mark();
    }
    if (const YamlEntry* const states = map.Find("states")) {
        ReadWithStates(map, *states, read);
    } else {
        ReadWithoutStates(map, read);
    }
    return read;
}

}  // namespace recorddb::schema
