#ifndef TOOL_IO_TEXT_STORE_H
#define TOOL_IO_TEXT_STORE_H

#include <cstdint>
#include <string>
#include <string_view>

#include "tool/io/output_file.h"

namespace tool {

// Any number of texts in a temporary file that no folder shows, to be read back one by one.
class TextStore {
  public:
    // Throws std::system_error when the file cannot be made, as Add does when it cannot be written.
    TextStore();

    // Returns where the text begins.
    std::uint64_t Add(std::string_view text);

    // Throws std::system_error when the file cannot be read.
    std::string Read(std::uint64_t begin, std::uint64_t size);

  private:
    OutputFile m_file;
    std::string m_buffer;  // what is not in the file yet
};

}  // namespace tool

#endif
