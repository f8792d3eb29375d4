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
      m_pending(schema.Types().size()),
      m_savepoints(1),
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
    m_pending.At(0).Clear();
    m_isGathering = false;
    m_reads.Switch(false);
    ForgetVersions();
    m_answers.Forget();
}

std::pair<PendingChanges, ReadNotes> WriteBatch::Take() {
    PendingChanges changes(m_types.size());
    std::swap(changes, m_pending.At(0));
    return {std::move(changes), std::exchange(m_reads, {})};
}

void WriteBatch::Adopt(PendingChanges changes) {
    m_pending.At(0) = std::move(changes);
    for (const RecordType& type : m_schema.Types()) {
        for (const PendingRecord& record : m_pending.At(0).Of(type.id).All()) {
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
    if (what == For::Writing || !m_pending.IsEmpty()) {
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
    std::size_t last = m_pending.Depth();
    while (what == For::Reading && last > 0 && m_pending.At(last).IsEmpty()) {
        --last;
    }
    m_hasFailed = true;
    for (std::size_t layer = 0; layer <= last; ++layer) {
        PendingChanges& changes = m_pending.At(layer);
        if (layer > 0 && !m_savepoints[layer]) {
            m_savepoints[layer] = std::make_unique<sql::Savepoint>(m_connection);
        }
        if (!changes.IsEmpty()) {
            m_answers.Forget(changes);
            if (m_writes.IsOn()) {
                m_writes.Note(m_schema, changes);
            }
            m_writer.Write(changes);
            changes.Clear();
        }
    }
    m_hasFailed = false;
}

std::size_t WriteBatch::BeginLayer() {
    std::unique_ptr<sql::Savepoint> savepoint;
    if (!m_isGathering) {
        savepoint = std::make_unique<sql::Savepoint>(m_connection);
    }
    m_savepoints.reserve(m_savepoints.size() + 1);
    m_pending.Push();
    m_savepoints.push_back(std::move(savepoint));
    return m_pending.Depth();
}

void WriteBatch::ReleaseLayer(std::size_t layer) {
    if (layer != m_pending.Depth()) {
        throw std::logic_error("only the innermost savepoint can be released");
    }
    if (m_savepoints.back()) {
        m_savepoints.back()->Release();
        m_savepoints.back().reset();
    }
    m_pending.Merge();  // which leaves the layer where it is when memory fails
    m_savepoints.pop_back();
}

void WriteBatch::DropLayer(std::size_t layer) noexcept {
    while (m_pending.Depth() >= layer) {
        m_pending.Drop();
        m_savepoints.pop_back();
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
    if (version != 0 && m_pending.HasNew(type, dbid) && RefersToNew(type, record)) {
        // Merged into the insertion of its record, the change could refer to a record that is
        // inserted later.
        Apply(For::Reading);
    }
    PendingRecord change = ChangeOf(type, dbid, version, record);
    if (change.IsNew()) {
        AddKeys(type, change);
    }
    NoteVersion(type, dbid, change.version);
    m_pending.Top().Of(type.id).Add(std::move(change));
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
        if (const PendingRecord* const other = m_pending.FindNew(field.target, *target)) {
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
        return target != nullptr && m_pending.FindNew(field.target, *target) != nullptr;
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
            m_pending.Top().Of(type.id).AddKey(*std::move(key), record.dbid);
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
    PendingHistory& history = m_pending.Top().histories[record];
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
    m_pending.Top().links.insert_or_assign(duplicate, std::move(link));
    NoteChange();
}

void WriteBatch::NoteChange() {
    ++m_changes;
    if (++m_pending.Top().count >= kMostChanges || m_pending.At(0).count >= kMostChanges) {
        Apply(For::Reading);
    }
}

std::optional<std::int64_t> WriteBatch::KnownVersion(const RecordType& type,
                                                     std::int64_t dbid) const {
    if (const PendingRecord* const record = m_pending.Find(type, dbid)) {
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

std::int64_t WriteBatch::FindKey(const RecordType& type, const FieldSet& fields,
                                 const std::vector<const FieldValue*>& values) const {
    if (m_pending.HighestNew(type) == 0) {
        return 0;
    }
    const auto& sets = Of(type).keySets;
    const auto set = std::find(sets.begin(), sets.end(), fields);
    const auto key = KeyText(static_cast<std::size_t>(set - sets.begin()), values);
    if (set == sets.end() || !key) {
        return 0;
    }
    return m_pending.FindKey(type, *key);
}

}  // namespace recorddb
