#ifndef TOOL_PROCESS_WAIT_TO_READ_H
#define TOOL_PROCESS_WAIT_TO_READ_H

#include <stdexcept>
#include <string>

namespace tool {

// The process was interrupted while it waited for what others write.
class InterruptedWait : public std::runtime_error {
  public:
    explicit InterruptedWait(const std::string& text) : std::runtime_error(text) {}
};

// Waits until `descriptor` can be read, be it to find its end; a file on a disk always can. Throws
// InterruptedWait, with a text that names it `name`, when the process is interrupted before.
void WaitToRead(int descriptor, const std::string& name);

}  // namespace tool

#endif
