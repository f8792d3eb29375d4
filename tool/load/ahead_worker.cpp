#include "tool/load/ahead_worker.h"

#include <utility>

#include "recorddb/database.h"
#include "recorddb/errors.h"
#include "tool/load/atomic_import.h"
#include "tool/load/expected_searches.h"
#include "tool/load/record_group.h"
#include "tool/load/record_importer.h"
#include "tool/process/interrupt.h"

namespace tool {

namespace {

// A server that takes no further connection is not asked for ever.
constexpr int kMostFailedConnections = 3;

}  // namespace

// They belong to one connection.
struct AheadWorker::Tools {
    Tools(const LoadOptions& options, const LoadPolicy& policy)
        : database(recorddb::Database::Open(options.database, recorddb::Database::Mode::ReadWrite)),
          session(database->OpenSession(SessionFor(options, policy))),
          importer(session),
          group(session, policy, recorddb::Writing::Ahead),
          import(session, importer, group),
          expected(database->GetSchema()),
          looksAhead(options.looksAhead || database->GetConnection().ReadsManyForLess()) {}

    std::unique_ptr<recorddb::Database> database;
    AdPtr<recorddb::Session> session;
    RecordImporter importer;
    RecordGroup group;
    AtomicImport import;
    ExpectedSearches expected;
    bool looksAhead;
    std::shared_ptr<const ImportConfiguration> configuration;  // in force
};

AheadWorker::AheadWorker(const LoadOptions& options, const LoadPolicy& policy)
    : m_options(options), m_policy(policy) {}

AheadWorker::~AheadWorker() = default;

void AheadWorker::Work(Package& package, const Standing& standing) noexcept {
    if (m_failedConnections == kMostFailedConnections) {
        return;
    }
    try {
        if (!m_tools) {
            ++m_failedConnections;
            m_tools = std::make_unique<Tools>(m_options, m_policy);
            m_failedConnections = 0;
        }
        Do(package, standing);
        m_tools->group.Undo();
        return;
    } catch (const recorddb::sql::Error& error) {
        // Most often something has to be written first.
        if (m_tools && error.Kind() != recorddb::sql::ErrorKind::ConnectionLost) {
            m_tools->group.Undo();
            return;
        }
    } catch (...) {
        // Too little memory, say: what is left of it serves those whose turn it is.
    }
    m_tools.reset();
}

void AheadWorker::Do(Package& package, const Standing& standing) {
    Tools& tools = *m_tools;
    if (tools.configuration != package.configuration) {
        tools.configuration.reset();
        tools.importer.SetGuarded(package.guarded);
        if (!tools.importer.Configure(*package.configuration).empty()) {
            return;
        }
        tools.configuration = package.configuration;
    }
    tools.expected.Clear();
    for (std::size_t i = 0; i < package.records.Count(); ++i) {
        const SourceRecord& record = package.records.At(i);
        if (package.isDue[i] && record.defect != RecordDefect::None) {
            return;
        }
        if (package.isDue[i] && tools.looksAhead) {
            tools.expected.Add(record, *package.configuration);
        }
    }
    auto& transaction = tools.group.Open();
    if (!IsUpToDate(standing)) {
        return;
    }
    transaction.LookAhead(tools.expected.All());
    std::vector<LoadTotals> done(package.records.Count());
    for (std::size_t i = 0; i < package.records.Count(); ++i) {
        if (m_options.beforeWork) {
            m_options.beforeWork();
        }
        if (!package.isDue[i]) {
            continue;
        }
        AtomicImport::Result result =
            tools.import.Import(package.records.At(i).packet, package.configuration->Data());
        if (!result.error.empty() || Interrupted() != 0) {
            return;
        }
        done[i] = result.done;
    }
    package.moment = standing.moment;
    package.done = std::move(done);
    package.work = tools.group.Take();
}

// A connection may be one to a server that lags behind, or has been replaced.
bool AheadWorker::IsUpToDate(const Standing& standing) {
    const auto entry = m_tools->database->GetJournal().Find(standing.key);
    return entry && entry->run >= standing.run &&
           entry->nextOrdinal >= static_cast<std::int64_t>(standing.handled);
}

}  // namespace tool
