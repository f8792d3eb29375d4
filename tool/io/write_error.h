#ifndef TOOL_IO_WRITE_ERROR_H
#define TOOL_IO_WRITE_ERROR_H

#include <system_error>

namespace tool {

// Something could not be written any more: the disk is full, say, or the reader is gone. what()
// names it.
class WriteError : public std::system_error {
  public:
    using std::system_error::system_error;
};

}  // namespace tool

#endif
