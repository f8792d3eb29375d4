#include "recorddb/store/batch/provisional_ids.h"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>
#include <utility>

namespace recorddb {

namespace {

using schema::Field;
using schema::FieldKind;
using schema::RecordType;

// The digits that every provisional number of a group begins with.
constexpr std::string_view kDigits = "46116860184273";

class Renumbering {
  public:
    explicit Renumbering(const std::vector<std::optional<std::int64_t>>& highest)
        : m_highest(highest) {}

    bool Fits() const { return m_fits; }

    std::int64_t Of(std::int64_t type, std::int64_t dbid) {
        if (!IsProvisional(dbid)) {
            return dbid;
        }
        // Where the database itself has dbids in this range, provisional ones cannot be told from
        // them.
        const std::int64_t highest =
            m_highest[static_cast<std::size_t>(type - 1)].value_or(kFirstProvisionalId);
        if (IsProvisional(highest)) {
            m_fits = false;
            return dbid;
        }
        const std::int64_t given = highest + 1 + (dbid - kFirstProvisionalId);
        m_fits = m_fits && !IsProvisional(given);
        return given;
    }

    RecordKey Of(const RecordKey& record) {
        return {record.first, Of(record.first, record.second)};
    }

    void Renumber(const RecordType& type, PendingRecord& record) {
        const bool isNew = IsProvisional(record.dbid);
        record.dbid = Of(type.id, record.dbid);
        for (const Field& field : type.fields) {
            if (field.index < record.values.size()) {
                Renumber(type, field, isNew, record);
            }
        }
    }

  private:
    void Renumber(const RecordType& type, const Field& field, bool isNew, PendingRecord& record) {
        FieldValue& value = record.values[field.index];
        if (field.kind == FieldKind::DbId) {
            value = record.dbid;
        } else if (field.kind == FieldKind::DisplayId && isNew && HasValue(value)) {
            value = schema::FormatDisplayId(type.prefix, record.dbid);
        } else if (auto* const target = std::get_if<std::int64_t>(&value)) {
            *target = field.kind == FieldKind::Reference ? Of(field.target, *target) : *target;
        } else if (auto* const list = std::get_if<ReferenceList>(&value)) {
            for (std::int64_t& listed : *list) {
                listed = Of(field.target, listed);
            }
        } else if (const auto* const text = std::get_if<std::string>(&value)) {
            // A number that was taken for a dbid and put into a text could not be told apart.
            m_fits = m_fits && text->find(kDigits) == std::string::npos;
        }
    }

    const std::vector<std::optional<std::int64_t>>& m_highest;
    bool m_fits = true;
};

template <typename Value, typename Change>
void ChangeKeys(std::map<RecordKey, Value>& values, Change change) {
    std::map<RecordKey, Value> changed;
    for (auto& [key, value] : values) {
        changed.emplace(change(key, value), std::move(value));
    }
    values = std::move(changed);
}

}  // namespace

bool GiveDbIds(PendingChanges& changes, const schema::Schema& schema,
               const std::vector<std::optional<std::int64_t>>& highest) {
    Renumbering numbers(highest);
    for (const RecordType& type : schema.Types()) {
        changes.Of(type.id).ChangeEach(
            [&](PendingRecord& record) { numbers.Renumber(type, record); });
    }
    ChangeKeys(changes.histories, [&](const RecordKey& key, PendingHistory& history) {
        const RecordKey given = numbers.Of(key);
        for (HistoryEntry& entry : history.added) {
            entry.record = given.second;
        }
        // The name may be one in the worker's schema object: refer to the one of this session,
        // which lasts.
        if (!history.field.empty()) {
            history.field = schema.Type(key.first).HistoryField()->name;
        }
        return given;
    });
    ChangeKeys(changes.links, [&](const RecordKey& key, PendingLink& link) {
        link.original = numbers.Of(key.first, link.original);
        return numbers.Of(key);
    });
    return numbers.Fits();
}

}  // namespace recorddb
