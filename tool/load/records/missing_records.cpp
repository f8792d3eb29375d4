#include "tool/load/records/missing_records.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>
#include <utility>

#include "recorddb/value_text.h"
#include "tool/guarded/blank_word.h"
#include "tool/guarded/guarded_text.h"
#include "tool/packet/field_use.h"
#include "tool/packet/importer_text.h"
#include "tool/packet/source_formats.h"

namespace tool {

namespace {

using recorddb::schema::Field;
using recorddb::schema::FieldKind;
using recorddb::schema::RecordType;

constexpr std::size_t kRemembered = 100'000;

std::vector<std::string> Items(FieldUse use, const std::string& value) {
    if (use == FieldUse::ReferenceList) {
        return ReadListItems(value);
    }
    // "BLANK" empties a single reference.
    const std::string_view item = Trimmed(value);
    return item.empty() || IsBlankWord(item) ? std::vector<std::string>()
                                             : std::vector{std::string(item)};
}

// Values of other kinds are stored in another form than people write.
bool IsComparedAsText(const Field& field) {
    switch (field.kind) {
        case FieldKind::Text:
        case FieldKind::Multiline:
        case FieldKind::Choice:
        case FieldKind::State:
        case FieldKind::DisplayId:
        case FieldKind::Integer:
            return true;
        default:
            return false;
    }
}

}  // namespace

bool MayCreate(const ImportConfiguration& configuration) {
    return configuration.CreatesRecords() ||
           (configuration.Data() == ImportedData::Records && configuration.UpdateInsert());
}

std::string KeyOfValue(const RecordType& type, const Field* field, std::string_view value) {
    const auto number = field != nullptr && field->kind == FieldKind::Integer
                            ? recorddb::IntegerOf(value)
                            : std::nullopt;
    return fmt::format("{} {} {}", type.id, field == nullptr ? "key" : field->name,
                       number ? std::to_string(*number) : value);
}

std::string WantedRecord::Key() const {
    return KeyOfValue(*type, field, value);
}

MissingRecords::MissingRecords(recorddb::Database& database)
    : m_database(database), m_reader(database) {}

std::vector<WantedRecord> MissingRecords::Find(const SourceRecord& record,
                                               const ImportConfiguration& configuration) {
    const RecordType* type = m_database.GetSchema().FindType(configuration.RecordType());
    std::vector<Wanted> missing;
    if (type != nullptr) {
        missing = WantedBy(record, configuration, *type);
        std::erase_if(missing, [this](const Wanted& wanted) { return IsThere(wanted); });
    }
    return missing;
}

std::string MissingRecords::Describe(const std::vector<WantedRecord>& missing) const {
    std::string text;
    for (const Wanted& wanted : missing) {
        text += fmt::format("{}It waits for the {} ", text.empty() ? "" : " ", wanted.type->name);
        text += wanted.field == nullptr
                    ? fmt::format("\"{}\"", wanted.value)
                    : fmt::format("whose {} is \"{}\"", wanted.fieldName, wanted.value);
        text += wanted.role.empty() ? "" : fmt::format(" (field {})", wanted.role);
        const auto rejected = m_rejected.find({wanted.type->id, wanted.value});
        text += rejected == m_rejected.end()
                    ? "."
                    : fmt::format(", which was rejected too: {}.", rejected->second);
    }
    return text;
}

std::vector<MissingRecords::Wanted> MissingRecords::WantedBy(
    const SourceRecord& record, const ImportConfiguration& configuration, const RecordType& type) {
    std::vector<Wanted> wanted;
    if (!m_fieldReader.Read(record.packet, m_fields).empty()) {
        return wanted;
    }
    const std::string& identity = configuration.OriginalId();
    const Field* const id = type.FindField(identity);
    const auto wantById = [&](const std::string& value, const std::string& role) {
        if (id != nullptr) {
            wanted.push_back({&type, id, identity, value, role});
        }
    };
    if (configuration.Data() == ImportedData::Records) {
        for (const ImporterField& field : m_fields) {
            AddReferences(field, configuration, type, wanted);
        }
        for (const ImporterField& field : m_fields) {
            if (UseOf(field.name, configuration, type) == FieldUse::DuplicateMark) {
                wantById(field.value, field.name);
            }
        }
    }
    if (!MayCreate(configuration)) {
        wantById(OriginalIdOf(m_fields, configuration, type), "");
    }
    std::erase_if(wanted, [](const Wanted& one) { return one.value.empty(); });
    for (Wanted& one : wanted) {
        one.value = record.guarded ? Restored(one.value) : std::move(one.value);
    }
    return wanted;
}

void MissingRecords::AddReferences(const ImporterField& given,
                                   const ImportConfiguration& configuration, const RecordType& type,
                                   std::vector<Wanted>& wanted) const {
    const FieldUse use = UseOf(given.name, configuration, type);
    if (use != FieldUse::Reference && use != FieldUse::ReferenceList) {
        return;
    }
    const Field& field = *type.FindField(given.name);
    const RecordType& target = m_database.GetSchema().Type(field.target);
    const auto mapping = configuration.Mapping().find(given.name);
    // A key of several fields is not searched through the mapping.
    const bool isMapped = mapping != configuration.Mapping().end() && target.key.size() == 1;
    const std::string mapped = isMapped ? mapping->second : "";
    const Field* const searched = target.FindField(mapped);
    if (searched == nullptr && !mapped.empty()) {
        return;
    }
    for (const std::string& item : Items(use, given.value)) {
        wanted.push_back({&target, searched, mapped, item, field.name});
    }
}

bool MissingRecords::IsThere(const Wanted& wanted) {
    if (wanted.field == nullptr) {
        const auto found = m_reader.Find(*wanted.type, wanted.value);
        // A dbid is found, too, but is no key.
        return found && m_reader.Key(*wanted.type, found->dbid) == wanted.value;
    }
    if (!IsComparedAsText(*wanted.field)) {
        return true;
    }
    m_database.EnsureSearchIndex(*wanted.type, *wanted.field);
    return !m_reader.FindByValue(*wanted.type, *wanted.field, wanted.value, 1).empty();
}

void MissingRecords::NoteRejected(const ImportConfiguration& configuration,
                                  const std::string& sourceId, const std::string& place) {
    const RecordType* type = m_database.GetSchema().FindType(configuration.RecordType());
    if (type != nullptr && !sourceId.empty() && configuration.Data() == ImportedData::Records &&
        m_rejected.size() < kRemembered) {
        RecordId id(type->id, sourceId);
        if (m_rejected.emplace(id, place).second) {
            m_latest.push_back(std::move(id));
        }
    }
}

void MissingRecords::Undo() {
    for (const RecordId& id : m_latest) {
        m_rejected.erase(id);
    }
    m_latest.clear();
}

}  // namespace tool
