#include "recorddb/store/batch/touched.h"

#include <algorithm>
#include <functional>
#include <string_view>
#include <utility>

namespace recorddb {

using schema::Field;
using schema::FieldKind;
using schema::RecordType;

namespace {

std::uint64_t Mix(std::uint64_t hash, std::uint64_t more) {
    constexpr std::uint64_t factor = 0x9E3779B97F4A7C15U;
    constexpr unsigned half = 32;
    hash = (hash ^ more) * factor;
    return hash ^ (hash >> half);
}

std::uint64_t HashOf(const RecordKey& record) {
    return Mix(Mix(1, static_cast<std::uint64_t>(record.first)),
               static_cast<std::uint64_t>(record.second));
}

std::uint64_t HashOf(const RecordType& type, std::size_t field) {
    return Mix(Mix(2, static_cast<std::uint64_t>(type.id)), field);
}

std::uint64_t HashOf(const RecordType& type, std::size_t field, const FieldValue& value) {
    std::uint64_t hash = Mix(HashOf(type, field), value.index());
    if (const auto* const number = std::get_if<std::int64_t>(&value)) {
        hash = Mix(hash, static_cast<std::uint64_t>(*number));
    } else if (const auto* const text = std::get_if<std::string>(&value)) {
        hash = Mix(hash, std::hash<std::string_view>()(*text));
    }
    return hash;
}

bool IsSearched(const Field& field) {
    return schema::HasColumn(field.kind);
}

}  // namespace

void ReadNotes::Switch(bool on) {
    m_isOn = on;
    m_isUnclear = false;
    m_records.clear();
    m_known.clear();
    m_searches.clear();
}

void ReadNotes::Record(const RecordKey& record) {
    m_records.insert(HashOf(record));
}

void ReadNotes::Search(const RecordType& type, const FieldSet& fields,
                       const std::vector<const FieldValue*>& values, bool found) {
    std::vector<Condition> conditions;
    std::uint64_t whole = static_cast<std::uint64_t>(type.id);
    for (std::size_t i = 0; i < fields.size(); ++i) {
        const FieldKind kind = type.fields[fields[i]].kind;
        // A search by number that finds nothing now might find a record whose dbid is given out
        // only when the work is taken over.
        m_isUnclear =
            m_isUnclear || (!found && (kind == FieldKind::DbId || kind == FieldKind::DisplayId));
        conditions.push_back({HashOf(type, fields[i], *values[i]), HashOf(type, fields[i])});
        whole = Mix(whole, conditions.back().value);
    }
    if (m_known.insert(whole).second) {
        m_searches.push_back(std::move(conditions));
    }
}

void RecentWrites::Remember(std::size_t transactions) {
    m_most = transactions;
    m_writes.clear();
    m_current = {};
    m_sum.reset();
}

void RecentWrites::RememberAll() {
    Remember(0);
    m_sum = std::make_unique<Sum>();
}

void RecentWrites::Note(const schema::Schema& schema, const PendingChanges& changes) {
    auto& hashes = m_current.hashes;
    for (const RecordType& type : schema.Types()) {
        for (const PendingRecord& record : changes.Of(type.id).All()) {
            hashes.insert(HashOf({type.id, record.dbid}));
            for (const Field& field : type.fields) {
                if (record.IsNew() && IsSearched(field)) {
                    hashes.insert(HashOf(type, field.index, record.values[field.index]));
                } else if (!record.IsNew() && record.changed[field.index]) {
                    hashes.insert(HashOf(type, field.index));
                }
            }
        }
    }
    for (const auto& [record, history] : changes.histories) {
        hashes.insert(HashOf(record));
    }
    for (const auto& [record, link] : changes.links) {
        hashes.insert(HashOf(record));
    }
}

void RecentWrites::Note(const RecordType& type, std::int64_t dbid, const RecordBuffer& record) {
    m_current.hashes.insert(HashOf({type.id, dbid}));
    for (const Field& field : type.fields) {
        // Of a new record, fields that it leaves empty can be searched, too.
        const bool concerns = record.IsChanged(field.index) || !HasValue(record.Get(field.index));
        if (IsSearched(field) && concerns) {
            m_current.hashes.insert(HashOf(type, field.index));
        }
    }
}

void RecentWrites::NoteAll() {
    m_current.all = true;
}

void RecentWrites::NoteOthers() {
    Add({.all = true, .hashes = {}});
}

void RecentWrites::Keep() {
    if (IsOn()) {
        Add(std::exchange(m_current, {}));
    }
}

void RecentWrites::Add(Writes writes) {
    ++m_moment;
    if (m_sum) {
        m_sum->all = m_sum->all || writes.all;
        for (const std::uint64_t hash : writes.hashes) {
            m_sum->hashes.Add(hash);
        }
        return;
    }
    m_writes.push_back(std::move(writes));
    if (m_writes.size() > m_most) {
        m_writes.pop_front();
    }
}

void RecentWrites::Drop() {
    m_current = {};
}

// Whether something was read of which `has` knows the hash.
template <typename Has>
bool RecentWrites::Touches(const ReadNotes& reads, Has has) {
    const auto& searches = reads.m_searches;
    // All conditions of a search hold for the records that it finds.
    const auto touches = [&has](const std::vector<ReadNotes::Condition>& search) {
        return std::all_of(search.begin(), search.end(), [&has](const auto& condition) {
            return has(condition.value) || has(condition.field);
        });
    };
    return std::any_of(reads.m_records.begin(), reads.m_records.end(), has) ||
           std::any_of(searches.begin(), searches.end(), touches);
}

bool RecentWrites::HaveTouched(const ReadNotes& reads, std::uint64_t since) const {
    const auto isTouchedBy = [&reads](const Writes& writes) {
        return writes.all || Touches(reads, [&writes](std::uint64_t hash) {
                   return writes.hashes.contains(hash);
               });
    };
    if (reads.m_isUnclear || isTouchedBy(m_current)) {
        return true;
    }
    if (m_sum) {
        return m_sum->all ||
               Touches(reads, [this](std::uint64_t hash) { return m_sum->hashes.MayHave(hash); });
    }
    const std::uint64_t later = m_moment - since;
    return since > m_moment || later > m_writes.size() ||
           std::any_of(m_writes.end() - static_cast<std::ptrdiff_t>(later), m_writes.end(),
                       isTouchedBy);
}

}  // namespace recorddb
