#ifndef TOOL_IO_STANDARD_OUTPUT_H
#define TOOL_IO_STANDARD_OUTPUT_H

#include <array>
#include <ostream>
#include <streambuf>

namespace tool {

// The process's standard output as a stream that reports a failed write, and why it failed: writing
// to it, flush() included, throws WriteError once, and is without effect from then on. What has not
// been flushed when the object goes is lost.
class StandardOutput : private std::streambuf, public std::ostream {
  public:
    StandardOutput();

  private:
    int overflow(int character) override;
    int sync() override;

    std::array<char, 16384> m_buffer{};
    bool m_failed = false;
};

// Opens /dev/null in place of those of the three standard descriptors that are closed, in such a
// way that using them fails. A file would get their numbers otherwise, and what is meant for
// standard output would be written into it.
void OccupyStandardDescriptors();

}  // namespace tool

#endif
