#include "server_proxy.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <stdexcept>
#include <utility>

namespace {

constexpr const char* kSocketName = ".s.PGSQL.5432";
constexpr std::size_t kLengthBytes = 4;

sockaddr_un AddressOf(const std::filesystem::path& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.native().size() >= sizeof(address.sun_path)) {
        throw std::runtime_error("the path of the socket is too long: " + path.string());
    }
    std::memcpy(address.sun_path, path.c_str(), path.native().size() + 1);
    return address;
}

// A socket, and what connects or binds it; -1 when that fails.
template <typename Use>
int SocketAt(const std::filesystem::path& path, Use use) {
    const sockaddr_un address = AddressOf(path);
    const int made = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (made < 0 || use(made, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0) {
        close(made);
        return -1;
    }
    return made;
}

int Listen(const std::filesystem::path& path) {
    const int listener = SocketAt(path, bind);
    if (listener < 0 || listen(listener, 8) != 0) {
        throw std::runtime_error("cannot use the socket " + path.string());
    }
    return listener;
}

// A number as the protocol has it.
std::size_t NumberAt(std::string_view bytes, std::size_t at) {
    std::size_t number = 0;
    for (std::size_t i = 0; i < kLengthBytes; ++i) {
        number = number << 8U | static_cast<unsigned char>(bytes[at + i]);
    }
    return number;
}

bool Send(int to, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written = send(to, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (written <= 0) {
            return false;
        }
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

// What a server says to the clients of its other processes when one has crashed; so often that the
// client cannot read it at once.
std::string CrashNotices() {
    using namespace std::string_literals;
    const std::string fields =
        "SWARNING\0VWARNING\0C57P02\0"
        "Mterminating connection because of crash of another server process\0\0"s;
    std::string notice = "N";
    for (std::size_t place = kLengthBytes; place-- > 0;) {
        notice += static_cast<char>((fields.size() + kLengthBytes) >> (8 * place) & 0xFFU);
    }
    notice += fields;
    constexpr int times = 20'000;
    std::string notices;
    for (int i = 0; i < times; ++i) {
        notices += notice;
    }
    return notices;
}

// Where the folder of the server's socket stands in a URL.
std::pair<std::size_t, std::size_t> HostIn(const std::string& url) {
    constexpr std::string_view name = "host=";
    const std::size_t begin = url.find(name);
    if (begin == std::string::npos) {
        throw std::runtime_error("the server's URL has no parameter host");
    }
    const std::size_t from = begin + name.size();
    return {from, std::min(url.find('&', from), url.size()) - from};
}

}  // namespace

// What comes from one side, cut into messages.
class ServerProxy::Stream {
  public:
    // `hasFirst`: the first message has no type.
    Stream(int socket, bool hasFirst) : m_socket(socket), m_isFirst(hasFirst) {}

    // Reads what is there; false at the end.
    bool Read() {
        std::array<char, 65536> buffer{};
        const ssize_t count = read(m_socket, buffer.data(), buffer.size());
        m_bytes.append(buffer.data(), count > 0 ? static_cast<std::size_t>(count) : 0);
        return count > 0;
    }

    // Takes the next message that is there as a whole, with type and length in front.
    bool Next(std::string& message) {
        const std::size_t lengthAt = m_isFirst ? 0 : 1;
        if (m_bytes.size() < lengthAt + kLengthBytes) {
            return false;
        }
        const std::size_t length = lengthAt + NumberAt(m_bytes, lengthAt);
        if (m_bytes.size() < length) {
            return false;
        }
        message = m_bytes.substr(0, length);
        m_bytes.erase(0, length);
        m_hadType = !std::exchange(m_isFirst, false);
        return true;
    }

    bool HadType() const { return m_hadType; }

    // The message that was taken last is the next one again.
    void PutBack(const std::string& message) {
        m_bytes.insert(0, message);
        m_isFirst = !m_hadType;
    }

  private:
    int m_socket;
    bool m_isFirst;
    bool m_hadType = true;
    std::string m_bytes;
};

// A connection through the proxy.
struct ServerProxy::Link {
    Link(std::size_t order, int clientSocket, int serverSocket)
        : number(order),
          client(clientSocket),
          server(serverSocket),
          fromClient(clientSocket, true),
          fromServer(serverSocket, false) {}

    bool IsOpen() const { return client >= 0; }
    int SocketOf(Side side) const { return side == Side::Client ? client : server; }

    std::size_t number;
    int client;
    int server;
    Stream fromClient;
    Stream fromServer;
    bool isClientHeld = false;
    bool isServerHeld = false;
};

ServerProxy::ServerProxy(const std::filesystem::path& serverFolder,
                         const std::filesystem::path& folder, Watch watch)
    : m_serverSocket(serverFolder / kSocketName),
      m_socket(folder / kSocketName),
      m_watch(std::move(watch)),
      m_listener(Listen(m_socket)) {
    m_thread = std::thread([this] { Serve(); });
}

ServerProxy::~ServerProxy() {
    shutdown(m_listener, SHUT_RDWR);
    m_thread.join();
    close(m_listener);
    unlink(m_socket.c_str());
    for (const auto& link : m_links) {
        End(*link, Fate::Cut);
    }
    for (const int orphan : m_orphans) {
        close(orphan);
    }
}

void ServerProxy::Serve() {
    constexpr short over = POLLERR | POLLHUP | POLLNVAL;
    for (;;) {
        std::vector<pollfd> sockets = {{m_listener, POLLIN, 0}};
        for (const auto& link : m_links) {
            sockets.push_back({link->isClientHeld ? -1 : link->client, POLLIN, 0});
            sockets.push_back({link->isServerHeld ? -1 : link->server, POLLIN, 0});
        }
        if (poll(sockets.data(), sockets.size(), -1) < 0 || (sockets[0].revents & over) != 0) {
            return;
        }
        bool hasPassed = false;
        for (std::size_t i = 0; i < m_links.size(); ++i) {
            Link& link = *m_links[i];
            const auto move = [&](std::size_t place, Side side) {
                if (link.IsOpen() && sockets[place].revents != 0) {
                    hasPassed = HandOn(link, side, true) || hasPassed;
                }
            };
            move(2 * i + 2, Side::Server);
            move(2 * i + 1, Side::Client);
        }
        for (const auto& link : m_links) {
            if (hasPassed && link->IsOpen() && link->isClientHeld) {
                HandOn(*link, Side::Client, false);
            }
            if (hasPassed && link->IsOpen() && link->isServerHeld) {
                HandOn(*link, Side::Server, false);
            }
        }
        std::erase_if(m_links, [](const auto& link) { return !link->IsOpen(); });
        if (sockets[0].revents != 0) {
            Accept();
        }
    }
}

void ServerProxy::Accept() {
    const int client = accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC);
    if (client < 0) {
        return;
    }
    const int server = SocketAt(m_serverSocket, connect);
    if (server < 0) {
        close(client);
        return;
    }
    m_links.push_back(std::make_unique<Link>(m_count++, client, server));
}

// Hands on what one side says, when it `hasMore` also what has just come. False when nothing of it
// passes.
bool ServerProxy::HandOn(Link& link, Side side, bool hasMore) {
    Stream& from = side == Side::Client ? link.fromClient : link.fromServer;
    const Fate fate = hasMore && !from.Read() ? Fate::Cut : Move(link, side);
    (side == Side::Client ? link.isClientHeld : link.isServerHeld) = fate == Fate::Hold;
    if (fate != Fate::Pass && fate != Fate::Hold) {
        End(link, fate);
    }
    return fate != Fate::Hold;
}

void ServerProxy::End(Link& link, Fate fate) {
    if (!link.IsOpen()) {
        return;
    }
    if (fate == Fate::Orphan) {
        m_orphans.push_back(link.server);
    } else {
        close(link.server);
    }
    if (fate == Fate::Crash) {
        // In this order, so that the client has something to read after it has failed to send.
        shutdown(link.client, SHUT_RD);
        Send(link.client, CrashNotices());
    }
    close(link.client);
    link.client = -1;
}

// Moves the messages that have come; the fate of the first one that does not pass.
ServerProxy::Fate ServerProxy::Move(Link& link, Side side) {
    Stream& from = side == Side::Client ? link.fromClient : link.fromServer;
    Fate fate = Fate::Pass;
    std::string passed;
    for (std::string message; fate == Fate::Pass && from.Next(message);) {
        const std::size_t typeBytes = from.HadType() ? 1 : 0;
        fate = m_watch({link.number, side, from.HadType() ? message.front() : '\0',
                        std::string_view(message).substr(typeBytes + kLengthBytes)});
        if (fate == Fate::Hold) {
            from.PutBack(message);
        }
        passed += fate == Fate::Pass || fate == Fate::Last ? message : std::string();
    }
    const int to = link.SocketOf(side == Side::Client ? Side::Server : Side::Client);
    return Send(to, passed) ? fate : Fate::Cut;
}

pid_t BackendIn(const ServerProxy::Message& message) {
    if (message.from != ServerProxy::Side::Server || message.type != 'K') {
        return 0;
    }
    return static_cast<pid_t>(NumberAt(message.text, 0));
}

bool IsCommit(const ServerProxy::Message& message) {
    const char type = message.from == ServerProxy::Side::Client ? 'Q' : 'C';
    // The end of savepoints may go before it; a zero byte ends the text.
    return message.type == type &&
           message.text.substr(0, message.text.find('\0')).ends_with("COMMIT");
}

std::string UrlWithSocketIn(const std::string& url, const std::filesystem::path& folder) {
    const auto [from, length] = HostIn(url);
    std::string changed = url;
    return changed.replace(from, length, folder.string());
}

std::filesystem::path SocketFolderOf(const std::string& url) {
    const auto [from, length] = HostIn(url);
    return url.substr(from, length);
}
