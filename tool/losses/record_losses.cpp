#include "tool/losses/record_losses.h"

#include <fmt/format.h>

#include <string_view>
#include <utility>

#include "tool/guarded/blank_word.h"
#include "tool/guarded/guarded_text.h"
#include "tool/io/text_units.h"
#include "tool/losses/changed_text.h"
#include "tool/packet/importer_text.h"
#include "tool/packet/source_formats.h"
#include "tool/packet/xml_text.h"

namespace tool {

namespace {

bool IsBlank(std::string_view text) {
    return text.find_first_not_of(kXmlBlanks) == std::string_view::npos;
}

// Whether the value clears a field; a reference is trimmed before it is looked at.
bool AsksToClear(std::string_view value, FieldUse use) {
    return (use == FieldUse::Value && IsBlankWord(value)) ||
           (use == FieldUse::Reference && IsBlankWord(Trimmed(value)));
}

// Blanks in front of an element are layout.
std::string_view TextOf(const RecordPart& part) {
    return part.holdsElement && IsBlank(part.text) ? std::string_view() : part.text;
}

std::string_view Describe(RecordElements::StopCause cause) {
    switch (cause) {
        case RecordElements::StopCause::Text:
            return "at text that stands outside a field or behind an element in one";
        case RecordElements::StopCause::EndTag:
            return "at the end of a field that holds another element";
        default:
            return "at what is not well-formed XML";
    }
}

}  // namespace

void RecordLosses::Find(const SourceRecord& record, const RecordReadings& readings,
                        const std::string& source, const LossTaker& take) {
    if (m_configuration.Data() == ImportedData::Nothing) {
        return;
    }
    m_record = &record;
    m_readings = &readings;
    m_source = &source;
    m_take = &take;
    m_historyEntries = 0;
    m_historySeen = false;
    FindStructure();
    FindOverwritten();
    FindOtherSpellings();
    for (std::size_t field = 0; field < m_readings->Fields().size(); ++field) {
        FindInField(field);
    }
}

void RecordLosses::FindStructure() {
    const RecordElements& elements = m_readings->Elements();
    for (std::size_t index = 0; index < elements.Count(); ++index) {
        const RecordPart& part = elements.Part(index);
        if (!part.read) {
            FindUnread(part);
        } else if (TextOf(part).empty()) {
            continue;
        } else if (part.parent != RecordPart::kNone) {
            const RecordPart& outer = elements.Part(part.parent);
            Add(LossKind::NestedField, part, part.name.empty() ? outer.name : part.name,
                fmt::format("{} stands in an element inside the field \"{}\"; the importer takes "
                            "that element for a field of its own",
                            Quoted(part.text), outer.name));
        } else if (part.name.empty()) {
            Add(LossKind::NamelessField, part, "",
                fmt::format("{} stands in an element without a name, which is no field",
                            Quoted(part.text)));
        }
    }
}

void RecordLosses::FindUnread(const RecordPart& part) {
    const RecordElements& elements = m_readings->Elements();
    const std::string why = fmt::format("the importer stops reading the record on line {}, {}",
                                        LineAt(elements.StopOffset()), Describe(elements.Stop()));
    if (part.kind == RecordPart::Kind::Broken) {
        Add(LossKind::UnreadField, part, "", "the rest of the record is not read: " + why);
    } else if (!TextOf(part).empty()) {
        const bool inField = part.name.empty() && part.parent != RecordPart::kNone;
        Add(LossKind::UnreadField, part, inField ? elements.Part(part.parent).name : part.name,
            fmt::format("{} is not read: {}", Quoted(part.text), why));
    }
}

void RecordLosses::FindOverwritten() {
    for (const auto& [index, field] : m_readings->OverwrittenParts()) {
        const RecordPart& part = m_readings->Elements().Part(index);
        const bool isLost = !part.name.empty() && !TextOf(part).empty() &&
                            !SameButForLineEnds(part.text, m_readings->Fields()[field].value);
        if (isLost) {
            Add(LossKind::RepeatedField, part, part.name,
                fmt::format("{} is dropped: the field is named again on line {}, and the last "
                            "one counts",
                            Quoted(part.text), LineAt(m_readings->PartOf(field))));
        }
    }
}

// Names that differ in case are different fields until they are written, one after the other, to
// the same field of the record. Empty values are not written.
void RecordLosses::FindOtherSpellings() {
    const ImporterFields& fields = m_readings->Fields();
    for (const std::vector<std::size_t>& spellings : m_readings->Spellings()) {
        if (AddsToOthers(UseOf(fields[spellings.front()].name, m_configuration, m_type))) {
            continue;
        }
        const ImporterField* winner = nullptr;
        for (auto field = spellings.rbegin(); field != spellings.rend(); ++field) {
            const auto& [name, value] = fields[*field];
            if (winner != nullptr && !value.empty() && value != winner->value) {
                Add(LossKind::RepeatedField, m_readings->PartOf(*field), name,
                    fmt::format("{} is dropped: the record names the same field as \"{}\", and "
                                "that one counts",
                                Quoted(value), winner->name));
            }
            if (winner == nullptr && !value.empty()) {
                winner = &fields[*field];
            }
        }
    }
}

// Whether several fields of the same name add to each other instead of replacing each other. For
// fields without a use this does not matter: each is reported by itself.
bool RecordLosses::AddsToOthers(FieldUse use) const {
    switch (use) {
        case FieldUse::ReferenceList:
            return !m_configuration.ReplaceRefList();
        case FieldUse::History:
        case FieldUse::Attachments:
        case FieldUse::NeverWritten:
        case FieldUse::Unused:
        case FieldUse::Unknown:
            return true;
        default:
            return false;
    }
}

void RecordLosses::FindInField(std::size_t field) {
    const auto& [name, value] = m_readings->Fields()[field];
    if (name.empty()) {
        return;
    }
    FindChangedText(field);
    if (!value.empty()) {
        const FieldUse use = UseOf(name, m_configuration, m_type);
        FindInValue(field, use);
        FindInKeys(field, use);
    }
}

void RecordLosses::FindInKeys(std::size_t field, FieldUse use) {
    // Any key can be named by a guarded reference.
    if (m_keys == nullptr || m_record->guarded) {
        return;
    }
    const auto& [name, value] = m_readings->Fields()[field];
    if (use == FieldUse::Value) {
        if (std::string text = m_keys->OfKey(name, value, m_configuration, m_type); !text.empty()) {
            Add(LossKind::UnreachableKey, m_readings->PartOf(field), name, std::move(text));
        }
    } else if (use == FieldUse::Reference || use == FieldUse::ReferenceList) {
        if (std::string text = m_keys->OfReference(name, value, m_configuration, m_type);
            !text.empty()) {
            Add(LossKind::MistakenReference, m_readings->PartOf(field), name, std::move(text));
        }
    }
}

void RecordLosses::FindChangedText(std::size_t field) {
    const RecordPart& part = m_readings->PartOf(field);
    const auto& [name, value] = m_readings->Fields()[field];
    if (!SameButForLineEnds(TextOf(part), value)) {
        Add(LossKind::ChangedText, part, name, DescribeChange(TextOf(part), value));
    }
}

void RecordLosses::FindInValue(std::size_t field, FieldUse use) {
    const RecordPart& part = m_readings->PartOf(field);
    const auto& [name, value] = m_readings->Fields()[field];
    if (use == FieldUse::NeverWritten) {
        Add(LossKind::SkippedField, part, name,
            fmt::format("{} is not written: the database itself gives this field its value",
                        Quoted(value)));
    } else if (use == FieldUse::Unused) {
        Add(LossKind::UnusedField, part, name,
            fmt::format("{} is not read: {}", Quoted(value), WhatIsUsed()));
    } else if (use == FieldUse::History) {
        m_historyEntries = FindInHistory(field);
    } else if (use == FieldUse::Attachments) {
        FindInAttachments(field);
    } else if (m_configuration.CreatesRecords() && AsksToClear(value, use)) {
        Add(LossKind::ClearedValue, part, name,
            fmt::format("{} stands for the empty value, and the field stays empty", Quoted(value)));
    }
}

// Returns the number of entries that the record's fields have up to this one.
std::size_t RecordLosses::FindInHistory(std::size_t field) {
    const RecordPart& part = m_readings->PartOf(field);
    const auto& [name, value] = m_readings->Fields()[field];
    if (m_configuration.Data() == ImportedData::History && std::exchange(m_historySeen, true)) {
        Add(LossKind::UnusedField, part, name,
            Quoted(value) + " is not read: a history packet uses the first such field only");
        return m_historyEntries;
    }
    std::size_t entries = 0;
    std::size_t number = 0;
    for (const HistoryLine& line : ReadHistoryLines(value)) {
        ++number;
        if (line.count <= HistoryLine::kMostColumns) {
            ++entries;
            continue;
        }
        Add(LossKind::LongHistoryLine, part, name,
            fmt::format("line {} of the value (entry {}) is dropped: it has {} columns, and six "
                        "are the most",
                        number, Quoted(line.id), line.count));
    }
    const std::size_t room = kMostHistoryEntries - std::min(kMostHistoryEntries, m_historyEntries);
    if (entries > room) {
        Add(LossKind::HistoryBeyondLimit, part, name,
            fmt::format("the last {} of {} entries are dropped: a record takes no more than {} "
                        "at a time",
                        entries - room, entries, kMostHistoryEntries));
    }
    return m_historyEntries + entries;
}

void RecordLosses::FindInAttachments(std::size_t field) {
    const auto& [name, value] = m_readings->Fields()[field];
    const std::vector<AttachmentLines> attachments = ReadAttachmentLines(value);
    if (!attachments.empty() && !attachments.back().Complete()) {
        const std::size_t lines = attachments.back().count;
        Add(LossKind::IncompleteAttachment, m_readings->PartOf(field), name,
            fmt::format("{}: an attachment takes four lines (id, file name, size, description)",
                        lines == 1 ? "the last line is dropped"
                                   : fmt::format("the last {} lines are dropped", lines)));
    }
}

std::string RecordLosses::WhatIsUsed() const {
    const bool history = m_configuration.Data() == ImportedData::History;
    return fmt::format("{} packet uses only \"{}\" and {}",
                       history ? "a history" : "an attachments", m_configuration.OriginalId(),
                       history ? "the field \"history\"" : "fields of attachments");
}

std::uint64_t RecordLosses::LineAt(std::size_t offset) const {
    return m_record->line + CountLineEnds(m_record->raw.substr(0, offset));
}

void RecordLosses::Add(LossKind kind, const RecordPart& part, const std::string& field,
                       std::string text) const {
    std::string id = OriginalIdOf(m_readings->Fields(), m_configuration, m_type);
    if (m_record->guarded) {
        id = Restored(id);
        text = Restored(text);
    }
    // People find a record that was made of a row by the row, so its place is that of the row.
    const bool isMade = m_record->number > 0;
    (*m_take)({kind, isMade ? std::string(m_record->source) : *m_source, m_record->Number(),
               isMade ? m_record->line : LineAt(part), std::move(id), field, std::move(text),
               std::string(m_record->unit)});
}

}  // namespace tool
