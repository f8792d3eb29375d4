#include "run.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>

#include <chrono>
#include <stdexcept>

extern char** environ;

namespace bench {

namespace {

double Seconds(const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

pid_t Start(const std::vector<std::string>& command) {
    std::vector<char*> arguments;
    for (const std::string& argument : command) {
        arguments.push_back(const_cast<char*>(argument.c_str()));
    }
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
    pid_t child = 0;
    const int failure =
        posix_spawn(&child, arguments[0], &actions, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (failure != 0) {
        throw std::runtime_error("cannot start " + command[0]);
    }
    return child;
}

double Now() {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration<double>(now).count();
}

double ProcessorSeconds(const rusage& usage) {
    return Seconds(usage.ru_utime) + Seconds(usage.ru_stime);
}

double OwnProcessorSeconds() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return ProcessorSeconds(usage);
}

}  // namespace

Run Run::PerRecord(std::int64_t records) const {
    const auto count = static_cast<double>(records);
    return {seconds / count, processorSeconds / count, serverSeconds / count, peakKilobytes};
}

Run RunChild(const std::vector<std::string>& command) {
    const double start = Now();
    const pid_t child = Start(command);
    int status = 0;
    rusage usage{};
    if (wait4(child, &status, 0, &usage) != child || !WIFEXITED(status) ||
        WEXITSTATUS(status) != 0) {
        throw std::runtime_error(command[0] + " " + command[1] + " failed");
    }
    return {.seconds = Now() - start,
            .processorSeconds = ProcessorSeconds(usage),
            .peakKilobytes = usage.ru_maxrss};
}

StopWatch::StopWatch() : m_start(Now()), m_processorStart(OwnProcessorSeconds()) {}

Run StopWatch::Taken() const {
    return {.seconds = Now() - m_start,
            .processorSeconds = OwnProcessorSeconds() - m_processorStart};
}

}  // namespace bench
