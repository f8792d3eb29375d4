#include "server_time.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <charconv>
#include <cstring>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>

namespace bench {

namespace {

// What /proc says of a process.
struct ProcessTime {
    pid_t parent = 0;
    long own = 0;      // in ticks of the clock
    long ofEnded = 0;  // of the processes that it started and that have ended
};

ProcessTime TimeOf(const std::string& process) {
    std::ifstream file("/proc/" + process + "/stat");
    std::string line;
    std::getline(file, line);
    // The name in front may have blanks and brackets in it.
    std::istringstream fields(line.substr(std::min(line.rfind(')'), line.size() - 1) + 1));
    ProcessTime time;
    std::string skipped;
    fields >> skipped >> time.parent;
    for (int i = 5; i <= 13; ++i) {
        fields >> skipped;
    }
    long user = 0;
    long system = 0;
    long endedUser = 0;
    long endedSystem = 0;
    fields >> user >> system >> endedUser >> endedSystem;
    time.own = user + system;
    time.ofEnded = endedUser + endedSystem;
    return time;
}

long TicksOfChildren(pid_t server) {
    long ticks = 0;
    for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
        const std::string name = entry.path().filename();
        if (name.find_first_not_of("0123456789") != std::string::npos) {
            continue;
        }
        const ProcessTime time = TimeOf(name);
        ticks += time.parent == server ? time.own + time.ofEnded : 0;
    }
    return ticks;
}

}  // namespace

pid_t ServerBehind(const std::filesystem::path& folder) {
    const std::string path = folder / ".s.PGSQL.5432";
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof(address.sun_path)) {
        throw std::runtime_error("the path of the socket is too long: " + path);
    }
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    const int connection = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    ucred peer{};
    socklen_t length = sizeof(peer);
    const bool known =
        connect(connection, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0 &&
        getsockopt(connection, SOL_SOCKET, SO_PEERCRED, &peer, &length) == 0;
    close(connection);
    if (!known) {
        throw std::runtime_error("no server listens in " + folder.string());
    }
    return peer.pid;
}

double ServerSeconds(pid_t server) {
    const std::string process = std::to_string(server);
    ProcessTime before = TimeOf(process);
    for (;;) {
        const long children = TicksOfChildren(server);
        const ProcessTime after = TimeOf(process);
        // What a child took goes over to its parent when it has ended.
        if (after.ofEnded == before.ofEnded) {
            return static_cast<double>(after.own + after.ofEnded + children) /
                   static_cast<double>(sysconf(_SC_CLK_TCK));
        }
        before = after;
    }
}

}  // namespace bench
