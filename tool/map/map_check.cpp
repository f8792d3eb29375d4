#include "tool/map/map_check.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <map>
#include <span>
#include <vector>

namespace tool {

namespace {

namespace schema = recorddb::schema;

bool IsReference(schema::FieldKind kind) {
    return kind == schema::FieldKind::Reference || kind == schema::FieldKind::ReferenceList;
}

std::string FieldNames(const schema::RecordType& type) {
    std::vector<std::string> names;
    for (const schema::Field& field : type.fields) {
        if (field.kind != schema::FieldKind::DbId && field.kind != schema::FieldKind::DisplayId) {
            names.push_back(field.name);
        }
    }
    return fmt::format("{}", fmt::join(names, ", "));
}

class StepCheck {
  public:
    StepCheck(const MapFile& map, const MapStep& step, const schema::Schema& schema)
        : m_map(map), m_step(step), m_schema(schema) {}

    void Run() {
        m_type = m_schema.FindType(m_step.type);
        if (m_type == nullptr) {
            std::vector<std::string> names;
            for (const schema::RecordType& type : m_schema.Types()) {
                names.push_back(type.name);
            }
            Fail(m_step.typePlace, fmt::format("the database has no record type '{}'; its record "
                                               "types are {}",
                                               m_step.type, fmt::join(names, ", ")));
        }
        CheckKey();
        switch (m_step.kind) {
            case StepKind::History:
                CheckNamed(kHistoryFields);
                RequireHistory();
                break;
            case StepKind::Attachments:
                CheckNamed(kAttachmentFields);
                RequireAttachments();
                break;
            case StepKind::Duplicates:
                CheckNamed(std::span(&kDuplicateField, 1));
                Require(kDuplicateField);
                break;
            default:
                CheckRecords();
        }
    }

  private:
    [[noreturn]] void Fail(MapPlace place, const std::string& text) const {
        throw MapError(m_map.name, place, text);
    }

    void CheckKey() const {
        const schema::Field* const key = m_type->FindField(m_step.key);
        if (key == nullptr) {
            Fail(m_step.keyPlace, fmt::format("record type '{}' has no field '{}'; its fields are "
                                              "{}",
                                              m_type->name, m_step.key, FieldNames(*m_type)));
        }
        if (!schema::HasColumn(key->kind)) {
            Fail(m_step.keyPlace, fmt::format("records cannot be known by '{}', since its type is "
                                              "{}",
                                              key->name, schema::FieldKindName(key->kind)));
        }
    }

    void CheckRecords() const {
        for (const MapField& field : m_step.fields) {
            const schema::Field* const found = m_type->FindField(field.name);
            if (found == nullptr) {
                Fail(field.place,
                     fmt::format("record type '{}' has no field '{}'; its fields are {}",
                                 m_type->name, field.name, FieldNames(*m_type)));
            }
            CheckKind(field, *found);
            CheckValue(field, found);
        }
    }

    void CheckKind(const MapField& field, const schema::Field& found) const {
        const bool isKey = field.name == m_step.key && m_step.mode != StepMode::Create;
        switch (found.kind) {
            case schema::FieldKind::DbId:
            case schema::FieldKind::DisplayId:
                if (!isKey) {
                    Fail(field.place,
                         fmt::format("'{}' gets its values from the database", found.name));
                }
                break;
            case schema::FieldKind::History:
                Fail(field.place, fmt::format("'{}' is the history; a step of its own makes it: "
                                              "history: {}",
                                              found.name, m_type->name));
            case schema::FieldKind::Attachments:
                Fail(field.place, fmt::format("'{0}' holds attachments; a step of its own makes "
                                              "them: attachments: {1}, field: {0}",
                                              found.name, m_type->name));
            default:
                break;
        }
    }

    // The fields that such a step has, besides the key.
    void CheckNamed(std::span<const std::string_view> names) const {
        for (const MapField& field : m_step.fields) {
            const bool isNamed = std::find(names.begin(), names.end(), field.name) != names.end();
            if (!isNamed && field.name != m_step.key) {
                Fail(field.place,
                     fmt::format("a step that makes {} has no field '{}'; besides the key it has "
                                 "{}",
                                 StepKindName(m_step.kind), field.name, fmt::join(names, ", ")));
            }
            if (isNamed && field.name == m_step.key) {
                Fail(m_step.keyPlace,
                     fmt::format("records cannot be known by their field '{0}' here, since '{0}' "
                                 "means something else in a step that makes {1}",
                                 field.name, StepKindName(m_step.kind)));
            }
            CheckValue(field, nullptr);
        }
    }

    void Require(std::string_view name) const {
        if (m_step.FindField(name) == nullptr) {
            Fail(m_step.place, fmt::format("a step that makes {} needs the field '{}'",
                                           StepKindName(m_step.kind), name));
        }
    }

