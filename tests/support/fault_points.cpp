#include "fault_points.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <utility>

// Nothing here may allocate, or call what is counted: it runs inside of allocations and calls.

namespace faults {

namespace {

using Names = std::pair<std::string_view, int>;

constexpr std::array<Names, 9> kErrors = {{{"ENOSPC", ENOSPC},
                                           {"EIO", EIO},
                                           {"EBUSY", EBUSY},
                                           {"EACCES", EACCES},
                                           {"EAGAIN", EAGAIN},
                                           {"EDQUOT", EDQUOT},
                                           {"EINTR", EINTR},
                                           {"ENOENT", ENOENT},
                                           {"ENOMEM", ENOMEM}}};
constexpr std::array<Names, 5> kSignals = {
    {{"KILL", SIGKILL}, {"TERM", SIGTERM}, {"INT", SIGINT}, {"STOP", SIGSTOP}, {"USR1", SIGUSR1}}};

struct Plan {
    Kind kind = Kind::Allocation;
    std::string_view name;  // empty for every file
    std::uint64_t first = 0;
    std::uint64_t last = 0;
    Fate fate;
    int signal = 0;
};

[[noreturn]] void Refuse(const char* variable) {
    for (const std::string_view text :
         {std::string_view(variable), std::string_view(": cannot be understood or used\n")}) {
        syscall(SYS_write, STDERR_FILENO, text.data(), text.size());
    }
    constexpr int kBadPlan = 125;
    _exit(kBadPlan);
}

template <std::size_t size>
int ValueOf(const std::array<Names, size>& names, std::string_view name) {
    const auto* found = std::ranges::find(names, name, &Names::first);
    return found == names.end() ? 0 : found->second;
}

// Takes what stands in front of the first colon off `text`.
std::string_view TakePart(std::string_view& text) {
    const std::string_view part = text.substr(0, text.find(':'));
    text.remove_prefix(std::min(part.size() + 1, text.size()));
    return part;
}

bool ReadPoint(std::string_view text, Plan& plan) {
    const bool onwards = text.ends_with('+');
    text.remove_suffix(onwards ? 1 : 0);
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), plan.first);
    plan.last = onwards ? std::numeric_limits<std::uint64_t>::max() : plan.first;
    return error == std::errc() && end == text.data() + text.size();
}

bool ReadAction(std::string_view text, Plan& plan) {
    plan.fate.error = ValueOf(kErrors, text);
    plan.signal = ValueOf(kSignals, text);
    plan.fate.half = text == "SHORT" || text == "TORN";
    plan.fate.killsThen = text == "TORN";
    return plan.fate.error != 0 || plan.signal != 0 || plan.fate.half;
}

bool ReadPlan(std::string_view text, Plan& plan) {
    std::string_view kind = TakePart(text);
    if (const auto at = kind.find('@'); at != std::string_view::npos) {
        plan.name = kind.substr(at + 1);
        kind = kind.substr(0, at);
    }
    const auto* found = std::ranges::find(kKindNames, kind);
    plan.kind = static_cast<Kind>(found - kKindNames.begin());
    return found != kKindNames.end() && ReadPoint(TakePart(text), plan) && ReadAction(text, plan);
}

FaultCounts* MapCounts(const char* path) {
    static FaultCounts ownOnly;
    if (path == nullptr) {
        return &ownOnly;
    }
    const auto file =
        static_cast<int>(syscall(SYS_openat, AT_FDCWD, path, O_RDWR | O_CREAT | O_CLOEXEC, 0600));
    if (file < 0 || syscall(SYS_ftruncate, file, sizeof(FaultCounts)) != 0) {
        Refuse("ZT_FAULT_COUNTS");
    }
    void* map = mmap(nullptr, sizeof(FaultCounts), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    if (map == MAP_FAILED) {
        Refuse("ZT_FAULT_COUNTS");
    }
    syscall(SYS_close, file);
    return static_cast<FaultCounts*>(map);
}

class Points {
  public:
    Points() : m_counts(MapCounts(getenv("ZT_FAULT_COUNTS"))) {
        const char* text = getenv("ZT_FAULT");
        if (text != nullptr && !ReadPlan(text, m_plan)) {
            Refuse("ZT_FAULT");
        }
    }

    template <typename NameMatches>
    Fate Meet(Kind kind, NameMatches nameMatches) {
        ++m_counts->requests[static_cast<std::size_t>(kind)];
        if (kind != m_plan.kind || (!m_plan.name.empty() && !nameMatches(m_plan.name))) {
            return {};
        }
        const std::uint64_t number = ++m_counts->matches;
        if (number < m_plan.first || number > m_plan.last) {
            return {};
        }
        ++m_counts->faults;
        if (m_plan.signal != 0) {
            raise(m_plan.signal);
        }
        return m_plan.fate;
    }

  private:
    FaultCounts* m_counts;
    Plan m_plan;
};

// The program has a single thread; a request may come before any constructor has run.
Points& ThePoints() {
    static Points points;
    return points;
}

bool Contains(const char* path, std::string_view name) {
    return path != nullptr && std::string_view(path).find(name) != std::string_view::npos;
}

}  // namespace

Fate Meet(Kind kind, const char* path) {
    return ThePoints().Meet(kind, [&](std::string_view name) { return Contains(path, name); });
}

Fate Meet(Kind kind, int descriptor) {
    return ThePoints().Meet(kind, [&](std::string_view name) {
        std::array<char, 32> link{"/proc/self/fd/"};
        char* const digits = link.data() + std::strlen(link.data());
        *std::to_chars(digits, link.end() - 1, descriptor).ptr = '\0';
        std::array<char, 4096> path{};
        return readlink(link.data(), path.data(), path.size() - 1) > 0 &&
               Contains(path.data(), name);
    });
}

Fate Meet(Kind kind) {
    return Meet(kind, nullptr);
}

void KillNow() {
    raise(SIGKILL);
    _exit(128 + SIGKILL);
}

}  // namespace faults
