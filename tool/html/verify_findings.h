#ifndef TOOL_HTML_VERIFY_FINDINGS_H
#define TOOL_HTML_VERIFY_FINDINGS_H

#include <chrono>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "recorddb/integrity.h"
#include "recorddb/journal.h"
#include "tool/html/example_groups.h"
#include "tool/html/finding_list.h"
#include "tool/html/run_summary.h"
#include "tool/verify/sinks/data_source.h"
#include "tool/verify/sinks/difference.h"
#include "tool/verify/sinks/verify_options.h"
#include "tool/verify/sinks/verify_summary.h"

namespace tool {

// What the page about a comparison tells, gathered while it runs. Memory does not grow with the
// number of differences or sources.
class VerifyFindings {
  public:
    // `start` and `version` are those of the comparison and of the tool.
    VerifyFindings(VerifyOptions options, std::chrono::system_clock::time_point start,
                   std::string version)
        : m_options(std::move(options)), m_start(start), m_version(std::move(version)) {}

    // What the journal knows of `source`; `entry` is null when it was never loaded.
    void AddLoad(const DataSource& source, const recorddb::journal::JournalEntry* entry);
    void AddFinding(const MapFinding& finding) { m_findings.Add(finding); }
    void AddFault(const recorddb::Fault& fault);
    void AddDifference(const Difference& difference);
    void Finish(VerifySummary summary) { m_summary = std::move(summary); }

    const VerifyOptions& Options() const { return m_options; }
    std::chrono::system_clock::time_point Start() const { return m_start; }
    const std::string& Version() const { return m_version; }
    const VerifySummary& Summary() const { return m_summary; }

    // By record type, field and what is wrong.
    std::vector<ExampleGroup> Differences() const { return m_differences.Groups(); }
    const FindingList& Findings() const { return m_findings; }
    // Of the database itself, by record type, field and what is wrong.
    std::vector<ExampleGroup> Faults() const { return m_faults.Groups(); }
    // A record that differs, which the page suggests to look at; without id when there is none.
    const Difference& FirstDifferent() const { return m_firstDifferent; }

    // What all loads of the sources did together, as the journal tells.
    const TypeTotalsList& Loads() const { return m_loads; }
    std::uint64_t Sources() const { return m_sources; }       // that hold records
    std::uint64_t SourcesLoaded() const { return m_loaded; }  // to their end

  private:
    VerifyOptions m_options;
    std::chrono::system_clock::time_point m_start;
    std::string m_version;
    VerifySummary m_summary;
    PatternGroups m_differences{"other differences"};
    PatternGroups m_faults{"other faults"};
    FindingList m_findings;
    Difference m_firstDifferent;
    TypeTotalsList m_loads;
    std::uint64_t m_sources = 0;
    std::uint64_t m_loaded = 0;
};

}  // namespace tool

#endif
