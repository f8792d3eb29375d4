#include "tool/verify/comparison/comparison_crew.h"

#include <exception>
#include <optional>
#include <system_error>
#include <utility>

#include "recorddb/errors.h"
#include "tool/process/held_signals.h"
#include "tool/verify/comparison/record_comparer.h"
#include "tool/verify/records/lookup_tools.h"

namespace tool {

// What belongs to one connection.
struct ComparisonCrew::Worker {
    explicit Worker(const VerifyOptions& options) : database(OpenForVerify(options)) {}

    std::unique_ptr<recorddb::Database> database;
    std::optional<recorddb::sql::Transaction> moment;
    std::optional<LookupTools> tools;
    std::optional<RecordComparer> comparer;
};

ComparisonCrew::ComparisonCrew(const VerifyOptions& options, Warn warn)
    : m_options(options), m_warn(std::move(warn)) {
    try {
        while (options.workers > 1 && m_workers.size() < options.workers) {
            m_workers.push_back(std::make_unique<Worker>(options));
        }
    } catch (const recorddb::sql::Error& error) {
        m_warn(error.DriverText());
    }
}

ComparisonCrew::~ComparisonCrew() {
    Stop();
}

void ComparisonCrew::Stop() {
    m_queue.Stop();
    m_threads.clear();
}

recorddb::sql::Transaction ComparisonCrew::Begin(recorddb::Database& database) {
    std::vector<recorddb::sql::Connection*> connections = {&database.GetConnection()};
    for (const auto& worker : m_workers) {
        connections.push_back(&worker->database->GetConnection());
    }
    if (!m_workers.empty()) {
        try {
            auto moments = recorddb::sql::BeginTogether(connections);
            for (std::size_t i = 0; i < m_workers.size(); ++i) {
                m_workers[i]->moment.emplace(std::move(moments[i + 1]));
            }
            return std::move(moments.front());
        } catch (const recorddb::sql::Error& error) {
            m_warn(error.DriverText());
            m_workers.clear();
        }
    }
    return database.Begin();
}

void ComparisonCrew::Start(const ConfigurationOf& configuration,
                           const DifferenceReporter::PlaceOf& placeOf, bool areSound) {
    const HeldSignals held;
    for (const auto& worker : m_workers) {
        worker->tools.emplace(*worker->database, m_options);
        worker->comparer.emplace(*worker->database, worker->tools->reader, worker->tools->lookup,
                                 m_options, placeOf);
        if (areSound) {
            worker->comparer->ContentsAreSound();
        }
        m_queue.Enter();
        try {
            m_threads.emplace_back(
                [this, &work = *worker, &configuration] { Run(work, configuration); });
        } catch (const std::system_error&) {
            // The others, or else the main thread, do what it would have done.
            m_queue.Leave();
            return;
        }
    }
}

void ComparisonCrew::Give(std::shared_ptr<KeptPackage> package) {
    m_queue.Give(std::move(package));
}

void ComparisonCrew::TakeBack(KeptPackage& package) {
    using Unbegun = WorkQueue<KeptPackage>::Unbegun;
    m_queue.TakeBack(package, m_options.waitsForWorkers ? Unbegun::Left : Unbegun::Taken);
    WarnOfEnd();
}

void ComparisonCrew::NoteEnd(const std::string& why) {
    const std::lock_guard lock(m_mutex);
    m_end = why;
}

void ComparisonCrew::WarnOfEnd() {
    const std::lock_guard lock(m_mutex);
    if (!m_end.empty() && !std::exchange(m_hasWarned, true)) {
        m_warn(m_end);
    }
}

// What goes wrong of a package shows when the main thread compares it.
void ComparisonCrew::Run(Worker& worker, const ConfigurationOf& configuration) {
    bool goesOn = true;
    while (goesOn) {
        const std::shared_ptr<KeptPackage> package = m_queue.Take();
        if (!package) {
            break;
        }
        try {
            Compare(*package, *worker.comparer, configuration, {});
        } catch (const recorddb::sql::Error& error) {
            NoteEnd(error.DriverText());
            goesOn = false;
        } catch (const std::exception& error) {
            NoteEnd(error.what());
            goesOn = false;
        } catch (...) {
            goesOn = false;
        }
        m_queue.Finish(*package);
    }
    m_queue.Leave();
}

}  // namespace tool
