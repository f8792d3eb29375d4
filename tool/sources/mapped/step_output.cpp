#include "tool/sources/mapped/step_output.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <utility>

#include "tool/io/text_hash.h"
#include "tool/packet/source_formats.h"

namespace tool {

namespace {

std::string HashOf(const MadeRecord& record) {
    std::string bytes;
    AppendContent(record, bytes);
    constexpr std::size_t enough = 32;
    return HashText(bytes).substr(0, enough);
}

template <typename Item>
void MoveTo(std::vector<Item>& to, std::vector<Item>& from) {
    std::ranges::move(from, std::back_inserter(to));
    from.clear();
}

// Gives the first `count` of `items` to `first`, and the others to `rest`.
template <typename Item>
void SplitAt(std::size_t count, std::vector<Item>& items, std::vector<Item>& first,
             std::vector<Item>& rest) {
    const auto middle = items.begin() + static_cast<std::ptrdiff_t>(count);
    first.assign(std::make_move_iterator(items.begin()), std::make_move_iterator(middle));
    rest.assign(std::make_move_iterator(middle), std::make_move_iterator(items.end()));
}

}  // namespace

StepOutput::StepOutput(const StepPlan& plan, std::size_t number, KeyBook& keys, MapNotes& notes,
                       ShowPlace showPlace)
    : m_plan(plan),
      m_number(number),
      m_keys(keys),
      m_notes(notes),
      m_showPlace(std::move(showPlace)),
      m_spool(std::make_unique<RecordSpool>()) {}

// History and attachments of one record are written together.
bool StepOutput::Gathers() const {
    return m_plan.step->kind == StepKind::History || m_plan.step->kind == StepKind::Attachments;
}

void StepOutput::Take(MadeRecord record) {
    if (!record.error.empty()) {
        record.first = m_next;
        Add(record);
    } else if (record.key.empty()) {
        // The key is `known_only`, and the row names no record that this could belong to.
        m_notes.Add(MapNote::LeftOut, m_plan.FindField(m_plan.step->key)->plan.subject);
    } else if (Gathers()) {
        Gather(std::move(record));
    } else {
        TakeSingle(std::move(record));
    }
}

void StepOutput::Add(const MadeRecord& record) {
    ++m_next;
    m_spool->Add(record);
}

// Rows of one record mostly follow each other. Those that do not are found by their key.
void StepOutput::Gather(MadeRecord record) {
    if (m_group && m_group->key != record.key) {
        FlushGroup();
    }
    if (!m_group) {
        m_group = std::move(record);
        return;
    }
    MoveTo(m_group->values.history, record.values.history);
    MoveTo(m_group->values.attachments, record.values.attachments);
    MoveTo(m_group->rows, record.rows);
    if (m_group->values.history.size() == kMostHistoryEntries) {
        FlushGroup();
    }
}

void StepOutput::FlushGroup() {
    if (!m_group) {
        return;
    }
    MadeRecord record = std::move(*m_group);
    m_group.reset();
    record.first = m_next;
    if (const auto known = m_keys.Note(m_number, record.key, {m_next, record.place, ""})) {
        record.first = known->first;
        m_hasParts = true;
    }
    Add(record);
}

void StepOutput::TakeSingle(MadeRecord record) {
    record.first = m_next;
    // Only where the first of them is kept is a later one compared with it.
    const bool keepsFirst = m_plan.step->sameKey == SameKey::First;
    const auto known = m_keys.Note(
        m_number, record.key, {m_next, record.place, keepsFirst ? HashOf(record) : std::string()});
    if (!known) {
        Add(record);
        return;
    }
    const std::string subject =
        fmt::format("{}: {}", StepKindName(m_plan.step->kind), m_plan.type->name);
    switch (m_plan.step->sameKey) {
        case SameKey::First:
            m_notes.Add(MapNote::RepeatedKey, subject);
            if (known->hash != HashOf(record)) {
                m_notes.Add(MapNote::DifferentRepeat,
                            fmt::format("{}\n\"{}\" of {}", subject, record.key,
                                        m_showPlace(known->place)));
            }
            return;
        case SameKey::Merge:
            record.first = known->first;
            m_hasParts = true;
            Add(record);
            return;
        default:
            record.error = fmt::format("its key \"{}\" came before, in {}", record.key,
                                       m_showPlace(known->place));
            Add(record);
    }
}

std::unique_ptr<RecordSpool> StepOutput::Finish(const Exists& exists) {
    std::unique_ptr<RecordSpool> records = FinishSettled();
    return m_plan.HasKnownOnly() ? Settled(*records, exists) : std::move(records);
}

std::unique_ptr<RecordSpool> StepOutput::FinishSettled() {
    FlushGroup();
    m_spool->Finish();
    std::unique_ptr<RecordSpool> records = m_hasParts ? Arranged() : std::move(m_spool);
    m_spool.reset();
    return records;
}

// Puts together what belongs to one record, at the place of its first part.
std::unique_ptr<RecordSpool> StepOutput::Arranged() {
    MadeRecord part;
    RecordSpool::Reader reader(*m_spool);
    while (reader.Next(part)) {
        m_keys.Add(part);
    }
    auto arranged = std::make_unique<RecordSpool>();
    std::optional<Joined> joined;
    while (m_keys.Next(part)) {
        if (joined && joined->record.first == part.first) {
            Join(*joined, part);
            AddPortions(joined->record, *arranged);
            continue;
        }
        if (joined) {
            arranged->Add(joined->record);
        }
        joined.emplace().record = std::move(part);
    }
    arranged->Add(joined->record);
    arranged->Finish();
    return arranged;
}

void StepOutput::Join(Joined& joined, MadeRecord& part) {
    MadeRecord& record = joined.record;
    MoveTo(record.values.history, part.values.history);
    MoveTo(record.values.attachments, part.values.attachments);
    MoveTo(record.rows, part.rows);
    if (!Gathers()) {
        Merge(joined, part);
    }
}

// A long history becomes several records of a packet. Each has the rows of its own entries.
void StepOutput::AddPortions(MadeRecord& record, RecordSpool& spool) {
    while (record.values.history.size() > kMostHistoryEntries) {
        const bool hasRows = record.rows.size() == record.values.history.size();
        std::vector<SourceHistoryEntry> history = std::exchange(record.values.history, {});
        std::vector<RowSpan> rows = hasRows ? std::exchange(record.rows, {}) : record.rows;
        MadeRecord portion = record;
        SplitAt(kMostHistoryEntries, history, portion.values.history, record.values.history);
        if (hasRows) {
            SplitAt(kMostHistoryEntries, rows, portion.rows, record.rows);
        }
        spool.Add(portion);
    }
}

// Lists unite, fields without a value are filled, and of two values the first one stays.
void StepOutput::Merge(Joined& joined, MadeRecord& part) {
    auto& fields = joined.record.values.fields;
    for (SourceField& field : part.values.fields) {
        const auto found =
            std::find_if(fields.begin(), fields.end(),
                         [&](const SourceField& other) { return other.name == field.name; });
        if (found == fields.end()) {
            fields.push_back(std::move(field));
        } else if (field.isList) {
            std::unordered_set<std::string>& known = joined.known[field.name];
            if (known.empty()) {
                known.insert(found->values.begin(), found->values.end());
            }
            std::copy_if(field.values.begin(), field.values.end(),
                         std::back_inserter(found->values),
                         [&](const std::string& value) { return known.insert(value).second; });
        } else if (found->values != field.values) {
            m_notes.Add(
                MapNote::DifferentRepeat,
                fmt::format("{}: {}\n\"{}\" of {}, field {}, in {}",
                            StepKindName(m_plan.step->kind), m_plan.type->name, joined.record.key,
                            m_showPlace(joined.record.place), field.name, m_showPlace(part.place)));
        }
    }
}

std::unique_ptr<RecordSpool> StepOutput::Settled(const RecordSpool& records, const Exists& exists) {
    auto settled = std::make_unique<RecordSpool>();
    RecordSpool::Reader reader(records);
    MadeRecord record;
    while (reader.Next(record)) {
        if (!record.error.empty() || Settle(record, exists)) {
            settled->Add(record);
        }
    }
    settled->Finish();
    return settled;
}

// Leaves out references to what is not there. False when nothing is left to say of the record.
bool StepOutput::Settle(MadeRecord& record, const Exists& exists) {
    return std::all_of(m_plan.fields.begin(), m_plan.fields.end(), [&](const StepField& field) {
        return !field.knownOnly || SettleField(record, field, exists);
    });
}

bool StepOutput::SettleField(MadeRecord& record, const StepField& field, const Exists& exists) {
    auto& fields = record.values.fields;
    const std::string& name = field.plan.field->name;
    const auto found = std::find_if(fields.begin(), fields.end(),
                                    [&](const SourceField& other) { return other.name == name; });
    MadeValue value;
    if (found != fields.end()) {
        value.texts = std::move(found->values);
        const std::size_t before = value.texts.size();
        std::erase_if(value.texts,
                      [&](const std::string& text) { return !exists(*field.knownOnly, text); });
        if (before > value.texts.size()) {
            m_notes.Add(MapNote::LeftOut, field.plan.subject, before - value.texts.size());
        }
    }
    ValueMaker::Finish(field.plan, value);
    const bool isWhole = m_plan.step->kind != StepKind::Records || name == m_plan.step->key;
    if (!value.error.empty()) {
        record.error = fmt::format("{}: {}", name, value.error);
    }
    if (!value.texts.empty() && value.error.empty()) {
        if (found == fields.end()) {
            fields.push_back({name, std::move(value.texts), field.plan.isList});
        } else {
            found->values = std::move(value.texts);
        }
        return true;
    }
    if (found != fields.end()) {
        fields.erase(found);
    }
    return !isWhole || !record.error.empty();
}

}  // namespace tool
