#include "server_proxy.h"

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

sockaddr_un AddressOf(const std::filesystem::path& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.native().size() >= sizeof(address.sun_path)) {
        throw std::runtime_error("the path of the socket is too long: " + path.string());
    }
    std::memcpy(address.sun_path, path.c_str(), path.native().size() + 1);
    return address;
}

// A socket, and what connects or binds it.
template <typename Use>
int SocketAt(const std::filesystem::path& path, Use use) {
    const sockaddr_un address = AddressOf(path);
    const int made = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (made < 0 || use(made, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0) {
        throw std::runtime_error("cannot use the socket " + path.string());
    }
    return made;
}

// Moves what can be read now; false at the end.
bool Move(int from, int to) {
    std::array<char, 65536> buffer{};
    const ssize_t count = read(from, buffer.data(), buffer.size());
    for (ssize_t done = 0; done < count;) {
        const ssize_t written =
            send(to, buffer.data() + done, static_cast<std::size_t>(count - done), MSG_NOSIGNAL);
        if (written <= 0) {
            return false;
        }
        done += written;
    }
    return count > 0;
}

}  // namespace

ServerProxy::ServerProxy(const std::filesystem::path& serverFolder,
                         const std::filesystem::path& folder, std::chrono::microseconds delay)
    : m_serverSocket(serverFolder / kSocketName),
      m_delay(delay),
      m_listener(SocketAt(folder / kSocketName, bind)) {
    listen(m_listener, 1);
    m_thread = std::thread([this] { Serve(); });
}

ServerProxy::~ServerProxy() {
    shutdown(m_listener, SHUT_RDWR);
    m_thread.join();
    close(m_listener);
}

void ServerProxy::Serve() {
    for (int client = 0; (client = accept(m_listener, nullptr, nullptr)) >= 0;) {
        const int server = SocketAt(m_serverSocket, connect);
        HandOn(client, server);
        close(server);
        close(client);
    }
}

void ServerProxy::HandOn(int client, int server) {
    std::array<pollfd, 2> sides = {{{client, POLLIN, 0}, {server, POLLIN, 0}}};
    bool serverSpokeLast = true;
    while (poll(sides.data(), sides.size(), -1) > 0) {
        if (sides[1].revents != 0) {
            serverSpokeLast = true;
            if (!Move(server, client)) {
                return;
            }
        } else {
            if (serverSpokeLast) {
                serverSpokeLast = false;
                ++m_roundTrips;
                std::this_thread::sleep_for(m_delay);
            }
            if (!Move(client, server)) {
                return;
            }
        }
    }
}

}  // namespace bench
