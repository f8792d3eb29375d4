#include "tool/load/records_ahead.h"

#include <utility>

#include "tool/process/interrupt.h"

namespace tool {

RecordsAhead::RecordsAhead(SourceWalk& walk, std::size_t records, std::size_t bytes,
                           std::function<void(const SourceRecord&)> read)
    : m_walk(walk), m_mostRecords(records), m_mostBytes(bytes), m_read(std::move(read)) {}

WalkStep RecordsAhead::Next() {
    if (!ReadsAhead()) {
        return m_walk.Next();
    }
    if (Interrupted() != 0) {
        return WalkStep::Stopped;
    }
    ++m_place;
    if (m_place >= m_kept.Count() && m_end == WalkStep::Record && !m_failure) {
        ReadOn();
    }
    if (m_place < m_kept.Count()) {
        return WalkStep::Record;
    }
    if (m_failure) {
        std::rethrow_exception(std::exchange(m_failure, nullptr));
    }
    return m_end;
}

void RecordsAhead::ReadOn() {
    m_kept.Clear();
    m_bytes.clear();
    m_place = 0;
    std::size_t bytes = 0;
    try {
        while (m_kept.Count() < m_mostRecords && bytes < m_mostBytes &&
               (m_end = m_walk.Next()) == WalkStep::Record) {
            const SourceRecord& record = m_walk.Record();
            m_kept.Add(record);
            m_bytes.push_back(m_walk.BytesRead());
            bytes += record.packet.size() + record.raw.size();
            m_read(record);
        }
    } catch (...) {
        m_failure = std::current_exception();
    }
}

}  // namespace tool
