#ifndef TESTS_TOOL_READING_H
#define TESTS_TOOL_READING_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "tool/sources/xml/packet_reader.h"

// The small language of the reading tests: sources are texts, and what is read is copied out.
namespace reading {

// The chunk sizes under which every text must read the same.
std::vector<std::size_t> ChunkSizes();

// A record as it was read.
struct Read {
    std::string packet;
    std::string raw;
    std::uint64_t ordinal;
    std::uint64_t line;
    std::uint64_t offset;
    tool::RecordDefect defect;
    std::string error;
    bool openSection;

    bool operator==(const Read&) const = default;
};

// All records of `text`; what looks like a record and is not read goes to `unseen` if given.
std::vector<Read> ReadRecords(std::string_view text, tool::ReaderOptions options = {},
                              std::vector<tool::UnseenRecord>* unseen = nullptr);

// The raw texts of the records of `text`, read in chunks of every size, which must agree.
std::vector<std::string> Raws(std::string_view text);

// The records of `text`, read in chunks of every size, which must agree in everything.
std::vector<Read> ReadAtEveryChunkSize(std::string_view text, tool::ReaderOptions options = {});

// What was unseen in `text`, as "line: text", read in chunks of every size, which must agree.
std::vector<std::string> Unseen(std::string_view text);

// `text`, which is UTF-8, as UTF-16 without a byte order mark.
std::string ToUtf16(std::string_view text, bool bigEndian);

// A reader over `text`.
tool::PacketReader ReaderOf(std::string_view text, tool::ReaderOptions options = {});

// The packet that a record with the text `record` should be handed out as.
std::string PacketOf(std::string_view record);

}  // namespace reading

#endif
