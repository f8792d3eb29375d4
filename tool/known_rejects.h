#ifndef TOOL_KNOWN_REJECTS_H
#define TOOL_KNOWN_REJECTS_H

#include <array>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace tool {

// The two kinds of files in a folder of rejected records; the word stands in their names.
inline constexpr std::string_view rejectConfigurationKind = "configuration";
inline constexpr std::string_view rejectRecordsKind = "records";

// The name of a file in a folder of rejected records, such as "0001-records.xml".
std::string RejectFileName(int number, std::string_view kind);

// The number in the name of such a file; 0 for any other file.
int RejectFileNumber(const std::filesystem::path& file);

// The rejected records that a folder holds from earlier runs.
//
// Rejected records are set aside before the transaction ends that says so: a load that is killed in
// between rejects them again when it goes on, and without this they would stand there twice.
// A rejected record is known by its configuration, its place, which its comment begins with, and
// its text. The reason does not count: it may name other rejected records, of which a load that
// goes on knows less. Takes 16 bytes of memory for each.
class KnownRejects {
  public:
    // Knows nothing.
    KnownRejects() = default;
    // Reads the files in FOLDER. A records file that a process left off in the middle of an entry
    // is closed behind the entry before. Throws std::system_error when one cannot be read.
    explicit KnownRejects(const std::filesystem::path& folder);

    // Whether a records file holds ENTRY, whole lines of which the first is the comment, and its
    // configuration file holds CONFIGURATION (empty: there is none).
    bool Contain(std::string_view configuration, std::string_view entry) const;

  private:
    using Digest = std::array<char, 16>;
    static Digest DigestOf(std::string_view configuration, std::string_view piece);
    void ReadPair(const std::filesystem::path& folder, int number);

    std::vector<Digest> m_known;  // sorted
};

}  // namespace tool

#endif
