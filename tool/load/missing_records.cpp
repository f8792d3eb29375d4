#include "tool/load/missing_records.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "tool/guarded/guarded_text.h"
#include "tool/packet/field_search.h"
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

std::string MappedField(const ImportConfiguration& configuration, const Field& field) {
    const auto& mapping = configuration.Mapping();
    const auto found = std::find_if(mapping.begin(), mapping.end(), [&](const auto& entry) {
        return EqualNoCase(entry.first, field.name);
    });
    return found == mapping.end() ? std::string() : found->second;
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

MissingRecords::MissingRecords(recorddb::Database& database)
    : m_database(database), m_reader(database) {}

std::string MissingRecords::Describe(const SourceRecord& record,
                                     const ImportConfiguration& configuration) {
    const RecordType* type = m_database.GetSchema().FindType(configuration.RecordType());
    std::string text;
    if (type == nullptr) {
        return text;
    }
    for (const Wanted& wanted : WantedBy(record, configuration, *type)) {
        if (IsThere(wanted)) {
            continue;
        }
        text += fmt::format("{}It waits for the {} ", text.empty() ? "" : " ", wanted.type->name);
        text += wanted.field.empty()
                    ? fmt::format("\"{}\"", wanted.value)
                    : fmt::format("whose {} is \"{}\"", wanted.field, wanted.value);
        text += wanted.role.empty() ? "" : fmt::format(" (field {})", wanted.role);
        const auto rejected = m_rejected.find({wanted.type->id, wanted.value});
        text += rejected == m_rejected.end()
                    ? "."
                    : fmt::format(", which was rejected too: {}.", rejected->second);
    }
    return text;
}

std::vector<MissingRecords::Wanted> MissingRecords::WantedBy(
    const SourceRecord& record, const ImportConfiguration& configuration,
    const RecordType& type) const {
    const std::string& identity = configuration.OriginalId();
    const bool isRecord = configuration.Data() == ImportedData::Records;
    const bool creates =
        configuration.CreatesRecords() || (isRecord && configuration.UpdateInsert());
    std::vector<Wanted> wanted;
    if (isRecord) {
        wanted = References(record, configuration, type);
    }
    if (isRecord && !identity.empty()) {
        const std::string& duplicate = configuration.DuplicateId();
        wanted.push_back(
            {&type, identity, FindFieldValue(record.raw, duplicate).value_or(""), duplicate});
    }
    if (!creates && !identity.empty()) {
        wanted.push_back({&type, identity, FindFieldValue(record.raw, identity).value_or(""), ""});
    }
    std::erase_if(wanted, [](const Wanted& one) { return one.value.empty(); });
    for (Wanted& one : wanted) {
        one.value = record.guarded ? Restored(one.value) : std::move(one.value);
    }
    return wanted;
}

std::vector<MissingRecords::Wanted> MissingRecords::References(
    const SourceRecord& record, const ImportConfiguration& configuration,
    const RecordType& type) const {
    std::vector<Wanted> wanted;
    for (const Field& field : type.fields) {
        const FieldUse use = UseOf(field.name, configuration, type);
        if (use != FieldUse::Reference && use != FieldUse::ReferenceList) {
            continue;
        }
        const std::string value = FindFieldValue(record.raw, field.name).value_or("");
        const RecordType& target = m_database.GetSchema().Type(field.target);
        // A key of several fields is not searched through the mapping.
        const std::string mapped = target.key.size() > 1 ? "" : MappedField(configuration, field);
        for (const std::string& item : Items(use, value)) {
            wanted.push_back({&target, mapped, item, field.name});
        }
    }
    return wanted;
}

bool MissingRecords::IsThere(const Wanted& wanted) {
    if (wanted.field.empty()) {
        const auto found = m_reader.Find(*wanted.type, wanted.value);
        // A dbid is found, too, but is no key.
        return found && m_reader.Key(*wanted.type, found->dbid) == wanted.value;
    }
    const Field* field = wanted.type->FindField(wanted.field);
    if (field == nullptr || !IsComparedAsText(*field)) {
        return true;
    }
    m_database.EnsureSearchIndex(*wanted.type, *field);
    return !m_reader.FindByValue(*wanted.type, *field, wanted.value, 1).empty();
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
