#ifndef TOOL_PACKET_RECORD_LIMITS_H
#define TOOL_PACKET_RECORD_LIMITS_H

#include <cstddef>

namespace tool {

// Limits that keep a record from taking all memory. To import a record takes up to twenty times its
// size.
struct RecordLimits {
    std::size_t size = std::size_t{16} * 1024 * 1024;  // in bytes of UTF-8; it must stay below
    std::size_t depth = 256;  // of its elements, itself among them; also of those around records
};

}  // namespace tool

#endif
