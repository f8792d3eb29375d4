#include "recorddb/store/batch/pending_changes.h"

#include <algorithm>
#include <iterator>

namespace recorddb {

namespace {

void AppendNumber(std::string& text, std::int64_t number) {
    text.append(reinterpret_cast<const char*>(&number), sizeof number);
}

void MergeLists(const PendingRecord& change, PendingRecord& record) {
    for (const auto& [field, beneath] : change.lists) {
        if (!record.IsNew() && !record.HasList(field)) {
            record.lists.emplace_back(field, beneath);
        }
    }
}

void Merge(PendingRecord change, PendingRecord& record) {
    record.version = change.version;
    if (change.values.empty()) {
        return;
    }
    // Of lists it knows those that it changes; the other ones stay.
    for (std::size_t field = 0; field < record.values.size(); ++field) {
        const bool isList = record.IsNew() || record.HasList(field);
        if (isList && !change.HasList(field) &&
            std::holds_alternative<ReferenceList>(record.values[field])) {
            change.values[field] = std::move(record.values[field]);
        }
    }
    record.values = std::move(change.values);
    MergeLists(change, record);
    record.changed.resize(change.changed.size());
    for (std::size_t field = 0; field < change.changed.size(); ++field) {
        record.changed[field] = record.changed[field] || change.changed[field];
    }
}

void Merge(PendingHistory&& change, PendingHistory& history) {
    for (auto& [number, time] : change.expiry) {
        const auto added = std::find_if(
            history.added.begin(), history.added.end(),
            [number = number](const HistoryEntry& entry) { return entry.entry == number; });
        (added != history.added.end() ? added->expiryTime : history.expiry[number]) =
            std::move(time);
    }
    std::move(change.added.begin(), change.added.end(), std::back_inserter(history.added));
    history.times = std::move(change.times);
    history.field = change.field.empty() ? history.field : change.field;
}

}  // namespace

bool PendingRecord::HasList(std::size_t field) const {
    return std::any_of(lists.begin(), lists.end(),
                       [field](const auto& list) { return list.first == field; });
}

const FieldValue& PendingRecord::ListBeneath(std::size_t field) const {
    static const FieldValue kNone;
    const auto found = std::find_if(lists.begin(), lists.end(),
                                    [field](const auto& list) { return list.first == field; });
    return found == lists.end() ? kNone : found->second;
}

const PendingRecord* PendingRecords::Find(std::int64_t dbid) const {
    const auto found = m_positions.find(dbid);
    return found == m_positions.end() ? nullptr : &m_records[found->second];
}

void PendingRecords::Add(PendingRecord change) {
    const auto [position, isFirst] = m_positions.try_emplace(change.dbid, m_records.size());
    const PendingRecord& known = isFirst ? change : m_records[position->second];
    if (!known.IsNew()) {
        NoteColumns(change.changed);
    } else if (isFirst) {
        m_highestNew = std::max(m_highestNew, change.dbid);
    }
    if (isFirst) {
        m_records.push_back(std::move(change));
    } else {
        Merge(std::move(change), m_records[position->second]);
    }
}

void PendingRecords::NoteColumns(const std::vector<bool>& changed) {
    m_changed.resize(std::max(m_changed.size(), changed.size()));
    for (std::size_t field = 0; field < changed.size(); ++field) {
        m_changed[field] = m_changed[field] || changed[field];
    }
}

std::int64_t PendingRecords::FindKey(const std::string& key) const {
    const auto found = m_keys.find(key);
    return found == m_keys.end() ? 0 : found->second;
}

void PendingRecords::MoveInto(PendingRecords& beneath) {
    for (PendingRecord& record : m_records) {
        beneath.Add(std::move(record));
    }
    beneath.m_keys.merge(m_keys);
    Clear();
}

void PendingRecords::Clear() {
    m_records.clear();
    m_positions.clear();
    m_keys.clear();
    m_changed.clear();
    m_highestNew = 0;
}

std::optional<std::string> KeyText(std::size_t set, const std::vector<const FieldValue*>& values) {
    std::string key;
    AppendNumber(key, static_cast<std::int64_t>(set));
    for (const FieldValue* const value : values) {
        if (const auto* const text = std::get_if<std::string>(value)) {
            AppendNumber(key, static_cast<std::int64_t>(text->size()));
            key += *text;
        } else if (const auto* const number = std::get_if<std::int64_t>(value)) {
            key += 'n';
            AppendNumber(key, *number);
        } else {
            return std::nullopt;
        }
    }
    return key;
}

void PendingChanges::MoveInto(PendingChanges& beneath) {
    if (IsEmpty()) {
        return;
    }
    for (std::size_t type = 0; type < records.size(); ++type) {
        if (!records[type].All().empty()) {
            records[type].MoveInto(beneath.records[type]);
        }
    }
    for (auto& [key, history] : histories) {
        const auto [position, isFirst] = beneath.histories.try_emplace(key);
        if (isFirst) {
            position->second = std::move(history);
        } else {
            Merge(std::move(history), position->second);
        }
    }
    for (auto& [key, link] : links) {
        beneath.links.insert_or_assign(key, std::move(link));
    }
    beneath.count += count;
    histories.clear();
    links.clear();
    count = 0;
}

void PendingChanges::Clear() {
    if (IsEmpty()) {
        return;
    }
    for (PendingRecords& ofType : records) {
        ofType.Clear();
    }
    histories.clear();
    links.clear();
    count = 0;
}

}  // namespace recorddb
