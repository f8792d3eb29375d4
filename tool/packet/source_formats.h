#ifndef TOOL_PACKET_SOURCE_FORMATS_H
#define TOOL_PACKET_SOURCE_FORMATS_H

#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

// The values of packets that have a format of their own, read so that nothing in them is left out,
// also what the importer drops of them without a word. All texts are UTF-8.
namespace tool {

// The columns of a history entry that the database keeps, in the order of a packet's line.
constexpr std::size_t kHistoryColumns = 6;
constexpr std::size_t kTimeColumn = 0;
using HistoryColumns = std::array<std::string, kHistoryColumns>;

// The importer's name for one of these columns, "user_name" say.
std::string HistoryColumnName(std::size_t column);

// A line of a history value. Columns that it does not have are empty.
struct HistoryLine {
    // A line of more columns, the id among them, is dropped whole.
    static constexpr std::size_t kMostColumns = 6;

    std::string id;          // what the source calls the entry
    HistoryColumns columns;  // after the id, as the source writes them
    std::size_t count = 0;   // of its columns, the id and those that have no name among them

    bool operator==(const HistoryLine&) const = default;
};

// The most entries of history that the importer takes of a record's packet; it drops what is
// beyond.
constexpr std::size_t kMostHistoryEntries = 501;

std::vector<HistoryLine> ReadHistoryLines(std::string_view value);

// Four lines of an attachments value, or what is left over after the last whole four.
struct AttachmentLines {
    static constexpr std::size_t kWhole = 4;

    std::string id;  // what the source calls the attachment
    std::string fileName;
    std::string fileSize;
    std::string description;
    std::size_t count = 0;  // of its lines; fewer than four are dropped

    bool Complete() const { return count == kWhole; }
    bool operator==(const AttachmentLines&) const = default;
};

std::vector<AttachmentLines> ReadAttachmentLines(std::string_view value);

// The items of a reference list value, trimmed, without the empty ones.
std::vector<std::string> ReadListItems(std::string_view value);

}  // namespace tool

#endif
