#ifndef TESTS_SUPPORT_CHILD_PROCESS_H
#define TESTS_SUPPORT_CHILD_PROCESS_H

#include <sys/types.h>

#include <functional>
#include <string>
#include <vector>

// A program that runs beside the test, both of its output streams collected. A child that is still
// running when the object goes is killed.
class ChildProcess {
  public:
    // Starts `command`, a path and arguments. `prepare` is run in the child before the program
    // starts; a child that cannot be prepared (an exception) or started ends with exit code 127.
    // Throws std::runtime_error when no process can be made.
    explicit ChildProcess(const std::vector<std::string>& command,
                          const std::function<void()>& prepare = {});
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;
    ~ChildProcess();

    // Sends a signal, which may find the process ended.
    void Signal(int signal) const;

    // Waits for the end; returns the exit code, or 128 and the signal that ended the process.
    int Wait();

    // Waits until SIGSTOP holds the process; false when it came to its end instead.
    bool WaitUntilStopped();

    // What the process has written so far.
    std::string Output() const;

  private:
    void WaitFor(int options);

    pid_t m_process = -1;
    int m_output = -1;
    bool m_ended = false;
    int m_code = -1;
};

#endif
