#ifndef TOOL_PROCESS_USAGE_ERROR_H
#define TOOL_PROCESS_USAGE_ERROR_H

#include <stdexcept>
#include <string>

namespace tool {

// The command line asks for something that cannot be done. what() says what to do about it.
class UsageError : public std::runtime_error {
  public:
    explicit UsageError(const std::string& text) : std::runtime_error(text) {}
};

}  // namespace tool

#endif
