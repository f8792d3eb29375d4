#ifndef TOOL_HTML_RUN_SUMMARY_H
#define TOOL_HTML_RUN_SUMMARY_H

#include <chrono>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "tool/html/example_groups.h"
#include "tool/html/finding_list.h"
#include "tool/html/rate_samples.h"
#include "tool/html/type_totals.h"
#include "tool/load/policy/load_options.h"
#include "tool/load/sinks/load_totals.h"
#include "tool/load/sinks/rejected_record.h"
#include "tool/losses/loss.h"
#include "tool/packet/import_configuration.h"

namespace tool {

// What was asked for, and when.
struct RunDescription {
    std::string command;  // the command's name
    LoadOptions options;
    std::chrono::system_clock::time_point start;
    std::string version;       // of the tool
    bool isRehearsal = false;  // nothing of it is kept
};

// What the page about a run tells, gathered while it runs. Memory does not grow with the number of
// records, rejects or losses.
class RunSummary {
  public:
    explicit RunSummary(RunDescription description) : m_description(std::move(description)) {}

    // Says that what is counted from here on belongs to `type`; `soFar` are the totals up to here.
    void StartType(const std::string& type, ImportedData data, const LoadTotals& soFar);

    void AddFinding(const MapFinding& finding) { m_findings.Add(finding); }
    void AddReject(const RejectedRecord& record);
    void AddLoss(const Loss& loss);

    // Says that records were passed over because the database's journal knows them as loaded.
    void AddLoadedBefore(std::uint64_t records) { m_loadedBefore += records; }
    // Says that records which an earlier load rejected are still missing.
    void AddRejectedBefore(std::uint64_t records) { m_rejectedBefore += records; }

    // Says how many records were read up to a time, in seconds since the start.
    void Advance(double seconds, std::uint64_t read);

    // Says why the run did not come to its end, in a sentence or more.
    void NoteEarlyEnd(std::string why) { m_earlyEnd = std::move(why); }

    // Closes the numbers; nothing may be added afterwards.
    void Finish(const LoadTotals& totals);

    const RunDescription& Description() const { return m_description; }
    // Whether nothing of it was kept.
    bool Rehearsed() const { return m_description.isRehearsal; }
    const LoadTotals& Totals() const { return m_totals; }
    // In the order in which the types were loaded first.
    const std::vector<TypeTotals>& Types() const { return m_types.Types(); }
    std::vector<ExampleGroup> Causes() const { return m_causes.Groups(); }
    const std::map<LossKind, ExampleGroup>& Losses() const { return m_losses; }
    std::uint64_t LossCount() const;
    const FindingList& Findings() const { return m_findings; }
    std::uint64_t LoadedBefore() const { return m_loadedBefore; }
    std::uint64_t RejectedBefore() const { return m_rejectedBefore; }
    const std::string& EarlyEnd() const { return m_earlyEnd; }
    const std::vector<RateSamples::Sample>& Rate() const { return m_rate.Samples(); }
    // Records handled per second, from the start to the end.
    double AverageRate() const;

  private:
    void CloseType(const LoadTotals& soFar);
    std::uint64_t Handled(std::uint64_t read) const { return read - m_loadedBefore; }

    RunDescription m_description;
    LoadTotals m_totals;
    TypeTotalsList m_types;
    std::string m_type;
    ImportedData m_data = ImportedData::Nothing;
    LoadTotals m_typeStart;
    PatternGroups m_causes{"other causes"};
    std::map<LossKind, ExampleGroup> m_losses;
    FindingList m_findings;
    std::uint64_t m_loadedBefore = 0;
    std::uint64_t m_rejectedBefore = 0;
    std::string m_earlyEnd;
    RateSamples m_rate;
};

}  // namespace tool

#endif
