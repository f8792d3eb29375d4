#include "tool/verify/verifier.h"

#include <chrono>
#include <optional>
#include <string>

#include "tool/process/interrupt.h"
#include "tool/verify/comparison/extra_records.h"
#include "tool/verify/comparison/kept_comparison.h"

namespace tool {

namespace {

// The first line says why; a client library may add more.
void WarnOfWorkers(VerifySinks& sinks, const std::string& why) {
    if (!why.empty()) {
        sinks.Warns("warning: fewer workers compare than were asked for: " +
                    why.substr(0, why.find('\n')));
    }
}

// Stops the workers before what they were given is destroyed.
class AtWork {
  public:
    explicit AtWork(ComparisonCrew& crew) : m_crew(crew) {}
    AtWork(const AtWork&) = delete;
    AtWork& operator=(const AtWork&) = delete;
    ~AtWork() { m_crew.Stop(); }

  private:
    ComparisonCrew& m_crew;
};

}  // namespace

Verifier::Verifier(recorddb::Database& database, const VerifyOptions& options, VerifySinks& sinks)
    : m_options(options),
      m_sinks(sinks),
      m_database(database),
      m_crew(options, [&sinks](const std::string& why) { WarnOfWorkers(sinks, why); }),
      m_moment(m_crew.Begin(database)),
      m_tools(database, options),
      m_shelf(*m_tools.scratch),
      m_tally(database.GetSchema()),
      m_scan(m_tools.lookup, m_shelf, options.attachments, m_tally, sinks, options.limits),
      m_comparer(database, m_tools.reader, m_tools.lookup, options,
                 [this](std::size_t place) -> const RecordsPlace& { return m_scan.Place(place); }) {
}

VerifySummary Verifier::Run(const SourceList& sources) {
    const auto start = std::chrono::steady_clock::now();
    CheckDatabase();
    m_sinks.Begins(sources.TotalSize());
    m_scan.Read(sources);
    m_sinks.Begins(m_shelf.Count());
    CompareKept();
    VerifySummary summary = m_tally.Summary();
    summary.differences = m_sinks.Differences();
    summary.exact = m_options.exact;
    summary.faults = m_integrity.faults;
    summary.unusedContents = m_integrity.unusedContents;
    summary.unusedBytes = m_integrity.unusedBytes;
    summary.seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    return summary;
}

void Verifier::CheckDatabase() {
    m_sinks.Begins(0);
    m_integrity = recorddb::CheckIntegrity(
        m_database, [this](const recorddb::Fault& fault) { m_sinks.IsFaulty(fault); },
        [this](std::uint64_t records) {
            m_sinks.Advances(records, 0);
            return Interrupted() == 0;
        });
    if (m_integrity.allContentsSound) {
        m_comparer.ContentsAreSound();
    }
}

void Verifier::CompareKept() {
    const ConfigurationOf configuration = [this](std::size_t number) -> const ImportConfiguration& {
        return m_scan.Configuration(number);
    };
    const DifferenceReporter::PlaceOf placeOf = [this](std::size_t number) -> const RecordsPlace& {
        return m_scan.Place(number);
    };
    std::optional<ExtraRecords> extra;
    if (m_options.exact) {
        extra.emplace(m_database.GetSchema(), m_tools.reader, m_tally, m_sinks);
    }
    const AtWork atWork(m_crew);
    m_crew.Start(configuration, placeOf, m_integrity.allContentsSound);
    KeptComparison(
        {m_shelf, configuration, m_comparer, m_crew, extra ? &*extra : nullptr, m_tally, m_sinks})
        .Run();
    if (extra) {
        extra->PassRest();
    }
}

}  // namespace tool
