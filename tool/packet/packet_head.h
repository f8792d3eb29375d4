#ifndef TOOL_PACKET_PACKET_HEAD_H
#define TOOL_PACKET_PACKET_HEAD_H

#include <string>
#include <string_view>

namespace tool {

// The declaration that the importer steps over by its length, 38 bytes, from the packet's start.
inline constexpr std::string_view kPacketDeclaration = R"(<?xml version="1.0" encoding="UTF-8"?>)";

enum class HeadAnswer {
    Configuration,  // the importer takes the packet as configuration
    Data,           // it takes it as record data
    Undecided,      // more of the text is needed
};

// Says what the importer makes of a packet that begins with `text`: it is configuration when an
// element "configuration" opens before any text, end tag or other token. `complete` tells that
// nothing follows `text`; the answer then is never Undecided.
HeadAnswer ClassifyHead(std::string_view text, bool complete);

// Stands between the declaration and the first element of a packet whose values are guarded
// (tool/guarded/guarded_text.h).
inline constexpr std::string_view kGuardedInstruction = "<?ztimport guarded?>";

// Whether a packet that begins with `text`, which reaches to its first element, is guarded.
bool HasGuardedInstruction(std::string_view text);

// `text` as a packet: its own declaration, with blanks in front of it, is replaced by
// kPacketDeclaration, and one is added where there is none. Otherwise those 38 bytes, in an unusual
// place, would make the importer skip the beginning of the packet.
std::string WithPacketDeclaration(std::string_view text);

}  // namespace tool

#endif
