#ifndef RECORDDB_STORE_BATCH_RECORD_BUFFER_H
#define RECORDDB_STORE_BATCH_RECORD_BUFFER_H

#include <cstddef>
#include <optional>
#include <vector>

#include "recorddb/model/field_value.h"

namespace recorddb {

// The fields of a record that is being edited: what the database holds, and over it what was
// changed since. Fields are known by their position in the record type.
class RecordBuffer {
  public:
    explicit RecordBuffer(std::size_t fieldCount) : m_slots(fieldCount) {}

    // The value as edited.
    const FieldValue& Get(std::size_t field) const {
        const Slot& slot = m_slots[field];
        return slot.changed ? *slot.changed : slot.saved;
    }

    // The value that the database holds.
    const FieldValue& Saved(std::size_t field) const { return m_slots[field].saved; }
    void SetSaved(std::size_t field, FieldValue value) { m_slots[field].saved = std::move(value); }

    // Edits a field. A value that equals what the database holds is no change.
    void Set(std::size_t field, FieldValue value);

    bool IsChanged(std::size_t field) const { return m_slots[field].changed.has_value(); }

    // The changes have been written.
    void AcceptChanges();

    void DropChanges();

    std::size_t Size() const { return m_slots.size(); }

  private:
    struct Slot {
        FieldValue saved;
        std::optional<FieldValue> changed;
    };

    std::vector<Slot> m_slots;
};

}  // namespace recorddb

#endif
