#include "child_process.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <stdexcept>

namespace {

[[noreturn]] void RunProgram(const std::vector<std::string>& command,
                             const std::function<void()>& prepare, int output) {
    constexpr int kNotStarted = 127;
    try {
        const int nothing = open("/dev/null", O_RDONLY);
        dup2(nothing, STDIN_FILENO);
        dup2(output, STDOUT_FILENO);
        dup2(output, STDERR_FILENO);
        if (prepare) {
            prepare();
        }
        std::vector<char*> arguments;
        for (const std::string& argument : command) {
            arguments.push_back(const_cast<char*>(argument.c_str()));
        }
        arguments.push_back(nullptr);
        execv(arguments[0], arguments.data());
    } catch (const std::exception& error) {
        const std::string text = error.what();
        [[maybe_unused]] const auto written = write(output, text.data(), text.size());
    }
    _exit(kNotStarted);
}

}  // namespace

ChildProcess::ChildProcess(const std::vector<std::string>& command,
                           const std::function<void()>& prepare)
    : m_output(memfd_create("output", MFD_CLOEXEC)) {
    // Both streams append to one file.
    if (m_output < 0 || fcntl(m_output, F_SETFL, O_APPEND) != 0) {
        throw std::runtime_error("no room for the output of a child process");
    }
    m_process = fork();
    if (m_process == 0) {
        RunProgram(command, prepare, m_output);
    }
    if (m_process < 0) {
        close(m_output);
        throw std::runtime_error("no child process");
    }
}

ChildProcess::~ChildProcess() {
    if (!m_ended) {
        Signal(SIGKILL);
        Wait();
    }
    close(m_output);
}

void ChildProcess::Signal(int signal) const {
    kill(m_process, signal);
}

int ChildProcess::Wait() {
    if (!m_ended) {
        WaitFor(0);
    }
    return m_code;
}

bool ChildProcess::WaitUntilStopped() {
    if (!m_ended) {
        WaitFor(WUNTRACED);
    }
    return !m_ended;
}

void ChildProcess::WaitFor(int options) {
    int status = 0;
    while (waitpid(m_process, &status, options) < 0 && errno == EINTR) {
    }
    if (!WIFSTOPPED(status)) {
        constexpr int kSignalled = 128;
        m_code = WIFEXITED(status) ? WEXITSTATUS(status) : kSignalled + WTERMSIG(status);
        m_ended = true;
    }
}

std::string ChildProcess::Output() const {
    constexpr std::size_t kPiece = 4096;
    std::string text;
    std::string piece(kPiece, '\0');
    for (off_t at = 0;; at = static_cast<off_t>(text.size())) {
        const ssize_t got = pread(m_output, piece.data(), piece.size(), at);
        if (got <= 0) {
            return text;
        }
        text.append(piece, 0, static_cast<std::size_t>(got));
    }
}
