#include "tool/packet/field_use.h"

#include <algorithm>

#include "tool/packet/importer_text.h"

namespace tool {

namespace {

namespace schema = recorddb::schema;

bool IsState(std::string_view name, const schema::RecordType& type) {
    return type.HasStates() && EqualNoCase(name, schema::kStateName);
}

bool IsOriginalId(std::string_view name, const ImportConfiguration& configuration) {
    return EqualNoCase(name, configuration.OriginalId());
}

FieldUse UseOfKind(schema::FieldKind kind) {
    switch (kind) {
        case schema::FieldKind::Reference:
            return FieldUse::Reference;
        case schema::FieldKind::ReferenceList:
            return FieldUse::ReferenceList;
        case schema::FieldKind::Attachments:
            return FieldUse::Attachments;
        case schema::FieldKind::History:
            return FieldUse::History;
        case schema::FieldKind::DisplayId:
        case schema::FieldKind::DbId:
            return FieldUse::NeverWritten;
        default:
            return FieldUse::Value;
    }
}

// Asks in the importer's order and compares names as it does. Names of fields are compared by the
// database, as SQL identifiers.
FieldUse UseInRecords(std::string_view name, const ImportConfiguration& configuration,
                      const schema::RecordType& type) {
    if (IsState(name, type)) {
        return FieldUse::State;
    }
    const bool isOriginalId = IsOriginalId(name, configuration);
    if (!isOriginalId && EqualNoCase(name, configuration.DuplicateId())) {
        return FieldUse::DuplicateMark;
    }
    const schema::Field* const field = type.FindField(name);
    if (field == nullptr) {
        return FieldUse::Unknown;
    }
    const FieldUse use = UseOfKind(field->kind);
    const bool onlyLookedUp =
        use == FieldUse::NeverWritten && isOriginalId && configuration.UpdateRecord();
    return onlyLookedUp ? FieldUse::LookedUp : use;
}

}  // namespace

FieldUse UseOf(std::string_view name, const ImportConfiguration& configuration,
               const schema::RecordType& type) {
    if (configuration.Data() == ImportedData::Records) {
        return UseInRecords(name, configuration, type);
    }
    if (configuration.Data() == ImportedData::History && EqualNoCase(name, "history")) {
        return FieldUse::History;
    }
    if (configuration.Data() == ImportedData::Attachments) {
        const schema::Field* const field = type.FindField(name);
        if (field != nullptr && field->kind == schema::FieldKind::Attachments) {
            return FieldUse::Attachments;
        }
    }
    return IsOriginalId(name, configuration) ? FieldUse::LookedUp : FieldUse::Unused;
}

std::string OriginalIdOf(const ImporterFields& fields, const ImportConfiguration& configuration,
                         const schema::RecordType& type) {
    if (configuration.OriginalId().empty()) {
        return {};
    }
    const auto found = std::find_if(fields.rbegin(), fields.rend(), [&](const auto& field) {
        return !field.value.empty() && !IsState(field.name, type) &&
               IsOriginalId(field.name, configuration);
    });
    return found == fields.rend() ? std::string() : found->value;
}

}  // namespace tool
