#ifndef TOOL_LOAD_WORKERS_RECORDS_AHEAD_H
#define TOOL_LOAD_WORKERS_RECORDS_AHEAD_H

#include <cstddef>
#include <cstdint>
#include <deque>
#include <exception>
#include <functional>
#include <memory>

#include "tool/load/workers/package.h"
#include "tool/sources/source_walk.h"

namespace tool {

// The records of the current source of a walk, of which some may be read before they are asked for,
// package by package. What ends the reading, also an error, comes after the records before it.
class RecordsAhead {
  public:
    struct Limits {
        std::size_t records = 0;  // in a package; 0: none is read ahead
        std::size_t bytes = 0;    // a package ends with the record that exceeds them
        std::size_t packages = 1;
    };
    using Read = std::function<void(const SourceRecord&)>;
    using Give = std::function<void(const std::shared_ptr<Package>&)>;

    // Calls `read` with each record that is read ahead, as soon as that has been done, and `give`,
    // if there is one, with each package. The walk outlives the object.
    RecordsAhead(SourceWalk& walk, const Limits& limits, Read read, Give give = {});

    // As SourceWalk::Next, but a signal ends it at once, whatever has been read ahead.
    WalkStep Next();

    // The current record, until the next step, and the bytes of the sources read up to its end.
    const SourceRecord& Record() const {
        return IsInPackage() ? Current().records.At(m_place) : m_walk.Record();
    }
    std::uint64_t BytesRead() const {
        return IsInPackage() ? Current().bytes[m_place] : m_walk.BytesRead();
    }

    bool ReadsAhead() const { return m_limits.records > 0; }

    // The package that the current record is in.
    Package& Current() { return *m_packages.front(); }
    // The package after it, as far as that has been read; null when there is none.
    const Package* Following() const {
        return m_packages.size() > 1 ? m_packages[1].get() : nullptr;
    }
    // Whether the current record is the first of its package, or the last one.
    bool IsFirst() const { return m_place == 0; }
    bool IsLast() const { return m_place + 1 == Current().records.Count(); }
    // Goes on to the next record of the package, which there is.
    void Step() { ++m_place; }

    // Calls `take` with the current record and those after it in its package.
    template <typename Take>
    void ForEachRead(Take take) const {
        for (std::size_t place = m_place; place < Current().records.Count(); ++place) {
            take(Current().records.At(place));
        }
    }

  private:
    const Package& Current() const { return *m_packages.front(); }
    bool IsInPackage() const { return !m_packages.empty() && m_place < Current().records.Count(); }
    void LeavePackage();
    void ReadOn();
    std::shared_ptr<Package> NewPackage();
    void ReadInto(Package& package);

    SourceWalk& m_walk;
    Limits m_limits;
    Read m_read;
    Give m_give;
    std::deque<std::shared_ptr<Package>> m_packages;
    std::shared_ptr<Package> m_spare;   // kept for its memory
    std::size_t m_place = 0;            // in the first of them
    WalkStep m_end = WalkStep::Record;  // what came after them; Record: nothing has
    std::exception_ptr m_failure;       // that came after them
};

}  // namespace tool

#endif
