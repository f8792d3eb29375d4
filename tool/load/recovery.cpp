#include "tool/load/recovery.h"

#include <fmt/format.h>
#include <poll.h>

#include <algorithm>
#include <string>

#include "tool/load/load_journal.h"
#include "tool/process/interrupt.h"
#include "tool/text/number_text.h"

namespace tool {

namespace {

using recorddb::sql::ErrorKind;
using std::chrono::milliseconds;

constexpr int kMostFailures = 8;
constexpr milliseconds kFirstWait(50);
constexpr milliseconds kLongestWait(2000);

// A client library tells a lost connection in several lines.
std::string FirstLine(const std::string& text) {
    return text.substr(0, text.find('\n'));
}

// The wait before a try after so many failures in a row; none after the first.
milliseconds WaitAfter(int failures) {
    milliseconds wait(0);
    for (int i = 1; i < failures && wait < kLongestWait; ++i) {
        wait = std::max(kFirstWait, wait * 2);
    }
    return std::min(wait, kLongestWait);
}

// A signal ends it early.
void Wait(milliseconds time) {
    if (Interrupted() == 0 && time.count() > 0) {
        poll(nullptr, 0, static_cast<int>(time.count()));
    }
}

}  // namespace

Recovery::Recovery(recorddb::Database& database, const LoadOptions& options,
                   const LoadPolicy& policy, LoadSinks& sinks)
    : m_database(database),
      m_sinks(sinks),
      m_time(options.retryFor),
      m_isPossible(m_time.count() > 0 && policy.KeepsGroups() &&
                   database.GetConnection().CanReconnect()) {}

bool Recovery::MayPass(const recorddb::sql::Error& error, int failures) const {
    return m_isPossible && Interrupted() == 0 && failures < kMostFailures &&
           (error.Kind() == ErrorKind::ConnectionLost || error.Kind() == ErrorKind::Busy) &&
           dynamic_cast<const TakenUpByAnotherLoad*>(&error) == nullptr;
}

void Recovery::GetReady(const recorddb::sql::Error& error, int failures) {
    if (error.Kind() == ErrorKind::ConnectionLost) {
        Connect(FirstLine(error.DriverText()));
    } else {
        Wait(WaitAfter(failures));
    }
}

void Recovery::Connect(const std::string& why) {
    const auto begin = std::chrono::steady_clock::now();
    m_sinks.Warn(
        fmt::format("warning: the connection to the database was lost ({}); trying for "
                    "{} to connect again",
                    why, CountOf(static_cast<std::uint64_t>(m_time.count()), "second")));
    for (int failures = 1;; ++failures) {
        try {
            m_database.Reconnect(Left(begin));
            m_sinks.Warn("connected again");
            return;
        } catch (const recorddb::sql::Error& error) {
            const bool mayPass = error.Kind() == ErrorKind::CannotOpen ||
                                 error.Kind() == ErrorKind::ConnectionLost ||
                                 error.Kind() == ErrorKind::Busy;
            if (!mayPass) {
                throw;
            }
            if (Interrupted() != 0 || Left(begin).count() <= 0) {
                throw recorddb::sql::Error(
                    ErrorKind::ConnectionLost,
                    fmt::format("the connection was lost ({}), and there is no other one: {}", why,
                                error.DriverText()),
                    "");
            }
        }
        Wait(std::min(WaitAfter(failures + 1), Left(begin)));
    }
}

milliseconds Recovery::Left(std::chrono::steady_clock::time_point begin) const {
    return std::chrono::ceil<milliseconds>(begin + m_time - std::chrono::steady_clock::now());
}

}  // namespace tool
