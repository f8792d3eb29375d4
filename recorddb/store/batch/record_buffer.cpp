#include "recorddb/store/batch/record_buffer.h"

#include <utility>

namespace recorddb {

void RecordBuffer::Set(std::size_t field, FieldValue value) {
    Slot& slot = m_slots[field];
    if (value == slot.saved) {
        slot.changed.reset();
    } else {
        slot.changed = std::move(value);
    }
}

void RecordBuffer::AcceptChanges() {
    for (Slot& slot : m_slots) {
        if (slot.changed) {
            slot.saved = *std::move(slot.changed);
            slot.changed.reset();
        }
    }
}

void RecordBuffer::DropChanges() {
    for (Slot& slot : m_slots) {
        slot.changed.reset();
    }
}

}  // namespace recorddb
