#ifndef TOOL_IO_REPLACING_FILE_H
#define TOOL_IO_REPLACING_FILE_H

#include <filesystem>
#include <string_view>

#include "tool/io/output_file.h"

namespace tool {

// A file for people to keep that appears at its path complete or not at all, in place of an earlier
// one: it is written under a name of its own beside it, synced and renamed. It keeps the earlier
// one's permissions; an earlier one that may not be written to is not replaced.
//
// A path that is a symbolic link stands for the file that the link leads to, which is replaced
// while the link stays. What is no file, a terminal, a pipe or /dev/null, is written to as it is.
//
// All operations throw std::system_error that names the file when something cannot be written.
class ReplacingFile {
  public:
    // Makes a file beside `path`, so that a place that cannot be written shows at once.
    explicit ReplacingFile(std::filesystem::path path);
    // Without Place or Finish nothing is left.
    ~ReplacingFile();
    ReplacingFile(const ReplacingFile&) = delete;
    ReplacingFile& operator=(const ReplacingFile&) = delete;

    void Append(std::string_view bytes) { m_file.Append(bytes); }

    // Puts the file in its place. What is appended afterwards is seen there as it comes.
    void Place();

    // Puts the file in its place, if that has not been done, and closes it. To be called once;
    // nothing may be added afterwards.
    void Finish();

    // A folder for working files as large as this one: its own, or the one for temporary files when
    // the path is no file's.
    std::filesystem::path WorkFolder() const;

  private:
    std::filesystem::path m_path;
    bool m_replaces;  // false for what is written to as it is
    OutputFile m_file;
    bool m_placed = false;
};

}  // namespace tool

#endif
