#ifndef TESTS_SUPPORT_SERVER_PROXY_H
#define TESTS_SUPPORT_SERVER_PROXY_H

#include <sys/types.h>

#include <cstddef>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

// Stands between programs and a PostgreSQL server on a socket of this machine, and hands on what
// each side says, message by message of their protocol. It serves any number of connections.
class ServerProxy {
  public:
    enum class Side { Client, Server };

    struct Message {
        std::size_t connection;  // counted from 0, in the order in which they were made
        Side from;
        char type;              // as the protocol has it; 0 for the client's first one
        std::string_view text;  // without type and length; lives during the call
    };

    enum class Fate {
        Pass,
        Cut,     // neither it nor anything later passes: both sides find their connection closed
        Last,    // it passes, and nothing later does
        Orphan,  // the same for the client; the server keeps a connection on which nobody speaks
        Crash,   // as Cut, and the client finds much to read before the end
        Hold     // it has to wait: it is asked about again when something has passed elsewhere
    };

    // Asked about each message, in the proxy's own thread.
    using Watch = std::function<Fate(const Message&)>;

    // Listens on a socket in `folder`, in the way a server does that has its socket in
    // `serverFolder`. Throws std::runtime_error.
    ServerProxy(const std::filesystem::path& serverFolder, const std::filesystem::path& folder,
                Watch watch);
    ServerProxy(const ServerProxy&) = delete;
    ServerProxy& operator=(const ServerProxy&) = delete;
    // Closes all connections, and what it has orphaned; another one can listen in the folder then.
    ~ServerProxy();

  private:
    class Stream;
    struct Link;

    void Serve();
    void Accept();
    bool HandOn(Link& link, Side side, bool hasMore);
    Fate Move(Link& link, Side side);
    void End(Link& link, Fate fate);

    std::filesystem::path m_serverSocket;
    std::filesystem::path m_socket;
    Watch m_watch;
    int m_listener;
    std::vector<int> m_orphans;  // the server's side of each
    std::vector<std::unique_ptr<Link>> m_links;
    std::size_t m_count = 0;  // of connections so far
    std::thread m_thread;
};

// The server's process that serves a connection, as the server says at its beginning; 0 for another
// message.
pid_t BackendIn(const ServerProxy::Message& message);

// True for the client's request that the server commits, and for the server's answer that it has.
bool IsCommit(const ServerProxy::Message& message);

// The URL of a server in which `folder` stands in the place of the folder of its socket, and that
// folder as it stands there. Throws std::runtime_error when it names none.
std::string UrlWithSocketIn(const std::string& url, const std::filesystem::path& folder);
std::filesystem::path SocketFolderOf(const std::string& url);

#endif
