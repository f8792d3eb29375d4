// Runs a program to its end, its standard output thrown away: measured_run PROGRAM ARGUMENT... It
// prints the seconds that passed, the seconds of processors, and the largest resident memory in
// kilobytes; its exit code is that of the program, 127 when that could not be started or was ended
// by a signal.
//
// It is a program of its own since a process counts, as its largest memory, also what the one that
// started it had: this one is small, a benchmark that holds its data is not.

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>

#include <chrono>
#include <cstdio>

extern char** environ;

namespace {

constexpr int kNotRun = 127;

double Seconds(const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

bool Start(char** command, pid_t& child) {
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
    const int failure = posix_spawn(&child, command[0], &actions, nullptr, command, environ);
    posix_spawn_file_actions_destroy(&actions);
    return failure == 0;
}

}  // namespace

int main(int argc, char** argv) {
    pid_t child = 0;
    const auto start = std::chrono::steady_clock::now();
    if (argc < 2 || !Start(argv + 1, child)) {
        return kNotRun;
    }
    int status = 0;
    rusage usage{};
    if (wait4(child, &status, 0, &usage) != child || !WIFEXITED(status)) {
        return kNotRun;
    }
    const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - start;
    std::printf("%.6f %.6f %ld\n", passed.count(),
                Seconds(usage.ru_utime) + Seconds(usage.ru_stime), usage.ru_maxrss);
    return WEXITSTATUS(status);
}
