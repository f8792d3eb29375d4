#include "tool/load/workers/records_ahead.h"

#include <utility>

#include "tool/process/interrupt.h"

namespace tool {

RecordsAhead::RecordsAhead(SourceWalk& walk, const Limits& limits, Read read, Give give)
    : m_walk(walk), m_limits(limits), m_read(std::move(read)), m_give(std::move(give)) {}

WalkStep RecordsAhead::Next() {
    if (!ReadsAhead()) {
        return m_walk.Next();
    }
    if (Interrupted() != 0) {
        return WalkStep::Stopped;
    }
    ++m_place;
    if (!IsInPackage()) {
        LeavePackage();
        ReadOn();
    }
    if (IsInPackage()) {
        return WalkStep::Record;
    }
    if (m_failure) {
        std::rethrow_exception(std::exchange(m_failure, nullptr));
    }
    return m_end;
}

void RecordsAhead::LeavePackage() {
    m_place = 0;
    if (!m_packages.empty()) {
        m_spare = std::move(m_packages.front());
        m_packages.pop_front();
    }
}

void RecordsAhead::ReadOn() {
    while (m_packages.size() < m_limits.packages && m_end == WalkStep::Record && !m_failure) {
        const std::shared_ptr<Package> package = NewPackage();
        ReadInto(*package);
        if (package->records.Count() == 0) {
            return;
        }
        m_packages.push_back(package);
        if (m_give) {
            m_give(package);
        }
    }
}

std::shared_ptr<Package> RecordsAhead::NewPackage() {
    std::shared_ptr<Package> package = std::exchange(m_spare, nullptr);
    if (!package) {
        return std::make_shared<Package>();
    }
    package->records.Clear();
    package->bytes.clear();
    package->isDue.clear();
    package->work.reset();
    package->done.clear();
    package->losses.clear();
    package->watched.reset();
    package->written.clear();
    package->state = WorkState::New;
    return package;
}

void RecordsAhead::ReadInto(Package& package) {
    std::size_t bytes = 0;
    try {
        while (package.records.Count() < m_limits.records && bytes < m_limits.bytes &&
               (m_end = m_walk.Next()) == WalkStep::Record) {
            const SourceRecord& record = m_walk.Record();
            package.records.Add(record);
            package.bytes.push_back(m_walk.BytesRead());
            bytes += record.packet.size() + record.raw.size();
            m_read(record);
        }
    } catch (...) {
        m_failure = std::current_exception();
    }
}

}  // namespace tool
