#include "recorddb/editing/record_checks.h"

#include <fmt/format.h>

#include <algorithm>
#include <string>

#include "platform/messages/message_ids.h"
#include "recorddb/messages/error_message.h"

namespace recorddb {

namespace {

using schema::Field;
using schema::FieldKind;
using schema::RecordType;

PaMessage CheckRequired(const EditedRecord& record) {
    for (const Field& field : record.Type().fields) {
        const bool filledIn = field.kind == FieldKind::DbId || field.kind == FieldKind::DisplayId;
        const bool given = record.IsNew() || record.buffer.IsChanged(field.index);
        if (field.required && !filledIn && given && !HasValue(record.buffer.Get(field.index))) {
            return FieldMessage(message_id::kRequiredFieldEmpty, record.Type(), field, {});
        }
    }
    return {};
}

bool MayHaveTwin(const EditedRecord& record, const FieldSet& fields) {
    const auto isEmpty = [&record](std::size_t field) {
        return !HasValue(record.buffer.Get(field));
    };
    const auto isChanged = [&record](std::size_t field) { return record.buffer.IsChanged(field); };
    return std::any_of(fields.begin(), fields.end(), isChanged) &&
           std::none_of(fields.begin(), fields.end(), isEmpty);
}

}  // namespace

PaMessage RecordChecks::NotUnique(const EditedRecord& record, const FieldSet& fields,
                                  std::int64_t twin) {
    const RecordType& type = record.Type();
    const std::string other = m_keys.KeyOf(type, twin).value_or(std::to_string(twin));
    if (fields == type.key) {
        return ErrorMessage(
            message_id::kKeyNotUnique,
            {{u"_datatype_", type.name}, {u"_value_", other}, {u"_id_", std::to_string(twin)}});
    }
    const Field& field = type.fields[fields.front()];
    const auto texts = m_keys.TextsOf(field, record.buffer.Get(field.index));
    return FieldMessage(message_id::kValueNotUnique, type, field,
                        {{u"_value_", texts.front()}, {u"_id_", other}});
}

bool RecordChecks::Exists(const Field& field, std::int64_t target) {
    return m_tables.Records(m_schema.Type(field.target)).Version(target).has_value();
}

PaMessage RecordChecks::CheckUnique(const EditedRecord& record) {
    RecordTable& table = m_tables.Records(record.Type());
    for (std::size_t set = 0; set < table.UniqueSets().size(); ++set) {
        const FieldSet& fields = table.UniqueSets()[set];
        if (!MayHaveTwin(record, fields)) {
            continue;
        }
        const std::int64_t self = record.IsNew() ? 0 : record.dbid;
        if (const auto twin = table.FindTwin(set, record.buffer, self)) {
            return NotUnique(record, fields, *twin);
        }
    }
    return {};
}

PaMessage RecordChecks::CheckReferences(const EditedRecord& record) {
    for (const Field& field : record.Type().fields) {
        ReferenceList targets;
        const FieldValue& value = record.buffer.Get(field.index);
        if (field.kind == FieldKind::Reference && HasValue(value)) {
            targets.push_back(std::get<std::int64_t>(value));
        } else if (field.kind == FieldKind::ReferenceList && HasValue(value)) {
            targets = std::get<ReferenceList>(value);
        }
        for (const std::int64_t target : targets) {
            if (!Exists(field, target)) {
                return FieldMessage(message_id::kReferencedRecordGone, record.Type(), field,
                                    {{u"_refentitydef_", m_schema.Type(field.target).name},
                                     {u"_value_", std::to_string(target)}});
            }
        }
    }
    return {};
}

PaMessage RecordChecks::Check(const EditedRecord& record) {
    PaMessage problem = CheckRequired(record);
    return problem.ID() != 0 ? problem : CheckUnique(record);
}

}  // namespace recorddb
