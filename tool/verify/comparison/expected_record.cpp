#include "tool/verify/comparison/expected_record.h"

#include <algorithm>
#include <utility>

#include "platform/core/adtext.h"
#include "tool/packet/importer_text.h"
#include "tool/verify/records/stored_text.h"

namespace tool {

using recorddb::schema::Field;
using recorddb::schema::RecordType;

namespace {

std::string BaseName(const std::string& path) {
    return AdBasename(Obx_String::FromUtf8(path)).ToUtf8();
}

const Field& StateOf(const RecordType& type) {
    return *type.FindField(recorddb::schema::kStateName);
}

bool Holds(const std::vector<ExpectedTarget>& targets, const ExpectedTarget& target) {
    return target.dbid != 0 &&
           std::any_of(targets.begin(), targets.end(), [&target](const ExpectedTarget& other) {
               return other.dbid == target.dbid;
           });
}

}  // namespace

ExpectedRecord::ExpectedRecord(const RecordType& type, ReferenceResolver& resolver, bool exact)
    : m_type(type),
      m_resolver(resolver),
      m_exact(exact),
      m_values(type.fields.size()),
      m_targets(type.fields.size()),
      m_attachments(type.fields.size()) {}

void ExpectedRecord::Add(const KeptRecord& record, const ImportConfiguration& configuration) {
    const bool creates = configuration.CreatesRecords();
    if (m_empty) {
        m_firstPlace = record.place;
        m_creates = creates;
        m_empty = false;
    }
    m_creation += creates ? 1 : 0;
    if (!record.originalId.empty()) {
        m_sourceId = record.originalId;
    }
    std::string duplicateOf;
    bool hasHistory = false;
    for (const KeptField& field : record.fields) {
        switch (field.use) {
            case FieldUse::DuplicateMark:
                duplicateOf = field.value;
                break;
            case FieldUse::History:
                // In a record of a history packet, only the first history field counts.
                if (configuration.Data() == ImportedData::Records ||
                    !std::exchange(hasHistory, true)) {
                    AddHistory(record.place, field.history);
                }
                break;
            default:
                AddField(record.place, field, configuration);
        }
    }
    const bool marks = !configuration.DuplicateId().empty() && !configuration.OriginalId().empty();
    if (marks && !duplicateOf.empty()) {
        AddOriginal(record.place, duplicateOf, configuration);
    }
}

void ExpectedRecord::AddField(const SourcePlace& place, const KeptField& given,
                              const ImportConfiguration& configuration) {
    const Field* const field = m_type.FindField(given.name);
    switch (given.use) {
        case FieldUse::State:
            if (configuration.ImportState()) {
                m_values[StateOf(m_type).index] = {place, given.value, given.value};
            }
            return;
        case FieldUse::Value:
            return AddPlain(place, *field, given);
        case FieldUse::Reference:
            return AddReference(place, *field, given, configuration);
        case FieldUse::ReferenceList:
            return AddList(place, *field, given, configuration);
        case FieldUse::Attachments:
            return AddAttachments(place, *field, given.attachments);
        case FieldUse::Unknown:
            m_unknown[given.name] = {place, given.value, given.value};
            return;
        default:
            return;
    }
}

void ExpectedRecord::AddPlain(const SourcePlace& place, const Field& field,
                              const KeptField& given) {
    m_values[field.index] = {place, given.value,
                             given.clears ? "" : StoredText(field, given.value)};
}

void ExpectedRecord::AddReference(const SourcePlace& place, const Field& field,
                                  const KeptField& given,
                                  const ImportConfiguration& configuration) {
    if (given.keys.empty() && !given.clears) {
        return;
    }
    ExpectedTargets expected{
        .place = place, .targets = {}, .exact = true, .ordered = true, .creation = m_creation};
    for (const std::string& key : given.keys) {
        expected.targets.push_back(m_resolver.Resolve(field, given.name, key, configuration));
    }
    m_targets[field.index] = std::move(expected);
}

void ExpectedRecord::AddList(const SourcePlace& place, const Field& field, const KeptField& given,
                             const ImportConfiguration& configuration) {
    const bool replaces = configuration.ReplaceRefList();
    if (given.keys.empty() && !replaces) {
        return;
    }
    std::optional<ExpectedTargets>& expected = m_targets[field.index];
    if (!expected || replaces || expected->creation != m_creation) {
        expected = {place, {}, IsWhole() || replaces, replaces, m_creation};
    }
    expected->place = place;
    for (const std::string& key : given.keys) {
        ExpectedTarget target = m_resolver.Resolve(field, given.name, key, configuration);
        if (!Holds(expected->targets, target)) {
            expected->targets.push_back(std::move(target));
        }
    }
}

void ExpectedRecord::AddHistory(const SourcePlace& place, std::vector<HistoryLine> lines) {
    if (!lines.empty() && m_historyCreation != m_creation) {
        m_history.clear();
        m_historyCreation = m_creation;
    }
    for (HistoryLine& line : lines) {
        line.columns[kTimeColumn] = StoredTime(line.columns[kTimeColumn]);
        m_history.push_back({place, std::move(line)});
    }
}

void ExpectedRecord::AddAttachments(const SourcePlace& place, const Field& field,
                                    std::vector<AttachmentLines> added) {
    ExpectedAttachments& expected = m_attachments[field.index];
    if (!added.empty() && expected.creation != m_creation) {
        expected = {.list = {}, .creation = m_creation};
    }
    // An attachment takes the place of one that was there before, never of one of its own packet.
    std::size_t before = expected.list.size();
    for (AttachmentLines& lines : added) {
        std::string baseName = BaseName(lines.fileName);
        const auto end = expected.list.begin() + static_cast<std::ptrdiff_t>(before);
        const auto old = std::find_if(expected.list.begin(), end, [&](const auto& other) {
            return EqualNoCase(other.baseName, baseName);
        });
        if (lines.Complete() && old != end) {
            expected.list.erase(old);
            --before;
        }
        expected.list.push_back({place, std::move(lines), std::move(baseName)});
    }
}

void ExpectedRecord::AddOriginal(const SourcePlace& place, const std::string& value,
                                 const ImportConfiguration& configuration) {
    m_original = m_resolver.ResolveOriginal(m_type, value, configuration);
    m_originalPlace = place;
    if (m_type.duplicateState) {
        m_values[StateOf(m_type).index] = {place, *m_type.duplicateState, *m_type.duplicateState};
    }
}

const ExpectedValue* ExpectedRecord::Value(std::size_t field) const {
    return m_values[field] ? &*m_values[field] : nullptr;
}

const ExpectedTargets* ExpectedRecord::Targets(std::size_t field) const {
    return m_targets[field] ? &*m_targets[field] : nullptr;
}

std::vector<const ExpectedEntry*> ExpectedRecord::History() const {
    std::vector<const ExpectedEntry*> entries;
    for (const ExpectedEntry& entry : m_history) {
        entries.push_back(&entry);
    }
    std::stable_sort(entries.begin(), entries.end(), [](const auto* a, const auto* b) {
        return a->line.columns[kTimeColumn] < b->line.columns[kTimeColumn];
    });
    return entries;
}

const std::vector<ExpectedAttachment>& ExpectedRecord::Attachments(std::size_t field) const {
    return m_attachments[field].list;
}

}  // namespace tool
