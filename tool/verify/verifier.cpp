#include "tool/verify/verifier.h"

#include <chrono>
#include <optional>

#include "recorddb/sql.h"
#include "tool/process/interrupt.h"
#include "tool/verify/attachment_comparison.h"
#include "tool/verify/extra_records.h"
#include "tool/verify/history_comparison.h"
#include "tool/verify/value_comparison.h"

namespace tool {

namespace {

void CompareDuplicate(const ExpectedRecord& expected,
                      const std::optional<recorddb::LinkedRecord>& stored,
                      DifferenceReporter& reporter, VerifiedType& tally) {
    const std::string database = stored ? stored->key : "";
    if (const auto& original = expected.Original()) {
        ++tally.duplicates;
        if (!stored || stored->dbid != original->dbid) {
            reporter.Report(expected.OriginalPlace(), "duplicate of", original->text, database,
                            original->problem);
        }
    } else if (expected.IsWhole() && stored) {
        reporter.Report(expected.FirstPlace(), "duplicate of", "", database);
    }
}

}  // namespace

Verifier::Verifier(recorddb::Database& database, const VerifyOptions& options, VerifySinks& sinks)
    : m_moment(database.Begin()),
      m_scratch(recorddb::sql::OpenScratch()),
      m_scratchWork(*m_scratch),
      m_database(database),
      m_reader(database),
      m_lookup(database, m_reader, *m_scratch,
               {.maxTries = options.maxReferenceTries,
                .stopRequested = [] { return Interrupted() != 0; }}),
      m_shelf(*m_scratch),
      m_resolver(m_lookup),
      m_contents(m_reader),
      m_files(options.attachments, options.maxAttachmentSize),
      m_tally(database.GetSchema()),
      m_sinks(sinks),
      m_scan(m_lookup, m_shelf, options.attachments, m_tally, sinks, options.limits),
      m_exact(options.exact) {}

VerifySummary Verifier::Run(const SourceList& sources) {
    const auto start = std::chrono::steady_clock::now();
    CheckDatabase();
    m_sinks.Begins(sources.TotalSize());
    m_scan.Read(sources);
    m_sinks.Begins(m_shelf.Count());
    CompareKept();
    VerifySummary summary = m_tally.Summary();
    summary.differences = m_sinks.Differences();
    summary.exact = m_exact;
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
        m_contents.AreSound();
    }
}

void Verifier::CompareKept() {
    KeptRecord record;
    std::uint64_t done = 0;
    ExtraRecords extra(m_database.GetSchema(), m_reader, m_tally, m_sinks);
    bool more = m_shelf.Next(record);
    while (more && Interrupted() == 0) {
        const std::int64_t type = record.type;
        const std::int64_t dbid = record.dbid;
        if (m_exact) {
            extra.Pass(type, dbid);
        }
        ExpectedRecord expected(m_database.GetSchema().Type(type), m_resolver, m_exact);
        bool differs = false;
        for (; more && record.type == type && record.dbid == dbid; more = m_shelf.Next(record)) {
            expected.Add(record, m_scan.Configuration(record.configuration));
            differs = differs || record.differs;
            ++done;
        }
        CompareRecord(expected, dbid, differs);
        m_sinks.Advances(done, done);
    }
    if (m_exact) {
        extra.PassRest();
    }
}

void Verifier::CompareRecord(const ExpectedRecord& expected, std::int64_t dbid, bool differs) {
    const auto record = m_reader.Get(expected.Type(), dbid);
    if (!record) {
        throw std::logic_error("a record is gone within one transaction");
    }
    Difference subject;
    subject.type = expected.Type().name;
    subject.id = m_reader.Key(expected.Type(), dbid);
    subject.sourceId = expected.SourceId();
    DifferenceReporter reporter(
        std::move(subject), [this](const Difference& difference) { m_sinks.Differs(difference); },
        [this](std::size_t place) -> const RecordsPlace& { return m_scan.Place(place); });
    VerifiedType& tally = m_tally.Of(&expected.Type());
    CompareValues(expected, *record, reporter, tally);
    CompareHistory(expected, m_reader.History(*record), reporter, tally);
    CompareAttachments(expected, m_reader.Attachments(*record), m_contents, m_files, reporter,
                       tally);
    CompareDuplicate(expected, m_reader.Original(*record), reporter, tally);
    const bool isDifferent = differs || reporter.Count() > 0;
    ++tally.compared;
    ++(isDifferent ? tally.different : tally.equal);
}

}  // namespace tool
