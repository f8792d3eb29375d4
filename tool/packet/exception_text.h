#ifndef TOOL_PACKET_EXCEPTION_TEXT_H
#define TOOL_PACKET_EXCEPTION_TEXT_H

#include <string>

class CException;

namespace tool {

// The exception's message, as UTF-8. Deletes the exception.
std::string TakeText(CException* exception);

}  // namespace tool

#endif
