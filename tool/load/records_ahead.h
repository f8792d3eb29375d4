#ifndef TOOL_LOAD_RECORDS_AHEAD_H
#define TOOL_LOAD_RECORDS_AHEAD_H

#include <cstddef>
#include <cstdint>
#include <exception>
#include <functional>
#include <vector>

#include "tool/load/kept_records.h"
#include "tool/sources/source_walk.h"

namespace tool {

// The records of the current source of a walk, of which some may be read before they are asked for.
// What ends the reading, also an error, comes after the records before it.
class RecordsAhead {
  public:
    // Reads ahead so many records, or as many as take so many bytes, and calls `read` with each as
    // soon as it has been read; reads none ahead when `records` is 0. The walk outlives the object.
    RecordsAhead(SourceWalk& walk, std::size_t records, std::size_t bytes,
                 std::function<void(const SourceRecord&)> read);

    // As SourceWalk::Next, but a signal ends it at once, whatever has been read ahead.
    WalkStep Next();

    // The current record, until the next step, and the bytes of the sources read up to its end.
    const SourceRecord& Record() const {
        return ReadsAhead() ? m_kept.At(m_place) : m_walk.Record();
    }
    std::uint64_t BytesRead() const {
        return ReadsAhead() && m_place < m_bytes.size() ? m_bytes[m_place] : m_walk.BytesRead();
    }

    bool ReadsAhead() const { return m_mostRecords > 0; }
    // Whether the current record is the first of those that were read together.
    bool IsFirst() const { return m_place == 0; }
    // Calls `take` with the current record and those that were read after it.
    template <typename Take>
    void ForEachRead(Take take) const {
        for (std::size_t place = m_place; place < m_kept.Count(); ++place) {
            take(m_kept.At(place));
        }
    }

  private:
    void ReadOn();

    SourceWalk& m_walk;
    std::size_t m_mostRecords;
    std::size_t m_mostBytes;
    std::function<void(const SourceRecord&)> m_read;
    KeptRecords m_kept;
    std::vector<std::uint64_t> m_bytes;  // read up to the end of each of them
    std::size_t m_place = 0;
    WalkStep m_end = WalkStep::Record;  // what came after them; Record: nothing has
    std::exception_ptr m_failure;       // that came after them
};

}  // namespace tool

#endif
