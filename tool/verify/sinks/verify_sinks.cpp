#include "tool/verify/sinks/verify_sinks.h"

#include "tool/io/finish_all.h"

namespace tool {

void VerifySinks::Begins(std::uint64_t total) {
    for (VerifySink* const sink : m_sinks) {
        sink->Begins(total);
    }
}

void VerifySinks::Advances(std::uint64_t records, std::uint64_t done) {
    for (VerifySink* const sink : m_sinks) {
        sink->Advances(records, done);
    }
}

void VerifySinks::Warns(std::string_view line) {
    for (VerifySink* const sink : m_sinks) {
        sink->Warns(line);
    }
}

void VerifySinks::Finds(const MapFinding& finding) {
    for (VerifySink* const sink : m_sinks) {
        sink->Finds(finding);
    }
}

void VerifySinks::IsFaulty(const recorddb::Fault& fault) {
    for (VerifySink* const sink : m_sinks) {
        sink->IsFaulty(fault);
    }
}

void VerifySinks::Reads(const DataSource& source) {
    for (VerifySink* const sink : m_sinks) {
        sink->Reads(source);
    }
}

void VerifySinks::Differs(const Difference& difference) {
    ++m_differences;
    for (VerifySink* const sink : m_sinks) {
        sink->Differs(difference);
    }
}

void VerifySinks::Finish(const VerifySummary& summary) {
    FinishAll(m_sinks, summary);
}

}  // namespace tool
