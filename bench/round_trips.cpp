#include "round_trips.h"

#include <atomic>
#include <chrono>
#include <thread>

#include "server_proxy.h"

namespace bench {

namespace {

constexpr std::chrono::milliseconds kDelay(1);

// Counts round trips in the proxy's thread, and makes each of them take longer.
class Counter {
  public:
    ServerProxy::Fate Note(ServerProxy::Side from) {
        if (from == ServerProxy::Side::Server) {
            m_serverSpokeLast = true;
        } else if (m_serverSpokeLast) {
            m_serverSpokeLast = false;
            ++m_count;
            std::this_thread::sleep_for(m_delay.load());
        }
        return ServerProxy::Fate::Pass;
    }

    // Those since the last call.
    std::uint64_t Take() { return m_count.exchange(0); }
    void Delay(std::chrono::milliseconds delay) { m_delay = delay; }

  private:
    bool m_serverSpokeLast = true;
    std::atomic<std::uint64_t> m_count = 0;
    std::atomic<std::chrono::milliseconds> m_delay = std::chrono::milliseconds(0);
};

}  // namespace

RoundTripsOfLoads CountRoundTrips(const std::string& tool, const std::string& url,
                                  const std::filesystem::path& folder,
                                  const TrackerPackets& packets) {
    Counter counter;
    const ServerProxy proxy(SocketFolderOf(url), folder, [&](const ServerProxy::Message& message) {
        return counter.Note(message.from);
    });
    ServerDatabases databases(tool, UrlWithSocketIn(url, folder), folder, 0);
    RoundTripsOfLoads trips;
    const auto run = [&](RoundTrips& of, double sign, const std::function<Run()>& load) {
        counter.Take();
        of.delayedSeconds += sign * load().seconds;
        of.count = counter.Take();
    };
    for (const bool delayed : {false, true}) {
        counter.Delay(delayed ? kDelay : std::chrono::milliseconds(0));
        const double sign = delayed ? 1 : -1;
        std::string last;
        RunTrackerLoads(
            databases, packets,
            [&](Kind kind, const std::string& database, const std::function<Run()>& load) {
                last = database;
                run(Of(trips.loads, kind), sign, load);
            });
        run(trips.attachments, sign,
            [&] { return RunOn(databases, "load", last, packets.attachments); });
    }
    return trips;
}

}  // namespace bench
