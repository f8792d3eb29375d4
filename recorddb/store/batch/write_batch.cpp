#include "recorddb/store/batch/write_batch.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "recorddb/errors.h"
#include "recorddb/store/tables/next_number.h"
#include "recorddb/store/tables/tables.h"

namespace recorddb {

namespace {

using schema::Field;
using schema::FieldKind;
using schema::RecordType;

// Changes are written when there are so many, whether or not the transaction has come to its end.
constexpr std::size_t kMostChanges = 5000;

// Versions are remembered of so many records of a type.
constexpr std::size_t kMostVersions = 20'000;

}  // namespace

WriteBatch::WriteBatch(sql::Connection& connection, const schema::Schema& schema, Layout layout)
    : m_connection(connection),
      m_schema(schema),
      m_layout(layout),
      m_keyRows(connection, schema, layout),
      m_lastDbIds(connection, schema, layout),
      m_versions(schema.Types().size()),
      m_answers(schema),
      m_writer(connection, schema, layout) {
    for (const RecordType& type : schema.Types()) {
        Type& known =
            m_types.emplace_back(Type{KeySetsOf(type), std::vector<bool>(type.fields.size())});
        for (const FieldSet& set : known.keySets) {
            for (const std::size_t field : set) {
                known.isInKey[field] = true;
            }
        }
    }
    m_layers.push_back({PendingChanges(schema.Types().size()), nullptr});
}

WriteBatch::~WriteBatch() = default;

void WriteBatch::Begin() {
    m_isGathering = true;
    m_hasFailed = false;
    ForgetVersions();
    m_answers.Forget();
}

void WriteBatch::BeginAhead() {
    Begin();
    m_reads.Switch(true);
}

void WriteBatch::End() noexcept {
    DropLayer(1);
    m_layers.front().changes.Clear();
    m_isGathering = false;
    m_reads.Switch(false);
    ForgetVersions();
    m_answers.Forget();
}

std::pair<PendingChanges, ReadNotes> WriteBatch::Take() {
    PendingChanges changes(m_types.size());
    std::swap(changes, m_layers.front().changes);
    return {std::move(changes), std::exchange(m_reads, {})};
}

void WriteBatch::Adopt(PendingChanges changes) {
    m_layers.front().changes = std::move(changes);
    for (const RecordType& type : m_schema.Types()) {
        for (const PendingRecord& record : m_layers.front().changes.Of(type.id).All()) {
            if (record.IsNew()) {
                AddKeys(type, record);
            }
            NoteVersion(type, record.dbid, record.version);
        }
    }
    ++m_changes;
}

// A reader needs no Apply while nothing has been gathered. Everything else is refused.
void WriteBatch::RefuseAhead(For what) const {
    const bool isEmpty = std::all_of(m_layers.begin(), m_layers.end(),
                                     [](const Layer& layer) { return layer.changes.IsEmpty(); });
    if (what == For::Writing || !isEmpty) {
        throw sql::Error(sql::ErrorKind::Other, "this has to be written in its turn", "");
    }
}

void WriteBatch::Apply(For what) {
    if (!m_isGathering) {
        return;
    }
    if (IsAhead()) {
        RefuseAhead(what);
        return;
    }
    if (m_hasFailed) {
        throw sql::Error(sql::ErrorKind::Other, "a part of the transaction could not be written",
                         "");
    }
    std::size_t last = m_depth;
    while (what == For::Reading && last > 0 && m_layers[last].changes.IsEmpty()) {
        --last;
    }
    m_hasFailed = true;
    for (std::size_t layer = 0; layer <= last; ++layer) {
        Layer& current = m_layers[layer];
        if (layer > 0 && !current.savepoint) {
            current.savepoint = std::make_unique<sql::Savepoint>(m_connection);
        }
        if (!current.changes.IsEmpty()) {
            m_answers.Forget(current.changes);
            if (m_writes.IsOn()) {
                m_writes.Note(m_schema, current.changes);
            }
            m_writer.Write(current.changes);
            current.changes.Clear();
        }
    }
    m_hasFailed = false;
}

std::size_t WriteBatch::BeginLayer() {
    std::unique_ptr<sql::Savepoint> savepoint;
    if (!m_isGathering) {
        savepoint = std::make_unique<sql::Savepoint>(m_connection);
    }
    if (m_layers.size() == m_depth + 1) {
        m_layers.push_back({PendingChanges(m_types.size()), nullptr});
    }
    ++m_depth;
    m_layers[m_depth].savepoint = std::move(savepoint);
    return m_depth;
}

void WriteBatch::ReleaseLayer(std::size_t layer) {
    if (layer != m_depth) {
        throw std::logic_error("only the innermost savepoint can be released");
    }
    Layer& ended = m_layers[layer];
    if (ended.savepoint) {
        ended.savepoint->Release();
        ended.savepoint.reset();
    }
    ended.changes.MoveInto(m_layers[layer - 1].changes);
    --m_depth;
}

void WriteBatch::DropLayer(std::size_t layer) noexcept {
    for (; m_depth >= layer; --m_depth) {
        Layer& dropped = m_layers[m_depth];
        dropped.changes.Clear();
        dropped.savepoint.reset();
        ++m_drops;
    }
    ForgetVersions();
}

bool WriteBatch::ChangesKey(const RecordType& type, const RecordBuffer& record) const {
    const std::vector<bool>& isInKey = Of(type).isInKey;
    for (std::size_t field = 0; field < isInKey.size(); ++field) {
        if (isInKey[field] && record.IsChanged(field)) {
            return true;
        }
    }
    return false;
}

void WriteBatch::Put(const RecordType& type, std::int64_t dbid, std::int64_t version,
                     const RecordBuffer& record) {
    if (version != 0 && HasNew(type, dbid) && RefersToNew(type, record)) {
        // Merged into the insertion of its record, the change could refer to a record that is
        // inserted later.
        Apply(For::Reading);
    }
    PendingRecord change = ChangeOf(type, dbid, version, record);
    if (change.IsNew()) {
        AddKeys(type, change);
    }
    NoteVersion(type, dbid, change.version);
    Top().Of(type.id).Add(std::move(change));
    NoteChange();
}

PendingRecord WriteBatch::ChangeOf(const RecordType& type, std::int64_t dbid, std::int64_t version,
                                   const RecordBuffer& record) const {
    PendingRecord change;
    change.dbid = dbid;
    change.baseVersion = version;
    change.version = NextNumber(version, schema::kVersionColumn);
    change.changed.resize(type.fields.size());
    bool hasChanged = false;
    for (const Field& field : type.fields) {
        if (!record.IsChanged(field.index)) {
            continue;
        }
        hasChanged = true;
        if (field.kind == FieldKind::ReferenceList) {
            change.lists.emplace_back(field.index, record.Saved(field.index));
        } else {
            change.changed[field.index] = true;
        }
    }
    if (!hasChanged && !change.IsNew()) {
        return change;
    }
    change.values.reserve(type.fields.size());
    for (const Field& field : type.fields) {
        change.values.push_back(record.Get(field.index));
    }
    change.values.front() = dbid;
    change.wave = change.IsNew() ? WaveOf(type, record) : 0;
    return change;
}

// Within a wave records are written type by type, those of one type in their order.
int WriteBatch::WaveOf(const RecordType& type, const RecordBuffer& record) const {
    int wave = 0;
    for (const Field& field : type.fields) {
        const auto* const target = field.kind == FieldKind::Reference
                                       ? std::get_if<std::int64_t>(&record.Get(field.index))
                                       : nullptr;
        if (target == nullptr) {
            continue;
        }
        if (const PendingRecord* const other = FindNew(field.target, *target)) {
            wave = std::max(wave, other->wave + (field.target > type.id ? 1 : 0));
        }
    }
    return wave;
}

bool WriteBatch::RefersToNew(const RecordType& type, const RecordBuffer& record) const {
    return std::any_of(type.fields.begin(), type.fields.end(), [&](const Field& field) {
        const auto* const target =
            field.kind == FieldKind::Reference && record.IsChanged(field.index)
                ? std::get_if<std::int64_t>(&record.Get(field.index))
                : nullptr;
        return target != nullptr && FindNew(field.target, *target) != nullptr;
    });
}

void WriteBatch::AddKeys(const RecordType& type, const PendingRecord& record) {
    const auto& sets = Of(type).keySets;
    for (std::size_t set = 0; set < sets.size(); ++set) {
        std::vector<const FieldValue*> values;
        for (const std::size_t field : sets[set]) {
            values.push_back(&record.values[field]);
        }
        if (auto key = KeyText(set, values)) {
            Top().Of(type.id).AddKey(*std::move(key), record.dbid);
        }
    }
}

void WriteBatch::PutHistory(const RecordKey& record, std::string_view field,
                            std::span<const HistoryEntry> added,
                            const std::vector<HistoryTimes>& before,
                            std::vector<HistoryTimes> after) {
    const std::vector<HistoryTimes> changes = ChangedTimes(before, after);
    if (added.empty() && changes.empty()) {
        return;
    }
    PendingHistory& history = Top().histories[record];
    history.field = added.empty() ? history.field : field;
    history.added.insert(history.added.end(), added.begin(), added.end());
    for (const HistoryTimes& changed : changes) {
        const auto here = std::find_if(
            history.added.begin(), history.added.end(),
            [&changed](const HistoryEntry& entry) { return entry.entry == changed.entry; });
        (here != history.added.end() ? here->expiryTime : history.expiry[changed.entry]) =
            changed.expiryTime;
    }
    history.times = std::move(after);
    NoteChange();
}

void WriteBatch::PutLink(const RecordKey& duplicate, PendingLink link) {
    Top().links.insert_or_assign(duplicate, std::move(link));
    NoteChange();
}

void WriteBatch::NoteChange() {
    ++m_changes;
    if (++Top().count >= kMostChanges || m_layers.front().changes.count >= kMostChanges) {
        Apply(For::Reading);
    }
}

const PendingRecord* WriteBatch::FindNew(std::int64_t type, std::int64_t dbid) const {
    return FromTop([=](const PendingChanges& changes) {
        const PendingRecord* const record = changes.Of(type).Find(dbid);
        return record != nullptr && record->IsNew() ? record : nullptr;
    });
}

bool WriteBatch::HasNew(const RecordType& type, std::int64_t dbid) const {
    return FindNew(type.id, dbid) != nullptr;
}

std::int64_t WriteBatch::HighestNew(const RecordType& type) const {
    std::int64_t highest = 0;
    for (std::size_t layer = 0; layer <= m_depth; ++layer) {
        highest = std::max(highest, m_layers[layer].changes.Of(type.id).HighestNew());
    }
    return highest;
}

std::optional<std::int64_t> WriteBatch::KnownVersion(const RecordType& type,
                                                     std::int64_t dbid) const {
    const PendingRecord* const record =
        FromTop([&](const PendingChanges& changes) { return changes.Of(type.id).Find(dbid); });
    if (record != nullptr) {
        return record->version;
    }
    const auto& versions = m_versions[static_cast<std::size_t>(type.id - 1)];
    const auto found = versions.find(dbid);
    return found == versions.end() ? std::nullopt : std::optional(found->second);
}

void WriteBatch::NoteVersion(const RecordType& type, std::int64_t dbid, std::int64_t version) {
    if (!m_isGathering) {
        return;
    }
    auto& versions = m_versions[static_cast<std::size_t>(type.id - 1)];
    if (versions.size() >= kMostVersions) {
        versions.clear();
    }
    versions.insert_or_assign(dbid, version);
}

void WriteBatch::ForgetVersions() noexcept {
    for (auto& versions : m_versions) {
        versions.clear();
    }
}

const PendingRecord* WriteBatch::FindColumns(const RecordType& type, std::int64_t dbid) const {
    return FromTop([&](const PendingChanges& changes) {
        const PendingRecord* const record = changes.Of(type.id).Find(dbid);
        return record != nullptr && !record->values.empty() ? record : nullptr;
    });
}

const FieldValue* WriteBatch::FindList(const RecordType& type, std::size_t field,
                                       std::int64_t dbid) const {
    return FromTop([&](const PendingChanges& changes) -> const FieldValue* {
        const PendingRecord* const record = changes.Of(type.id).Find(dbid);
        const bool knows = record != nullptr && (record->IsNew() || record->HasList(field));
        return knows ? &record->values[field] : nullptr;
    });
}

std::int64_t WriteBatch::FindKey(const RecordType& type, const FieldSet& fields,
                                 const std::vector<const FieldValue*>& values) const {
    if (HighestNew(type) == 0) {
        return 0;
    }
    const auto& sets = Of(type).keySets;
    const auto set = std::find(sets.begin(), sets.end(), fields);
    const auto key = KeyText(static_cast<std::size_t>(set - sets.begin()), values);
    if (set == sets.end() || !key) {
        return 0;
    }
    return FromTop(
        [&](const PendingChanges& changes) { return changes.Of(type.id).FindKey(*key); });
}

bool WriteBatch::ChangesColumn(const RecordType& type, std::size_t field) const {
    return FromTop(
        [&](const PendingChanges& changes) { return changes.Of(type.id).ChangesColumn(field); });
}

std::vector<const PendingRecord*> WriteBatch::NewWith(
    const RecordType& type, const std::vector<Condition>& conditions) const {
    std::vector<const PendingRecord*> matches;
    for (std::size_t layer = 0; layer <= m_depth; ++layer) {
        const PendingRecords& records = m_layers[layer].changes.Of(type.id);
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

const std::vector<HistoryTimes>* WriteBatch::FindTimes(const RecordKey& record) const {
    return FromTop([&](const PendingChanges& changes) -> const std::vector<HistoryTimes>* {
        const auto found = changes.histories.find(record);
        return found == changes.histories.end() ? nullptr : &found->second.times;
    });
}

std::optional<std::int64_t> WriteBatch::FindOriginal(const RecordKey& duplicate) const {
    return FromTop([&](const PendingChanges& changes) -> std::optional<std::int64_t> {
        const auto found = changes.links.find(duplicate);
        return found == changes.links.end() ? std::nullopt : std::optional(found->second.original);
    });
}

}  // namespace recorddb
