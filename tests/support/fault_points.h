#ifndef TESTS_SUPPORT_FAULT_POINTS_H
#define TESTS_SUPPORT_FAULT_POINTS_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

// Faults at counted points: a program that is linked with faulty_calls.cpp and faulty_memory.cpp
// counts what it asks of the system. At the point that its environment names, the request fails, or
// the program ends or is held. So tests of what happens "in the middle" need no clock.
//
// ZT_FAULT=KIND[@NAME]:N[+]:ACTION names the point. N counts the requests of that kind, from 1, or
// with NAME only those for files whose path contains it; 0 means none. With "+" all later requests
// meet the same fate. ACTION is one of
//   - an error by its name, ENOSPC for example: the request fails with it;
//   - a signal by its name without SIG, which the program sends itself before the request is made:
//     KILL, TERM, INT, or STOP, which holds it until another process continues it;
//   - SHORT: of a write, the first half is made; TORN: the same, and the program is killed then.
// An allocation fails whatever error is named. A plan that cannot be read ends the program.
//
// ZT_FAULT_COUNTS=FILE names a file of FaultCounts, made by the program when it is not there, that
// is up to date at every moment, also when the program is killed.
namespace faults {

enum class Kind : std::size_t {
    Allocation,  // memory: C++'s, SQLite's, expat's and ICU's
    Open,        // of a file, for whatever purpose
    Read,
    Write,     // to anything but standard output and error
    Sync,      // fsync, fdatasync
    Truncate,  // or growth without a write
    Rename,    // or a link
    Remove,
    Folder,  // making one
    Lock,    // locking a file
};
constexpr std::size_t kKinds = 10;
constexpr std::array<std::string_view, kKinds> kKindNames = {
    "allocation", "open",   "read",   "write",  "sync",
    "truncate",   "rename", "remove", "folder", "lock"};

struct FaultCounts {
    std::array<std::uint64_t, kKinds> requests;  // by kind
    std::uint64_t matches;                       // those that match the plan's KIND and NAME
    std::uint64_t faults;                        // requests that met it

    std::uint64_t Of(Kind kind) const { return requests[static_cast<std::size_t>(kind)]; }
};

// What is to become of a request.
struct Fate {
    int error = 0;           // it fails with this; 0 for none
    bool half = false;       // a write makes its first half only
    bool killsThen = false;  // and KillNow is called
};

// Counts a request for the file at `path`, or the one that `descriptor` stands for, or for no file.
Fate Meet(Kind kind, const char* path);
Fate Meet(Kind kind, int descriptor);
Fate Meet(Kind kind);

[[noreturn]] void KillNow();

}  // namespace faults

#endif
