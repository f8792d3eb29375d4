#include "recorddb/store/batch/pending_layers.h"

#include <algorithm>

namespace recorddb {

using schema::RecordType;

PendingLayers::PendingLayers(std::size_t types) : m_types(types) {
    m_layers.emplace_back(types);
}

void PendingLayers::Push() {
    if (m_layers.size() == m_depth + 1) {
        m_layers.emplace_back(m_types);
    }
    ++m_depth;
}

void PendingLayers::Merge() {
    m_layers[m_depth].MoveInto(m_layers[m_depth - 1]);
    --m_depth;
}

void PendingLayers::Drop() noexcept {
    m_layers[m_depth--].Clear();
}

bool PendingLayers::IsEmpty() const {
    return std::all_of(m_layers.begin(), m_layers.end(),
                       [](const PendingChanges& changes) { return changes.IsEmpty(); });
}

const PendingRecord* PendingLayers::FindNew(std::int64_t type, std::int64_t dbid) const {
    return FromTop([=](const PendingChanges& changes) {
        const PendingRecord* const record = changes.Of(type).Find(dbid);
        return record != nullptr && record->IsNew() ? record : nullptr;
    });
}

bool PendingLayers::HasNew(const RecordType& type, std::int64_t dbid) const {
    return FindNew(type.id, dbid) != nullptr;
}

std::int64_t PendingLayers::HighestNew(const RecordType& type) const {
    std::int64_t highest = 0;
    for (std::size_t layer = 0; layer <= m_depth; ++layer) {
        highest = std::max(highest, m_layers[layer].Of(type.id).HighestNew());
    }
    return highest;
}

const PendingRecord* PendingLayers::Find(const RecordType& type, std::int64_t dbid) const {
    return FromTop([&](const PendingChanges& changes) { return changes.Of(type.id).Find(dbid); });
}

std::int64_t PendingLayers::FindKey(const RecordType& type, const std::string& key) const {
    return FromTop([&](const PendingChanges& changes) { return changes.Of(type.id).FindKey(key); });
}

const PendingRecord* PendingLayers::FindColumns(const RecordType& type, std::int64_t dbid) const {
    return FromTop([&](const PendingChanges& changes) {
        const PendingRecord* const record = changes.Of(type.id).Find(dbid);
        return record != nullptr && !record->values.empty() ? record : nullptr;
    });
}

const FieldValue* PendingLayers::FindList(const RecordType& type, std::size_t field,
                                          std::int64_t dbid) const {
    return FromTop([&](const PendingChanges& changes) -> const FieldValue* {
        const PendingRecord* const record = changes.Of(type.id).Find(dbid);
        const bool knows = record != nullptr && (record->IsNew() || record->HasList(field));
        return knows ? &record->values[field] : nullptr;
    });
}

bool PendingLayers::ChangesColumn(const RecordType& type, std::size_t field) const {
    return FromTop(
        [&](const PendingChanges& changes) { return changes.Of(type.id).ChangesColumn(field); });
}

std::vector<const PendingRecord*> PendingLayers::NewWith(
    const RecordType& type, const std::vector<Condition>& conditions) const {
    std::vector<const PendingRecord*> matches;
    for (std::size_t layer = 0; layer <= m_depth; ++layer) {
        const PendingRecords& records = m_layers[layer].Of(type.id);
        if (!records.HasNew()) {
            continue;
        }
        for (const PendingRecord& record : records.All()) {
            const auto holds = [&record](const Condition& condition) {
                return record.values[condition.field] == condition.value;
            };
            if (record.IsNew() && std::all_of(conditions.begin(), conditions.end(), holds)) {
                matches.push_back(&record);
            }
        }
    }
    std::sort(matches.begin(), matches.end(),
              [](const PendingRecord* a, const PendingRecord* b) { return a->dbid < b->dbid; });
    return matches;
}

const std::vector<HistoryTimes>* PendingLayers::FindTimes(const RecordKey& record) const {
    return FromTop([&](const PendingChanges& changes) -> const std::vector<HistoryTimes>* {
        const auto found = changes.histories.find(record);
        return found == changes.histories.end() ? nullptr : &found->second.times;
    });
}

std::optional<std::int64_t> PendingLayers::FindOriginal(const RecordKey& duplicate) const {
    return FromTop([&](const PendingChanges& changes) -> std::optional<std::int64_t> {
        const auto found = changes.links.find(duplicate);
        return found == changes.links.end() ? std::nullopt : std::optional(found->second.original);
    });
}

}  // namespace recorddb
