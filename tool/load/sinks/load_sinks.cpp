#include "tool/load/sinks/load_sinks.h"

#include <utility>

#include "tool/io/finish_all.h"

namespace tool {

LoadSinks::LoadSinks(std::vector<LoadSink*> sinks)
    : m_sinks(std::move(sinks)), m_start(std::chrono::steady_clock::now()) {}

void LoadSinks::Say(std::string_view line) {
    for (LoadSink* const sink : m_sinks) {
        sink->Says(line);
    }
}

void LoadSinks::Warn(std::string_view line) {
    for (LoadSink* const sink : m_sinks) {
        sink->Warns(line);
    }
}

void LoadSinks::Find(const MapFinding& finding) {
    for (LoadSink* const sink : m_sinks) {
        sink->Finds(finding);
    }
}

void LoadSinks::Configure(const ImportConfiguration& configuration) {
    m_configuration = configuration;
    for (LoadSink* const sink : m_sinks) {
        sink->Configures(configuration, m_totals);
    }
}

// Tells the sinks for as long as `work` takes that another configuration is in force; null: the
// same.
template <typename Work>
void LoadSinks::Under(const ImportConfiguration* configuration, Work work) {
    if (configuration != nullptr) {
        for (LoadSink* const sink : m_sinks) {
            sink->Configures(*configuration, m_totals);
        }
    }
    work();
    if (configuration != nullptr) {
        for (LoadSink* const sink : m_sinks) {
            sink->Configures(m_configuration, m_totals);
        }
    }
}

void LoadSinks::AddImported(const LoadTotals& done, const ImportConfiguration* configuration) {
    Under(configuration, [&] { Add(m_totals, done); });
}

void LoadSinks::PassOver(std::uint64_t records) {
    m_totals.skipped += records;
    for (LoadSink* const sink : m_sinks) {
        sink->PassesOver(records);
    }
}

void LoadSinks::Reject(const RejectedRecord& record) {
    if (!m_held.Take(record)) {
        Tell(record);
    }
}

void LoadSinks::Tell(const RejectedRecord& record) {
    m_told.insert(record.place);
    Under(record.configuration, [&] {
        ++m_totals.rejected;
        for (LoadSink* const sink : m_sinks) {
            sink->Rejects(record);
        }
    });
}

void LoadSinks::Secure() {
    for (LoadSink* const sink : m_sinks) {
        sink->Secures();
    }
}

void LoadSinks::Lose(const Loss& loss) {
    if (!m_held.Take(loss)) {
        Tell(loss);
    }
}

void LoadSinks::TellHeld(NewsTime last) {
    m_held.Release([this](const auto& news) { Tell(news); }, last);
}

void LoadSinks::Tell(const Loss& loss) {
    ++m_losses;
    for (LoadSink* const sink : m_sinks) {
        sink->Loses(loss);
    }
}

void LoadSinks::LeaveRejected(std::uint64_t records) {
    m_leftRejected += records;
    for (LoadSink* const sink : m_sinks) {
        sink->LeavesRejected(records);
    }
}

void LoadSinks::EndEarly(const std::string& why) {
    for (LoadSink* const sink : m_sinks) {
        sink->EndsEarly(why);
    }
}

void LoadSinks::Advance(std::uint64_t bytes) {
    m_totals.seconds = Elapsed();
    for (LoadSink* const sink : m_sinks) {
        sink->Advances(m_totals, bytes);
    }
}

void LoadSinks::Finish() {
    m_totals.seconds = Elapsed();
    for (LoadSink* const sink : m_sinks) {
        sink->Ends();
    }
    FinishAll(m_sinks, m_totals);
}

double LoadSinks::Elapsed() const {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - m_start).count();
}

}  // namespace tool
