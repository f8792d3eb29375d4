#include "faulty_tool.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>
#include <stdexcept>

namespace {

int MakeCountsFile() {
    const int file = memfd_create("counts", MFD_CLOEXEC);
    if (file < 0 || ftruncate(file, sizeof(faults::FaultCounts)) != 0) {
        throw std::runtime_error("no room for the counts of a child process");
    }
    return file;
}

const faults::FaultCounts* Map(int file) {
    void* map = mmap(nullptr, sizeof(faults::FaultCounts), PROT_READ, MAP_SHARED, file, 0);
    if (map == MAP_FAILED) {
        throw std::runtime_error("the counts of a child process cannot be read");
    }
    return static_cast<const faults::FaultCounts*>(map);
}

std::vector<std::string> Command(const std::vector<std::string>& arguments) {
    std::vector<std::string> command = {ZTIMPORT_FAULTY};
    command.insert(command.end(), arguments.begin(), arguments.end());
    return command;
}

}  // namespace

FaultyTool::FaultyTool(const std::vector<std::string>& arguments, const std::string& fault)
    : m_file(MakeCountsFile()), m_counts(Map(m_file)), m_child(Command(arguments), [this, &fault] {
          fcntl(m_file, F_SETFD, 0);
          const std::string counts = "/proc/self/fd/" + std::to_string(m_file);
          setenv("ZT_FAULT_COUNTS", counts.c_str(), 1);
          if (!fault.empty()) {
              setenv("ZT_FAULT", fault.c_str(), 1);
          }
      }) {}

FaultyTool::~FaultyTool() {
    munmap(const_cast<faults::FaultCounts*>(m_counts), sizeof(faults::FaultCounts));
    close(m_file);
}
