#ifndef TOOL_REJECTS_KNOWN_REJECTS_H
#define TOOL_REJECTS_KNOWN_REJECTS_H

#include <array>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tool {

// The two kinds of files in a folder of rejected records; the word stands in their names.
inline constexpr std::string_view kRejectConfigurationKind = "configuration";
inline constexpr std::string_view kRejectRecordsKind = "records";

// The name of a file in a folder of rejected records, such as "0001-records.xml".
std::string RejectFileName(int number, std::string_view kind);

// The number in the name of such a file; 0 for any other file.
int RejectFileNumber(const std::filesystem::path& file);

// The rejected records that a folder holds from earlier runs. Its files are only read.
//
// Rejected records are set aside before the transaction ends that says so: a load that is killed in
// between rejects them again when it goes on, and without this they would stand there twice.
// A rejected record is known by its configuration, its place, which its comment begins with, and
// its text. The reason does not count: it may name other rejected records, of which a load that
// goes on knows less. Takes 32 bytes of memory for each.
//
// A file that another load is writing now counts for nothing: what it holds may still be taken
// back.
class KnownRejects {
  public:
    // Knows nothing.
    KnownRejects() = default;
    // Reads the files in `folder`. Links and pipes among them are left alone. Throws
    // std::system_error when one cannot be read.
    explicit KnownRejects(const std::filesystem::path& folder);

    // Whether a records file, one of guarded records or not, holds `entry`, whole lines of which
    // the first is the comment, and its configuration file holds `configuration` (empty: there is
    // none). When it does, the file has been synced to the disk. Throws std::system_error.
    bool Contain(std::string_view configuration, bool guarded, std::string_view entry);

  private:
    using Key = std::array<char, 16>;

    // Where the text of a record begins, after its comment.
    struct Place {
        Key key;  // of configuration, comment and whether it is guarded
        std::uint32_t file;
        std::uint64_t offset;
    };

    struct File {
        std::filesystem::path path;
        bool synced = false;
    };

    static Key KeyOf(std::string_view configurationHash, bool guarded, std::string_view place);
    void ReadPair(const std::filesystem::path& folder, int number);
    bool Holds(const Place& place, std::string_view text);

    std::vector<File> m_files;
    std::vector<Place> m_places;  // sorted by key
};

}  // namespace tool

#endif
