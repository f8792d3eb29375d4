#include "tool/load/records/kept_records.h"

namespace tool {

namespace {

// The memory of a record that was much larger than most is released.
constexpr std::size_t kMostRoom = std::size_t{1} << 16;

void GiveBack(std::string& text) {
    if (text.capacity() > kMostRoom) {
        text = std::string();
    }
}

}  // namespace

void KeptRecords::Add(const SourceRecord& record) {
    if (m_count == m_records.size()) {
        m_records.emplace_back();
    }
    Kept& kept = m_records[m_count++];
    GiveBack(kept.raw);
    GiveBack(kept.record.packet);
    kept.record = record;
    kept.raw = record.raw;
    kept.record.raw = kept.raw;
    kept.record.values = nullptr;
    if (record.rows != nullptr) {
        kept.rows = *record.rows;
        kept.record.rows = &kept.rows;
    }
}

}  // namespace tool