    void RequireHistory() const {
        if (m_type->HistoryField() == nullptr) {
            Fail(m_step.typePlace,
                 fmt::format("record type '{}' has no field of type history", m_type->name));
        }
        Require("when");
    }

    void RequireAttachments() const {
        const schema::Field* const field = m_type->FindField(m_step.attachmentsField);
        if (field == nullptr || field->kind != schema::FieldKind::Attachments) {
            Fail(m_step.attachmentsPlace,
                 fmt::format("'{}' is no field of attachments of record type '{}'",
                             m_step.attachmentsField, m_type->name));
        }
        Require("path");
    }

    // `found` is null for what is no field of the type.
    void CheckValue(const MapField& field, const schema::Field* found) const {
        const bool refers = found != nullptr && IsReference(found->kind);
        const bool isOwnRecord = m_step.kind != StepKind::Records &&
                                 (field.name == m_step.key || field.name == kDuplicateField);
        const bool isTime = (found != nullptr && found->kind == schema::FieldKind::DateTime) ||
                            (m_step.kind == StepKind::History && field.name == "when");
        RefuseUnless(refers, field, "by", "references and lists of them");
        RefuseUnless(refers || isOwnRecord, field, "known_only",
                     "references, lists of them, and the records that history, attachments and "
                     "duplicates belong to");
        RefuseUnless(isTime, field, "date", "dates");
        RefuseUnless(isTime, field, "zone", "dates");
        if (found != nullptr && found->kind == schema::FieldKind::ReferenceList) {
            RefuseUnless(false, field, "join", "values that are no list");
            RefuseUnless(false, field, "pick", "values that are no list");
        }
        if (refers) {
            CheckLookUp(field, *found);
        }
    }

    void RefuseUnless(bool fits, const MapField& field, std::string_view key,
                      std::string_view what) const {
        if (!fits && field.value.keys.contains(key)) {
            Fail(field.value.PlaceOf(key),
                 fmt::format("'{}' is for {}, and '{}' is none", key, what, field.name));
        }
    }

    void CheckLookUp(const MapField& field, const schema::Field& found) const {
        const schema::RecordType& target = m_schema.Type(found.target);
        const schema::Field* const lookUp = LookUpField(field.value, found, m_schema);
        if (field.value.by && (lookUp == nullptr || !schema::HasColumn(lookUp->kind))) {
            Fail(field.value.PlaceOf("by"),
                 fmt::format("record type '{}', which '{}' refers to, has no field '{}' that "
                             "records could be found by",
                             target.name, found.name, *field.value.by));
        }
        if (lookUp == nullptr && field.value.knownOnly) {
            Fail(field.value.PlaceOf("known_only"),
                 fmt::format("the key of record type '{}' has several fields; say by which of them "
                             "its records are known (by)",
                             target.name));
        }
    }

    const MapFile& m_map;
    const MapStep& m_step;
    const schema::Schema& m_schema;
    const schema::RecordType* m_type = nullptr;
};

// What several steps attach to one field of a record is gathered by its key, since a later packet
// replaces attachments of the same file name. Two keys of one record do not tell that it is one.
void CheckAttachmentKeys(const MapFile& map, const schema::Schema& schema) {
    struct First {
        const MapStep* step;
        const schema::Field* key;
    };
    std::map<const schema::Field*, First> firsts;  // by the field that they attach to
    for (const MapStep& step : map.steps) {
        if (step.kind != StepKind::Attachments) {
            continue;
        }
        const schema::RecordType& type = *schema.FindType(step.type);
        const schema::Field* const key = type.FindField(step.key);
        const auto [first, isNew] =
            firsts.try_emplace(type.FindField(step.attachmentsField), First{&step, key});
        if (!isNew && first->second.key != key) {
            throw MapError(
                map.name, step.keyPlace,
                fmt::format("a step in line {} knows the records whose '{}' it fills by '{}'; "
                            "know them by that in this step, too, or fill another field",
                            first->second.step->place.line, step.attachmentsField,
                            first->second.key->name));
        }
    }
}

}  // namespace

void CheckMap(const MapFile& map, const schema::Schema& schema) {
    for (const MapStep& step : map.steps) {
        StepCheck(map, step, schema).Run();
    }
    CheckAttachmentKeys(map, schema);
}

const schema::Field* LookUpField(const MapValue& value, const schema::Field& field,
                                 const schema::Schema& schema) {
    const schema::RecordType& target = schema.Type(field.target);
    if (value.by) {
        return target.FindField(*value.by);
    }
    return target.key.size() == 1 ? &target.fields[target.key.front()] : nullptr;
}

}  // namespace tool
