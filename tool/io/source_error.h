#ifndef TOOL_IO_SOURCE_ERROR_H
#define TOOL_IO_SOURCE_ERROR_H

#include <stdexcept>

namespace tool {

// A source that cannot be used as a whole, as opposed to one of its records. what() names it, as
// the person wrote it or by its path inside a directory, and says what to do about it.
class SourceError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// A source that has changed since its reading began, in this load or an earlier one.
class SourceChanged : public SourceError {
  public:
    using SourceError::SourceError;
};

}  // namespace tool

#endif
