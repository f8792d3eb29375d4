#include "tool/sources/mapped/row_mapper.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <array>
#include <utility>

#include "tool/io/source_error.h"
#include "tool/map/map_check.h"
#include "tool/process/interrupt.h"

namespace tool {

namespace {

// The text of a field of history or attachments in what is made of a row; null for the key.
std::string* TextFor(std::string_view name, StepKind kind, SourceValues& values) {
    if (kind == StepKind::History) {
        SourceHistoryEntry& entry = values.history.back();
        const std::array<std::string*, kHistoryFields.size()> texts = {
            &entry.id, &entry.when, &entry.who, &entry.action, &entry.before, &entry.after};
        const auto* const at = std::find(kHistoryFields.begin(), kHistoryFields.end(), name);
        return at == kHistoryFields.end()
                   ? nullptr
                   : texts.at(static_cast<std::size_t>(at - kHistoryFields.begin()));
    }
    if (kind == StepKind::Attachments) {
        SourceAttachment& file = values.attachments.back();
        const std::array<std::string*, kAttachmentFields.size()> texts = {
            &file.id, &file.path, &file.size, &file.description};
        const auto* const at = std::find(kAttachmentFields.begin(), kAttachmentFields.end(), name);
        return at == kAttachmentFields.end()
                   ? nullptr
                   : texts.at(static_cast<std::size_t>(at - kAttachmentFields.begin()));
    }
    return nullptr;
}

}  // namespace

void ForEachAddress(const MapStep& step, const std::function<void(const MapAddress&)>& take) {
    for (const MapEach& each : step.each) {
        take(each.from);
    }
    for (const MapTest& test : step.when) {
        take(test.from);
    }
    for (const MapField& field : step.fields) {
        for (const MapAddress& address : field.value.from) {
            take(address);
        }
        for (const TemplatePart& part : field.value.pattern) {
            if (part.address) {
                take(*part.address);
            }
        }
    }
}

RowMapper::RowMapper(Parts parts) : m_parts(std::move(parts)) {}

void RowMapper::BeginFile(std::uint32_t file, const std::string& name) {
    m_place = {};
    m_place.file = file;
    m_fileName = name;
}

void RowMapper::KeepHeader(const std::vector<std::string>& columns) const {
    const CsvFormat& csv = m_parts.source.csv;
    if (m_parts.rows == nullptr || !csv.header.empty()) {
        return;
    }
    std::string& line = m_parts.rows->files[m_place.file].header;
    for (const std::string& column : columns) {
        if (&column != &columns.front()) {
            line += csv.separator;
        }
        const bool isPlain =
            csv.quote == CsvFormat::kNoQuote ||
            (column.find(csv.separator) == column.npos && column.find(csv.quote) == column.npos &&
             column.find('\n') == column.npos);
        if (isPlain) {
            line += column;
            continue;
        }
        line += csv.quote;
        for (const char c : column) {
            line.append(c == csv.quote ? 2 : 1, c);
        }
        line += csv.quote;
    }
}

void RowMapper::KeepText(const Row& row) {
    if (m_parts.rows != nullptr) {
        m_rows = {{m_place.file, m_parts.rows->texts.Add(row.raw), row.raw.size()}};
    }
}

void RowMapper::TakeHeader(const std::vector<std::string>& columns) {
    KeepHeader(columns);
    for (const Step& step : m_parts.steps) {
        ForEachAddress(*step.plan->step,
                       [&](const MapAddress& address) { RequireColumn(address, columns); });
    }
}

void RowMapper::RequireColumn(const MapAddress& address,
                              const std::vector<std::string>& columns) const {
    const bool isThere = address.isItem || address.isOptional ||
                         (address.column ? *address.column < columns.size()
                                         : std::find(columns.begin(), columns.end(),
                                                     address.steps.front()) != columns.end());
    if (!isThere) {
        throw SourceError(fmt::format(
            "{}: there is no column \"{}\", which {}:{}:{} reads; its columns are {}. Correct the "
            "map, or say optional: true there",
            m_fileName, address.text, m_parts.map.name, address.place.line, address.place.column,
            fmt::join(columns, ", ")));
    }
}

bool RowMapper::TakeRow(Row& row) {
    if (Interrupted() != 0) {
        return false;
    }
    m_place.number = row.number;
    m_place.line = row.line;
    KeepText(row);
    if (row.nuls > 0) {
        m_parts.notes.Add(MapNote::ReplacedCharacter, "NUL", row.nuls);
    }
    if (row.repeated > 0) {
        m_parts.notes.Add(MapNote::RepeatedMember, row.repeatedName, row.repeated);
    }
    if (!row.error.empty()) {
        // A broken row is rejected once, not by each of the steps that read it.
        MadeRecord record;
        record.place = m_place;
        record.rows = m_rows;
        record.error = row.error;
        m_parts.steps.front().output->Take(std::move(record));
        return true;
    }
    m_parts.tally.Add(row.tree);
    for (const Step& step : m_parts.steps) {
        RunStep(step, row);
    }
    return true;
}

void RowMapper::TakeOutside(const std::string& address, std::uint64_t line) {
    m_place.line = line;
    const bool isIgnored = m_parts.tally.IsIgnoredOutside(address);
    m_parts.notes.Add(isIgnored ? MapNote::IgnoredValue : MapNote::OutsideValue, address);
}

void RowMapper::RunStep(const Step& step, const Row& row) {
    if (step.plan->step->each.empty()) {
        MakeRecord(step, {&row.tree, RowTree::kRoot, std::nullopt});
        return;
    }
    for (const MapEach& each : step.plan->step->each) {
        RunItems(step, each, row);
    }
}

void RowMapper::RunItems(const Step& step, const MapEach& each, const Row& row) {
    std::vector<RowTree::Index> nodes;
    if (each.from.isItem) {
        nodes.push_back(RowTree::kRoot);
    } else if (each.from.column) {
        nodes.push_back(row.tree.ChildAt(RowTree::kRoot, *each.from.column));
    } else {
        FindNodes(row.tree, RowTree::kRoot, each.from.steps, nodes);
    }
    std::erase(nodes, RowTree::kNone);
    for (const RowTree::Index node : nodes) {
        RowItem item{&row.tree, node, std::nullopt};
        if (!each.split || !row.tree.IsScalar(node)) {
            MakeRecord(step, item);
            continue;
        }
        ForEachPart(row.tree.Text(node), *each.split, [&](std::string_view part) {
            item.text = part;
            MakeRecord(step, item);
        });
    }
}

// Null and empty items make no record.
bool RowMapper::IsItem(const RowItem& item, const std::vector<std::string>& nullIf) {
    if (item.text) {
        return !IsNoValue(*item.text, nullIf);
    }
    const RowTree& tree = *item.tree;
    return !tree.IsScalar(item.node) || (tree.KindOf(item.node) != RowTree::Kind::Null &&
                                         !IsNoValue(tree.Text(item.node), nullIf));
}

void RowMapper::MakeRecord(const Step& step, const RowItem& item) {
    const MapStep& map = *step.plan->step;
    if (!map.each.empty() && !IsItem(item, *step.plan->nullIf)) {
        return;
    }
    if (!m_parts.values.Holds(map.when, item, *step.plan->nullIf)) {
        m_parts.notes.Add(MapNote::PassedOver,
                          fmt::format("{}: {}", StepKindName(map.kind), step.plan->type->name));
        return;
    }
    MadeRecord record;
    record.place = m_place;
    record.rows = m_rows;
    if (map.kind == StepKind::History) {
        record.values.history.emplace_back();
    } else if (map.kind == StepKind::Attachments) {
        record.values.attachmentsField = map.attachmentsField;
        record.values.attachments.emplace_back();
    }
    if (MakeFields(step, item, record)) {
        RequireParts(step, record);
    }
    NoteKnown(step, record);
    step.output->Take(std::move(record));
}

// Also of a record that is rejected: it may be mended, and then it is there.
void RowMapper::NoteKnown(const Step& step, const MadeRecord& record) {
    for (const StepField& field : step.plan->fields) {
        if (!field.isKnown) {
            continue;
        }
        for (const SourceField& made : record.values.fields) {
            if (made.name == field.plan.field->name) {
                m_parts.keys.AddValue(*field.isKnown, made.values.front());
            }
        }
    }
}

// True unless a value could not be made. The others are made all the same: they help to mend the
// record.
bool RowMapper::MakeFields(const Step& step, const RowItem& item, MadeRecord& record) {
    record.values.fields.reserve(step.plan->fields.size());
    for (const StepField& field : step.plan->fields) {
        MadeValue value = m_parts.values.Make(field.plan, item);
        if (!value.error.empty() && record.error.empty()) {
            record.error = fmt::format("{}: {}", field.plan.field->name, value.error);
        }
        if (!value.texts.empty()) {
            PutValue(step, field, value, record);
        }
    }
    return record.error.empty();
}

void RowMapper::PutValue(const Step& step, const StepField& field, MadeValue& value,
                         MadeRecord& record) {
    const std::string& name = field.plan.field->name;
    if (name == step.plan->step->key) {
        record.key = value.texts.front();
    } else if (std::string* const text = TextFor(name, step.plan->step->kind, record.values)) {
        *text = std::move(value.texts.front());
        return;
    }
    record.values.fields.push_back({name, std::move(value.texts), field.plan.isList});
}

// A record without a key could never be found again.
void RowMapper::RequireParts(const Step& step, MadeRecord& record) {
    const MapStep& map = *step.plan->step;
    const StepField* const key = step.plan->FindField(map.key);
    if (record.key.empty() && !key->knownOnly) {
        record.error = fmt::format("{}: it has no value, and records are known by it", map.key);
    } else if (map.kind == StepKind::Duplicates && record.values.fields.size() < 2 &&
               !step.plan->FindField(kDuplicateField)->knownOnly && !record.key.empty()) {
        record.error = fmt::format("{}: it has no value", kDuplicateField);
    } else if (map.kind == StepKind::Attachments && record.values.attachments.back().path.empty()) {
        record.error = "path: it has no value";
    }
}

}  // namespace tool
