#include <algorithm>
#include <array>

#include "recorddb/schema.h"

namespace recorddb::schema {

namespace {

struct KindName {
    FieldKind kind;
    std::string_view name;
    bool inFile;  // whether a schema file may ask for it
};

constexpr std::array<KindName, 12> kKindNames = {{
    {FieldKind::Text, "text", true},
    {FieldKind::Multiline, "multiline", true},
    {FieldKind::Integer, "integer", true},
    {FieldKind::DateTime, "datetime", true},
    {FieldKind::Reference, "reference", true},
    {FieldKind::ReferenceList, "reference_list", true},
    {FieldKind::Attachments, "attachments", true},
    {FieldKind::DisplayId, "display id", false},
    {FieldKind::State, "state", false},
    {FieldKind::History, "history", true},
    {FieldKind::DbId, "dbid", false},
    {FieldKind::Choice, "choice", true},
}};

}  // namespace

std::string_view FieldKindName(FieldKind kind) {
    return kKindNames.at(static_cast<std::size_t>(kind) - 1).name;
}

std::optional<FieldKind> FieldKindFromName(std::string_view name) {
    const auto* const found =
        std::find_if(kKindNames.begin(), kKindNames.end(),
                     [name](const KindName& known) { return known.inFile && known.name == name; });
    if (found == kKindNames.end()) {
        return std::nullopt;
    }
    return found->kind;
}

std::vector<std::string_view> FieldKindNames() {
    std::vector<std::string_view> names;
    for (const KindName& known : kKindNames) {
        if (known.inFile) {
            names.push_back(known.name);
        }
    }
    return names;
}

bool HasColumn(FieldKind kind) {
    return kind != FieldKind::ReferenceList && kind != FieldKind::Attachments &&
           kind != FieldKind::History;
}

}  // namespace recorddb::schema
