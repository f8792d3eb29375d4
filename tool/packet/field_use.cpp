#include "tool/packet/field_use.h"

#include "recorddb/schema.h"
#include "tool/packet/record_fields.h"

namespace tool {

namespace {

namespace schema = recorddb::schema;

// Names that end up in SQL are compared like SQL identifiers, those that only the importer looks at
// as it does.
bool IsOriginalId(std::string_view name, const ImportConfiguration& configuration) {
    return SameFieldName(name, configuration.OriginalId());
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

// The order of these questions is the importer's.
FieldUse UseInRecords(std::string_view name, const ImportConfiguration& configuration,
                      const schema::RecordType& type) {
    if (type.HasStates() && schema::SameName(name, schema::stateName)) {
        return FieldUse::State;
    }
    const bool isOriginalId = IsOriginalId(name, configuration);
    if (!isOriginalId && SameFieldName(name, configuration.DuplicateId())) {
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
    if (configuration.Data() == ImportedData::History && SameFieldName(name, "history")) {
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

}  // namespace tool
