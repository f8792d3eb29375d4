#ifndef TESTS_SUPPORT_FAULTY_TOOL_H
#define TESTS_SUPPORT_FAULTY_TOOL_H

#include <csignal>
#include <string>
#include <vector>

#include "child_process.h"
#include "fault_points.h"

// A run of the tool that meets a fault at a counted point (fault_points.h).
class FaultyTool {
  public:
    // Starts the tool with `arguments` and the plan `fault`: "write:17:KILL", say; empty for none.
    explicit FaultyTool(const std::vector<std::string>& arguments, const std::string& fault = "");
    FaultyTool(const FaultyTool&) = delete;
    FaultyTool& operator=(const FaultyTool&) = delete;
    ~FaultyTool();

    // Waits for the end; returns the exit code, or 128 and the signal that ended the tool.
    int Wait() { return m_child.Wait(); }

    // Waits until a STOP holds the tool, and lets it go on. WaitUntilHeld is false when the tool
    // came to its end instead.
    bool WaitUntilHeld() { return m_child.WaitUntilStopped(); }
    void GoOn() { m_child.Signal(SIGCONT); }

    std::string Output() const { return m_child.Output(); }

    // What was counted so far.
    const faults::FaultCounts& Counts() const { return *m_counts; }

  private:
    int m_file;
    const faults::FaultCounts* m_counts;
    ChildProcess m_child;
};

#endif
