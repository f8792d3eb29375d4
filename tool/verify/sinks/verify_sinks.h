#ifndef TOOL_VERIFY_SINKS_VERIFY_SINKS_H
#define TOOL_VERIFY_SINKS_VERIFY_SINKS_H

#include <cstdint>
#include <utility>
#include <vector>

#include "tool/verify/sinks/verify_sink.h"

namespace tool {

// Passes what a comparison finds on to several sinks, one after the other, and counts the
// differences.
class VerifySinks final : public VerifySink {
  public:
    // The sinks stay the caller's and get everything in this order.
    explicit VerifySinks(std::vector<VerifySink*> sinks) : m_sinks(std::move(sinks)) {}

    void Begins(std::uint64_t total) override;
    void Advances(std::uint64_t records, std::uint64_t done) override;
    void Warns(std::string_view line) override;
    void Finds(const MapFinding& finding) override;
    void IsFaulty(const recorddb::Fault& fault) override;
    void Reads(const DataSource& source) override;
    void Differs(const Difference& difference) override;
    void Finish(const VerifySummary& summary) override;

    std::uint64_t Differences() const { return m_differences; }

  private:
    std::vector<VerifySink*> m_sinks;
    std::uint64_t m_differences = 0;
};

}  // namespace tool

#endif
