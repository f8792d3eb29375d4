#include "recorddb/store/batch/known_answers.h"

#include <algorithm>

namespace recorddb {

using schema::RecordType;

namespace {

std::string KeyTextOf(const std::vector<const FieldValue*>& values) {
    return KeyText(0, values).value_or("");
}

}  // namespace

KnownAnswers::KnownAnswers(const schema::Schema& schema)
    : m_schema(schema), m_types(schema.Types().size()) {}

void KnownAnswers::Forget() noexcept {
    if (m_isEmpty) {
        return;
    }
    for (OfType& type : m_types) {
        type.searches.clear();
        type.versions.clear();
        type.rows.clear();
        type.lists.clear();
    }
    m_times.clear();
    m_entries.clear();
    m_attachments.clear();
    m_originals.clear();
    m_isEmpty = true;
}

void KnownAnswers::ForgetRecord(const RecordKey& record) {
    OfType& type = m_types[static_cast<std::size_t>(record.first - 1)];
    type.versions.erase(record.second);
    type.rows.erase(record.second);
    for (auto& [field, lists] : type.lists) {
        lists.erase(record.second);
    }
    m_times.erase(record);
    m_entries.erase(record);
    m_attachments.erase(record);
    m_originals.erase(record);
}

// Forgets the searches that records with these values answer, or no longer answer.
template <typename ValueOf>
void KnownAnswers::ForgetValues(OfType& type, ValueOf valueOf) {
    for (auto& [fields, searches] : type.searches) {
        std::vector<const FieldValue*> values;
        for (const std::size_t field : fields) {
            values.push_back(&valueOf(field));
        }
        searches.erase(KeyTextOf(values));
    }
}

void KnownAnswers::Forget(const PendingChanges& changes) {
    if (m_isEmpty) {
        return;
    }
    for (const RecordType& type : m_schema.Types()) {
        OfType& known = Of(type);
        const PendingRecords& records = changes.Of(type.id);
        std::erase_if(known.searches, [&records](const auto& searches) {
            return std::any_of(
                searches.first.begin(), searches.first.end(),
                [&records](std::size_t field) { return records.ChangesColumn(field); });
        });
        for (const PendingRecord& record : records.All()) {
            ForgetRecord({type.id, record.dbid});
            if (record.IsNew()) {
                ForgetValues(known, [&record](std::size_t field) -> const FieldValue& {
                    return record.values[field];
                });
            }
        }
    }
    for (const auto& [record, history] : changes.histories) {
        m_times.erase(record);
        m_entries.erase(record);
    }
    for (const auto& [record, link] : changes.links) {
        m_originals.erase(record);
    }
}

void KnownAnswers::Forget(const RecordType& type, std::int64_t dbid, const RecordBuffer& record) {
    if (m_isEmpty) {
        return;
    }
    ForgetRecord({type.id, dbid});
    const FieldValue number = dbid;
    const auto valueIn = [&number](std::size_t field,
                                   const FieldValue& value) -> const FieldValue& {
        return field == 0 ? number : value;
    };
    ForgetValues(Of(type), [&](std::size_t field) -> const FieldValue& {
        return valueIn(field, record.Get(field));
    });
    ForgetValues(Of(type), [&](std::size_t field) -> const FieldValue& {
        return valueIn(field, record.Saved(field));
    });
}

std::optional<std::int64_t> KnownAnswers::Find(const RecordType& type, const FieldSet& fields,
                                               const std::vector<const FieldValue*>& values) const {
    if (m_isEmpty) {
        return std::nullopt;
    }
    const OfType& known = Of(type);
    const auto searches = known.searches.find(fields);
    if (searches == known.searches.end()) {
        return std::nullopt;
    }
    const auto found = searches->second.find(KeyTextOf(values));
    if (found == searches->second.end() || found->second.count > 1) {
        return std::nullopt;
    }
    return found->second.dbid;
}

std::optional<std::int64_t> KnownAnswers::FindVersion(const RecordType& type,
                                                      std::int64_t dbid) const {
    const auto found = Of(type).versions.find(dbid);
    return found == Of(type).versions.end() ? std::nullopt : std::optional(found->second);
}

const KnownRow* KnownAnswers::FindRow(const RecordType& type, std::int64_t dbid) const {
    const auto found = Of(type).rows.find(dbid);
    return found == Of(type).rows.end() ? nullptr : &found->second;
}

const FieldValue* KnownAnswers::FindList(const RecordType& type, std::size_t field,
                                         std::int64_t dbid) const {
    const auto lists = Of(type).lists.find(field);
    if (lists == Of(type).lists.end()) {
        return nullptr;
    }
    const auto found = lists->second.find(dbid);
    return found == lists->second.end() ? nullptr : &found->second;
}

const std::vector<HistoryTimes>* KnownAnswers::FindTimes(const RecordKey& record) const {
    const auto found = m_times.find(record);
    return found == m_times.end() ? nullptr : &found->second;
}

const std::vector<HistoryEntry>* KnownAnswers::FindEntries(const RecordKey& record) const {
    const auto found = m_entries.find(record);
    return found == m_entries.end() ? nullptr : &found->second;
}

const std::vector<Attachment>* KnownAnswers::FindAttachments(const RecordKey& record) const {
    const auto found = m_attachments.find(record);
    return found == m_attachments.end() ? nullptr : &found->second;
}

const std::optional<std::int64_t>* KnownAnswers::FindOriginal(const RecordKey& record) const {
    const auto found = m_originals.find(record);
    return found == m_originals.end() ? nullptr : &found->second;
}

}  // namespace recorddb
