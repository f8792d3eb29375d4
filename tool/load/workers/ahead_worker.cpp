#include "tool/load/workers/ahead_worker.h"

#include <exception>
#include <utility>

#include "recorddb/database.h"
#include "recorddb/errors.h"
#include "tool/load/records/atomic_import.h"
#include "tool/load/records/existing_values.h"
#include "tool/load/records/expected_searches.h"
#include "tool/load/records/missing_records.h"
#include "tool/load/records/record_group.h"
#include "tool/load/records/record_importer.h"
#include "tool/losses/record_examiner.h"
#include "tool/process/interrupt.h"

namespace tool {

// They belong to one connection.
struct AheadWorker::Tools {
    Tools(const LoadOptions& options, const LoadPolicy& policy)
        : database(recorddb::Database::Open(options.database, recorddb::Database::Mode::ReadWrite)),
          session(database->OpenSession(SessionFor(options, policy))),
          importer(session),
          group(session, policy, recorddb::Writing::Ahead, options.groupRecords),
          import(session, importer, group),
          expected(database->GetSchema()),
          examiner(database->GetSchema(), ExistingIn(*database)),
          examines(policy.FindsLosses(options)),
          looksAhead(options.looksAhead || database->GetConnection().ReadsManyForLess()) {}

    std::unique_ptr<recorddb::Database> database;
    AdPtr<recorddb::Session> session;
    RecordImporter importer;
    RecordGroup group;
    AtomicImport import;
    ExpectedSearches expected;
    RecordExaminer examiner;
    bool examines;
    bool looksAhead;
    std::shared_ptr<const ImportConfiguration> configuration;  // in force
    std::shared_ptr<const WatchedKeys> watched;
};

AheadWorker::AheadWorker(const LoadOptions& options, const LoadPolicy& policy)
    : m_options(options), m_policy(policy) {}

AheadWorker::~AheadWorker() = default;

std::string AheadWorker::Connect() {
    try {
        m_tools = std::make_unique<Tools>(m_options, m_policy);
        return "";
    } catch (const recorddb::sql::Error& error) {
        // A client library may add lines.
        return error.DriverText().substr(0, error.DriverText().find('\n'));
    } catch (const std::exception& error) {
        return error.what();
    }
}

void AheadWorker::Work(Package& package, const Standing& standing) noexcept {
    try {
        Do(package, standing);
        m_tools->group.Undo();
        return;
    } catch (const recorddb::sql::Error& error) {
        // Most often the record needs a write at once, which only the main thread may do. The
        // connection is still good.
        if (m_tools && error.Kind() != recorddb::sql::ErrorKind::ConnectionLost) {
            m_tools->group.Undo();
            return;
        }
    } catch (...) {
        // For instance too little memory. Giving up the connection and its caches leaves more of it
        // for the main thread.
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
        tools.examiner.Configure(*package.configuration);
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
    Watch(standing.watched);
    transaction.LookAhead(tools.expected.All());
    std::vector<LoadTotals> done(package.records.Count());
    std::vector<std::vector<Loss>> losses;
    for (std::size_t i = 0; i < package.records.Count(); ++i) {
        if (m_options.beforeWork) {
            m_options.beforeWork();
        }
        losses.emplace_back();
        if (tools.examines) {
            tools.examiner.Examine(package.records.At(i), package.source, [&losses](Loss loss) {
                losses.back().push_back(std::move(loss));
            });
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
    NoteWritten(package);
    package.moment = standing.moment;
    package.done = std::move(done);
    package.losses = std::move(losses);
    package.work = tools.group.Take();
}

// The worker's database has a schema object of its own, with the same content, so types and fields
// are looked up there.
void AheadWorker::Watch(const std::shared_ptr<const WatchedKeys>& watched) {
    Tools& tools = *m_tools;
    tools.session->TakeWritten();
    if (tools.watched == watched) {
        return;
    }
    tools.session->WatchNothing();
    if (watched) {
        for (const WatchedKey& key : *watched) {
            const auto& type = tools.database->GetSchema().Type(key.type->id);
            tools.session->Watch(type,
                                 key.field == nullptr ? nullptr : &type.fields[key.field->index]);
        }
    }
    tools.watched = watched;
}

void AheadWorker::NoteWritten(Package& package) {
    for (const recorddb::WrittenValue& value : m_tools->session->TakeWritten()) {
        package.written.push_back(KeyOfValue(*value.type, value.field, value.text));
    }
    package.watched = m_tools->watched;
}

// A connection may be one to a server that lags behind, or has been replaced.
bool AheadWorker::IsUpToDate(const Standing& standing) {
    const auto entry = m_tools->database->GetJournal().Find(standing.key);
    return standing.run == 0 || (entry && entry->run >= standing.run &&
                                 entry->nextOrdinal >= static_cast<std::int64_t>(standing.handled));
}

}  // namespace tool
