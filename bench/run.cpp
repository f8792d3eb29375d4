#include "run.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <filesystem>
#include <sstream>
#include <stdexcept>

extern char** environ;

namespace bench {

namespace {

double Seconds(const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

// Stands beside the benchmark.
std::string MeasuredRun() {
    return (std::filesystem::read_symlink("/proc/self/exe").parent_path() / "measured_run")
        .string();
}

// Starts a program whose standard output is `output`.
pid_t Start(const std::vector<std::string>& command, int output) {
    std::vector<char*> arguments;
    for (const std::string& argument : command) {
        arguments.push_back(const_cast<char*>(argument.c_str()));
    }
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
    pid_t child = 0;
    const int failure =
        posix_spawn(&child, arguments[0], &actions, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (failure != 0) {
        throw std::runtime_error("cannot start " + command[0]);
    }
    return child;
}

// What is read from a pipe until nobody writes there any more.
std::string ReadAll(int pipe) {
    std::string text;
    std::array<char, 256> part{};
    for (ssize_t size = 0; (size = read(pipe, part.data(), part.size())) > 0;) {
        text.append(part.data(), static_cast<std::size_t>(size));
    }
    return text;
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
    std::vector<std::string> whole = {MeasuredRun()};
    whole.insert(whole.end(), command.begin(), command.end());
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) {
        throw std::runtime_error("cannot make a pipe");
    }
    const pid_t child = Start(whole, ends[1]);
    close(ends[1]);
    std::istringstream told(ReadAll(ends[0]));
    close(ends[0]);
    int status = 0;
    Run run;
    if (waitpid(child, &status, 0) != child || !WIFEXITED(status) || WEXITSTATUS(status) != 0 ||
        !(told >> run.seconds >> run.processorSeconds >> run.peakKilobytes)) {
        throw std::runtime_error(command[0] + " " + command[1] + " failed");
    }
    return run;
}

StopWatch::StopWatch() : m_start(Now()), m_processorStart(OwnProcessorSeconds()) {}

Run StopWatch::Taken() const {
    return {.seconds = Now() - m_start,
            .processorSeconds = OwnProcessorSeconds() - m_processorStart};
}

}  // namespace bench
