#include "tool/load/records/expected_searches.h"

#include <algorithm>

#include "tool/guarded/guarded_text.h"
#include "tool/packet/field_use.h"
#include "tool/packet/importer_text.h"

namespace tool {

using recorddb::ExpectedSearch;

void ExpectedSearches::Add(const SourceRecord& record, const ImportConfiguration& configuration) {
    const Type* const type = m_schema.FindType(configuration.RecordType());
    if (type == nullptr || record.defect != RecordDefect::None ||
        !m_reader.Read(record.packet, m_fields).empty()) {
        return;
    }
    m_guarded = record.guarded;
    ExpectOriginal(configuration, *type);
    if (configuration.Data() == ImportedData::Records) {
        ExpectTwins(*type);
        ExpectTargets(configuration, *type);
    }
}

ExpectedSearch& ExpectedSearches::Expect(const Type& type, const Field& field,
                                         std::string_view value) {
    ExpectedSearch& search = m_searches.emplace_back();
    search.type = &type;
    search.values.emplace_back(&field, Meant(value));
    return search;
}

std::string ExpectedSearches::Meant(std::string_view value) const {
    return m_guarded ? Restored(value) : std::string(value);
}

// The record that is changed or added to, and the one that it repeats.
void ExpectedSearches::ExpectOriginal(const ImportConfiguration& configuration, const Type& type) {
    const Field* const id = type.FindField(configuration.OriginalId());
    const std::string value = OriginalIdOf(m_fields, configuration, type);
    if (id == nullptr || value.empty()) {
        return;
    }
    const bool isRecord = configuration.Data() == ImportedData::Records;
    ExpectedSearch own;
    own.fields = isRecord;
    // The members of a list that is replaced are removed by their keys.
    own.listKeys = isRecord && configuration.ReplaceRefList();
    for (const ImporterField& field : m_fields) {
        const FieldUse use =
            field.value.empty() ? FieldUse::Unused : UseOf(field.name, configuration, type);
        own.history = own.history || use == FieldUse::History;
        own.attachments = own.attachments || use == FieldUse::Attachments;
        if (use == FieldUse::DuplicateMark) {
            own.original = true;
            Expect(type, *id, field.value).original = true;
        }
    }
    if (!configuration.CreatesRecords()) {
        own.type = &type;
        own.values.emplace_back(id, Meant(value));
        m_searches.push_back(std::move(own));
    }
}

// The value that the record gives a field; null when it gives none.
const std::string* ExpectedSearches::ValueOf(const Field& field, const Type& type) const {
    const auto found = std::find_if(m_fields.rbegin(), m_fields.rend(), [&](const auto& given) {
        return !given.value.empty() && type.FindField(given.name) == &field;
    });
    return found == m_fields.rend() ? nullptr : &found->value;
}

// The records with a value that only one may have.
void ExpectedSearches::ExpectTwins(const Type& type) {
    for (const Field& field : type.fields) {
        const std::string* const value = field.unique ? ValueOf(field, type) : nullptr;
        if (value != nullptr) {
            Expect(type, field, *value);
        }
    }
    ExpectedSearch key;
    key.type = &type;
    for (const std::size_t part : type.key) {
        const std::string* const value = ValueOf(type.fields[part], type);
        if (value == nullptr) {
            return;
        }
        key.values.emplace_back(&type.fields[part], Meant(*value));
    }
    m_searches.push_back(std::move(key));
}

void ExpectedSearches::ExpectTargets(const ImportConfiguration& configuration, const Type& type) {
    for (const ImporterField& field : m_fields) {
        if (field.value.empty()) {
            continue;
        }
        const FieldUse use = UseOf(field.name, configuration, type);
        if (use == FieldUse::Reference) {
            ExpectTarget(field, field.value, configuration, type);
        } else if (use == FieldUse::ReferenceList) {
            const std::string_view items = field.value;
            for (std::size_t begin = 0; begin <= items.size();) {
                const std::size_t end = std::min(items.find(',', begin), items.size());
                ExpectTarget(field, items.substr(begin, end - begin), configuration, type);
                begin = end + 1;
            }
        }
    }
}

// A reference is looked up by the field that it is mapped to, whose record's key is then needed,
// and otherwise by the key. Keys of several fields are put together in more ways than can be told
// ahead.
void ExpectedSearches::ExpectTarget(const ImporterField& given, std::string_view value,
                                    const ImportConfiguration& configuration, const Type& type) {
    const Type& target = m_schema.Type(type.FindField(given.name)->target);
    const auto mapping = configuration.Mapping().find(given.name);
    const bool isMapped = mapping != configuration.Mapping().end() && !mapping->second.empty();
    const Field* const field =
        isMapped ? target.FindField(mapping->second) : &target.fields[target.key.front()];
    const std::string_view trimmed = Trimmed(value);
    if (field != nullptr && target.key.size() == 1 && !trimmed.empty()) {
        Expect(target, *field, trimmed).fields = isMapped;
    }
}

namespace {

// In a key of several fields, a mapping counts for a part that is a dbid only.
bool IsSearchedByMapping(const recorddb::schema::RecordType& target) {
    return target.HasStates() || target.key.size() == 1 ||
           std::any_of(target.key.begin(), target.key.end(), [&](std::size_t part) {
               return target.fields[part].kind == recorddb::schema::FieldKind::DbId;
           });
}

}  // namespace

std::vector<std::pair<const recorddb::schema::RecordType*, const recorddb::schema::Field*>>
FieldsSearchedBy(const ImportConfiguration& configuration, const recorddb::schema::Schema& schema) {
    std::vector<std::pair<const recorddb::schema::RecordType*, const recorddb::schema::Field*>>
        fields;
    const auto add = [&](const recorddb::schema::RecordType& type, const std::string& name) {
        if (const auto* const field = type.FindField(name)) {
            fields.emplace_back(&type, field);
        }
    };
    const auto* const type = schema.FindType(configuration.RecordType());
    if (type == nullptr) {
        return fields;
    }
    if (!configuration.CreatesRecords() || !configuration.DuplicateId().empty()) {
        add(*type, configuration.OriginalId());
    }
    if (configuration.Data() == ImportedData::Records) {
        for (const auto& [name, mapped] : configuration.Mapping()) {
            const auto* const reference = type->FindField(name);
            if (reference != nullptr && reference->target != 0 && !mapped.empty() &&
                IsSearchedByMapping(schema.Type(reference->target))) {
                add(schema.Type(reference->target), mapped);
            }
        }
    }
    return fields;
}

}  // namespace tool
