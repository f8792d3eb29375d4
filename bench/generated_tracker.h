#ifndef BENCH_GENERATED_TRACKER_H
#define BENCH_GENERATED_TRACKER_H

#include <array>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace bench {

struct HistoryLine {
    std::string time;
    std::string user;
    std::string action;
    std::string oldState;
    std::string newState;
};

// One record of the benchmark: twelve short fields, a description of 500 characters, two list
// entries and four history lines; about 1.4 kB as XML. The same number always gives the same
// record.
struct GeneratedRecord {
    explicit GeneratedRecord(std::int64_t number);

    std::array<std::string, 12> fields;  // in the order of kFieldNames
    std::string description;
    std::array<std::size_t, 2> keywords{};  // numbers of keywords, different ones
    std::array<HistoryLine, 4> history;
};

inline constexpr std::array<const char*, 12> kFieldNames = {
    "source_id", "title",    "milestone", "version",  "priority", "kind",
    "component", "reporter", "platform",  "language", "opened",   "votes"};

inline constexpr std::size_t kKeywords = 200;
std::string KeywordName(std::size_t number);

// The schema file's text.
std::string SchemaText();

// The packet files of one load.
struct PacketFiles {
    std::vector<std::filesystem::path> sources;
    std::filesystem::path attachments;  // the folder of their files; empty when there are none
    std::int64_t records = 0;
    std::uint64_t bytes = 0;  // of the data packet
};

// The packets of all loads.
struct TrackerPackets {
    PacketFiles keywords;
    PacketFiles create;
    PacketFiles bare;
    PacketFiles update;
    PacketFiles history;
    PacketFiles attachments;
};

// Write the packets of `records` records into `folder`.
PacketFiles WriteKeywordPackets(const std::filesystem::path& folder);
PacketFiles WriteCreatePackets(const std::filesystem::path& folder, std::int64_t records);
// The same records without their history, for which the history packets are then loaded.
PacketFiles WriteBarePackets(const std::filesystem::path& folder, std::int64_t records);
// Those packets behind a configuration that maps the keywords, as that of a map file does: so they
// ask the database for each of them.
PacketFiles MapReferences(const std::filesystem::path& folder, PacketFiles bare);
// Each record's title, milestone and description differ from those before.
PacketFiles WriteUpdatePackets(const std::filesystem::path& folder, std::int64_t records);
// The four history lines of each record.
PacketFiles WriteHistoryPackets(const std::filesystem::path& folder, std::int64_t records);
// A new file for each record, in `folder` as well.
PacketFiles WriteAttachmentPackets(const std::filesystem::path& folder, std::int64_t records);

}  // namespace bench

#endif
