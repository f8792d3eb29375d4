#ifndef TOOL_VERIFY_COMPARISON_COMPARISON_CREW_H
#define TOOL_VERIFY_COMPARISON_COMPARISON_CREW_H

#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "recorddb/database.h"
#include "recorddb/sql.h"
#include "tool/process/work_queue.h"
#include "tool/verify/comparison/kept_package.h"
#include "tool/verify/sinks/verify_options.h"

namespace tool {

// Workers, a thread and a connection each, that compare packages of records. They see the database
// at the same moment as the connection of the main thread does. All operations are for one thread,
// which is none of theirs.
class ComparisonCrew {
  public:
    // Told why there are fewer workers than were asked for: of those that come to an end early, for
    // the first one only.
    using Warn = std::function<void(const std::string& why)>;

    // Connects as often as the options ask for workers, if for more than one. The options outlive
    // the object.
    ComparisonCrew(const VerifyOptions& options, Warn warn);
    ComparisonCrew(const ComparisonCrew&) = delete;
    ComparisonCrew& operator=(const ComparisonCrew&) = delete;
    ~ComparisonCrew();

    // Begins a transaction on `database` and on the workers' connections, which all see one moment;
    // where that cannot be, there are no workers any more. Throws sql::Error.
    recorddb::sql::Transaction Begin(recorddb::Database& database);

    // Has the workers begin; what is given outlives them. `areSound`: see StoredContents.
    void Start(const ConfigurationOf& configuration, const DifferenceReporter::PlaceOf& placeOf,
               bool areSound);

    // Waits for the packages that are in work, the last ones.
    void Stop();

    // How many packages to read ahead, so that nobody has to wait for the reader.
    std::size_t Packages() const { return 1 + 2 * m_threads.size(); }

    // Gives a package to the workers. It is left alone until TakeBack, after which it may have been
    // compared.
    void Give(std::shared_ptr<KeptPackage> package);
    void TakeBack(KeptPackage& package);

  private:
    struct Worker;

    void Run(Worker& worker, const ConfigurationOf& configuration);
    void NoteEnd(const std::string& why);
    void WarnOfEnd();

    const VerifyOptions& m_options;
    Warn m_warn;
    std::vector<std::unique_ptr<Worker>> m_workers;
    WorkQueue<KeptPackage> m_queue;
    std::mutex m_mutex;
    std::string m_end;  // under the mutex: why a worker has come to its end early
    bool m_hasWarned = false;
    std::vector<std::jthread> m_threads;
};

}  // namespace tool

#endif
