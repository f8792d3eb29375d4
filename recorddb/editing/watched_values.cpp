#include "recorddb/editing/watched_values.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <variant>

namespace recorddb {

void WatchedValues::Watch(const schema::RecordType& type, const schema::Field* field) {
    Fields& fields = m_watched[static_cast<std::size_t>(type.id - 1)];
    if (std::find(fields.begin(), fields.end(), field) == fields.end()) {
        fields.push_back(field);
    }
}

void WatchedValues::WatchNothing() {
    for (Fields& fields : m_watched) {
        fields.clear();
    }
    m_written.clear();
}

void WatchedValues::Note(const EditedRecord& record) {
    for (const schema::Field* const field :
         m_watched[static_cast<std::size_t>(record.Type().id - 1)]) {
        if (field == nullptr) {
            NoteKey(record);
        } else {
            NoteField(record, *field);
        }
    }
}

void WatchedValues::NoteKey(const EditedRecord& record) {
    const schema::RecordType& type = record.Type();
    const bool hasChanged = std::any_of(type.key.begin(), type.key.end(), [&](std::size_t part) {
        return record.buffer.IsChanged(part);
    });
    if (hasChanged) {
        m_written.push_back({&type, nullptr, m_keys.KeyOf(type, record.dbid).value_or("")});
    }
}

void WatchedValues::NoteField(const EditedRecord& record, const schema::Field& field) {
    if (!record.buffer.IsChanged(field.index)) {
        return;
    }
    const FieldValue& value = record.buffer.Get(field.index);
    if (const auto* const text = std::get_if<std::string>(&value)) {
        m_written.push_back({&record.Type(), &field, *text});
    } else if (const auto* const number = std::get_if<std::int64_t>(&value)) {
        m_written.push_back({&record.Type(), &field, std::to_string(*number)});
    }
}

}  // namespace recorddb
