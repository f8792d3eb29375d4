#ifndef BENCH_SERVER_PROXY_H
#define BENCH_SERVER_PROXY_H

#include <atomic>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <thread>

namespace bench {

// Stands between a program and a PostgreSQL server on a socket of this machine: counts the round
// trips, and makes each of them take longer, as a network would.
class ServerProxy {
  public:
    // Listens on a socket in `folder`, in the way a server does that has its socket in
    // `serverFolder`. Serves one connection at a time. Throws std::runtime_error.
    ServerProxy(const std::filesystem::path& serverFolder, const std::filesystem::path& folder,
                std::chrono::microseconds delay);
    ServerProxy(const ServerProxy&) = delete;
    ServerProxy& operator=(const ServerProxy&) = delete;
    ~ServerProxy();

    // How often something was asked since the last call, and the answer waited for.
    std::uint64_t TakeRoundTrips() { return m_roundTrips.exchange(0); }

  private:
    void Serve();
    void HandOn(int client, int server);

    std::filesystem::path m_serverSocket;
    std::chrono::microseconds m_delay;
    int m_listener;
    std::atomic<std::uint64_t> m_roundTrips = 0;
    std::thread m_thread;
};

}  // namespace bench

#endif
