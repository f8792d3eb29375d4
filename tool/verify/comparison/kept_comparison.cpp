#include "tool/verify/comparison/kept_comparison.h"

#include <cstddef>
#include <deque>
#include <utility>

#include "tool/process/interrupt.h"

namespace tool {

namespace {

// In a package: so many records of the sources, and bytes, and then those that speak of the same
// record of the database as the last one, up to so many bytes.
constexpr std::size_t kRecords = 50;
constexpr std::size_t kBytes = std::size_t{1} << 18U;
constexpr std::size_t kMostBytes = std::size_t{1} << 22U;

}  // namespace

void KeptComparison::Run() {
    std::deque<std::shared_ptr<KeptPackage>> ahead;
    m_hasNext = m_parts.shelf.Next(m_record);
    while (Interrupted() == 0 && (m_hasNext || !ahead.empty())) {
        while (m_hasNext && ahead.size() < m_parts.crew.Packages() &&
               (ahead.empty() || !ahead.back()->isOpen)) {
            ahead.push_back(std::make_shared<KeptPackage>());
            Fill(*ahead.back());
            if (!ahead.back()->isOpen) {
                m_parts.crew.Give(ahead.back());
            }
        }
        Settle(*ahead.front());
        ahead.pop_front();
    }
}

void KeptComparison::Fill(KeptPackage& package) {
    std::size_t bytes = 0;
    while (m_hasNext) {
        const bool isSame = !package.records.empty() &&
                            package.records.back().type == m_record.type &&
                            package.records.back().dbid == m_record.dbid;
        const bool isFull = package.records.size() >= kRecords || bytes >= kBytes;
        package.isOpen = isSame && bytes >= kMostBytes;
        if (package.isOpen || (isFull && !isSame)) {
            return;
        }
        bytes += m_parts.shelf.Size();
        package.records.push_back(std::exchange(m_record, {}));
        m_hasNext = m_parts.shelf.Next(m_record);
    }
}

// What no worker has compared is compared now.
void KeptComparison::Settle(KeptPackage& package) {
    m_parts.crew.TakeBack(package);
    try {
        if (!package.tally) {
            Compare(package, m_parts.comparer, m_parts.configuration,
                    [this](RecordComparer& comparer) { AddRest(comparer); });
        }
    } catch (...) {
        Tell(package);
        throw;
    }
    Tell(package);
    if (package.tally) {
        m_parts.tally.Add(*package.tally);
    }
}

void KeptComparison::AddRest(RecordComparer& comparer) {
    const std::int64_t type = m_record.type;
    const std::int64_t dbid = m_record.dbid;
    while (m_hasNext && m_record.type == type && m_record.dbid == dbid) {
        comparer.Add(m_record, m_parts.configuration(m_record.configuration));
        ++m_rest;
        m_hasNext = m_parts.shelf.Next(m_record);
    }
}

void KeptComparison::Tell(const KeptPackage& package) {
    std::size_t begin = 0;
    for (const std::vector<Difference>& differences : package.differences) {
        const KeptRecord& first = package.records[begin];
        if (m_parts.extra != nullptr) {
            m_parts.extra->Pass(first.type, first.dbid);
        }
        for (const Difference& difference : differences) {
            m_parts.sinks.Differs(difference);
        }
        const std::size_t end = EndOfSubject(package, begin);
        m_done += end - begin;
        m_done += end == package.records.size() ? std::exchange(m_rest, 0) : 0;
        m_parts.sinks.Advances(m_done, m_done);
        begin = end;
    }
}

}  // namespace tool
