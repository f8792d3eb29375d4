#ifndef BENCH_DELAYED_SERVER_H
#define BENCH_DELAYED_SERVER_H

#include <chrono>
#include <filesystem>
#include <thread>
#include <vector>

namespace bench {

// Stands in front of a server's socket and makes each round trip of each connection take so much
// longer, as a network does: no connection waits for another one.
class DelayedServer {
  public:
    // Listens on a socket in `folder`, in the way a server does that has its socket in
    // `serverFolder`. Throws std::runtime_error.
    DelayedServer(const std::filesystem::path& serverFolder, const std::filesystem::path& folder,
                  std::chrono::microseconds delay);
    DelayedServer(const DelayedServer&) = delete;
    DelayedServer& operator=(const DelayedServer&) = delete;
    // No connection is open any more.
    ~DelayedServer();

  private:
    void Serve();
    void HandOn(int client, int server) const;

    std::filesystem::path m_serverSocket;
    std::filesystem::path m_socket;
    std::chrono::microseconds m_delay;
    int m_listener;
    std::vector<std::jthread> m_connections;
    std::jthread m_thread;
};

}  // namespace bench

#endif
