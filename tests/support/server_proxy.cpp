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

  private:
    int m_socket;
    bool m_isFirst;
    bool m_hadType = true;
    std::string m_bytes;
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
    for (const int orphan : m_orphans) {
        close(orphan);
    }
}

void ServerProxy::Serve() {
    for (int client = 0; (client = accept(m_listener, nullptr, nullptr)) >= 0;) {
        const int server = SocketAt(m_serverSocket, connect);
        if (server >= 0) {
            HandOn(client, server);
        }
        close(client);
    }
}

void ServerProxy::HandOn(int client, int server) {
    std::array<pollfd, 2> sides = {{{client, POLLIN, 0}, {server, POLLIN, 0}}};
    Stream fromClient(client, true);
    Stream fromServer(server, false);
    Fate fate = Fate::Pass;
    while (fate == Fate::Pass && poll(sides.data(), sides.size(), -1) > 0) {
        fate = sides[1].revents != 0 ? Move(fromServer, client, Side::Server)
                                     : Move(fromClient, server, Side::Client);
    }
    if (fate == Fate::Orphan) {
        m_orphans.push_back(server);
    } else {
        close(server);
    }
}

// Moves the messages that have come; the fate of the first one that does not pass.
ServerProxy::Fate ServerProxy::Move(Stream& from, int to, Side side) {
    if (!from.Read()) {
        return Fate::Cut;
    }
    Fate fate = Fate::Pass;
    std::string passed;
    for (std::string message; fate == Fate::Pass && from.Next(message);) {
        const std::size_t typeBytes = from.HadType() ? 1 : 0;
        fate = m_watch({side, from.HadType() ? message.front() : '\0',
                        std::string_view(message).substr(typeBytes + kLengthBytes)});
        passed += fate == Fate::Pass || fate == Fate::Last ? message : std::string();
    }
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
    return message.type == type && message.text.starts_with("COMMIT");
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
