#include "server_loads.h"

#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <thread>
#include <utility>

#include "server_proxy.h"

namespace bench {

namespace {

constexpr std::chrono::milliseconds kDelay(1);

// The loads by one URL, each into a schema that holds what comes before it.
class Loads {
  public:
    Loads(std::string tool, std::string url, const std::filesystem::path& folder,
          const TrackerPackets& packets)
        : m_tool(std::move(tool)), m_url(std::move(url)), m_folder(folder), m_packets(packets) {}

    template <typename Note>
    void Run(Note note) {
        const std::string tracker = NewSchema();
        Load(tracker, m_packets.keywords);
        note(&ServerLoads::create, [&] { return Load(tracker, m_packets.create); });
        note(&ServerLoads::update, [&] { return Load(tracker, m_packets.update); });
        const std::string bare = NewSchema();
        Load(bare, m_packets.keywords);
        Load(bare, m_packets.bare);
        note(&ServerLoads::history, [&] { return Load(bare, m_packets.history); });
    }

  private:
    std::string NewSchema() {
        static int count = 0;
        const std::string database =
            m_url + "&schema=bench_" + std::to_string(getpid()) + "_" + std::to_string(++count);
        RunChild({m_tool, "init", database, m_folder / "schema.yaml"});
        return database;
    }

    ChildRun Load(const std::string& database, const PacketFiles& files) {
        std::vector<std::string> command = {m_tool, "load", "--quiet", database};
        command.insert(command.end(), files.sources.begin(), files.sources.end());
        return RunChild(command);
    }

    std::string m_tool;
    std::string m_url;
    const std::filesystem::path& m_folder;
    const TrackerPackets& m_packets;
};

// Counts how often something is asked and the answer waited for, and makes each of these round
// trips take longer, as a network would.
class RoundTrips {
  public:
    ServerProxy::Fate Note(ServerProxy::Side from) {
        if (from == ServerProxy::Side::Server) {
            m_serverSpokeLast = true;
        } else if (m_serverSpokeLast) {
            m_serverSpokeLast = false;
            ++m_count;
            std::this_thread::sleep_for(kDelay);
        }
        return ServerProxy::Fate::Pass;
    }

    // Those since the last call.
    std::uint64_t Take() { return m_count.exchange(0); }

  private:
    bool m_serverSpokeLast = true;
    std::atomic<std::uint64_t> m_count = 0;
};

}  // namespace

ServerLoads RunServerLoads(const std::string& tool, const std::string& url,
                           const std::filesystem::path& folder, const TrackerPackets& packets,
                           int runs) {
    ServerLoads best;
    for (int run = 0; run < runs; ++run) {
        Loads(tool, url, folder, packets).Run([&](ServerLoad ServerLoads::*kind, auto load) {
            const ChildRun done = load();
            ChildRun& fastest = (best.*kind).run;
            const long peak = std::max(fastest.peakKilobytes, done.peakKilobytes);
            fastest = done.seconds < fastest.seconds ? done : fastest;
            fastest.peakKilobytes = peak;
        });
    }
    RoundTrips roundTrips;
    const ServerProxy proxy(SocketFolderOf(url), folder, [&](const ServerProxy::Message& message) {
        return roundTrips.Note(message.from);
    });
    const std::string delayed = UrlWithSocketIn(url, folder);
    Loads(tool, delayed, folder, packets).Run([&](ServerLoad ServerLoads::*kind, auto load) {
        roundTrips.Take();
        (best.*kind).delayedSeconds = load().seconds;
        (best.*kind).roundTrips = roundTrips.Take();
    });
    return best;
}

}  // namespace bench
