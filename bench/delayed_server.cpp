#include "delayed_server.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <cstring>
#include <stdexcept>
#include <string>

namespace bench {

namespace {

constexpr const char* kSocketName = ".s.PGSQL.5432";

// A socket that `use` has bound or connected; -1 when that fails.
template <typename Use>
int SocketAt(const std::filesystem::path& path, Use use) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.native().size() >= sizeof(address.sun_path)) {
        throw std::runtime_error("the path of the socket is too long: " + path.string());
    }
    std::memcpy(address.sun_path, path.c_str(), path.native().size() + 1);
    const int made = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (use(made, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0) {
        close(made);
        return -1;
    }
    return made;
}

// Hands on what has come; false at the end.
bool Move(int from, int to) {
    std::array<char, 65536> buffer{};
    const ssize_t count = read(from, buffer.data(), buffer.size());
    for (ssize_t done = 0; done < count;) {
        const ssize_t sent =
            send(to, buffer.data() + done, static_cast<std::size_t>(count - done), MSG_NOSIGNAL);
        if (sent <= 0) {
            return false;
        }
        done += sent;
    }
    return count > 0;
}

}  // namespace

DelayedServer::DelayedServer(const std::filesystem::path& serverFolder,
                             const std::filesystem::path& folder, std::chrono::microseconds delay)
    : m_serverSocket(serverFolder / kSocketName),
      m_socket(folder / kSocketName),
      m_delay(delay),
      m_listener(SocketAt(m_socket, bind)) {
    if (m_listener < 0 || listen(m_listener, 64) != 0) {
        throw std::runtime_error("cannot listen at " + m_socket.string());
    }
    m_thread = std::jthread([this] { Serve(); });
}

DelayedServer::~DelayedServer() {
    shutdown(m_listener, SHUT_RDWR);
    m_thread.join();
    m_connections.clear();
    close(m_listener);
    unlink(m_socket.c_str());
}

void DelayedServer::Serve() {
    for (int client = 0; (client = accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC)) >= 0;) {
        m_connections.emplace_back(
            [this, client] { HandOn(client, SocketAt(m_serverSocket, connect)); });
    }
}

void DelayedServer::HandOn(int client, int server) const {
    std::array<pollfd, 2> sides = {{{client, POLLIN, 0}, {server, POLLIN, 0}}};
    bool hasServerSpoken = true;
    bool goesOn = server >= 0;
    while (goesOn && poll(sides.data(), sides.size(), -1) > 0) {
        if (sides[1].revents != 0) {
            hasServerSpoken = true;
            goesOn = Move(server, client);
        } else {
            // The first that is said after an answer begins a round trip.
            if (hasServerSpoken) {
                std::this_thread::sleep_for(m_delay);
            }
            hasServerSpoken = false;
            goesOn = Move(client, server);
        }
    }
    close(client);
    close(server);
}

}  // namespace bench
