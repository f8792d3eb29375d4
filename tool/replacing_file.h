#ifndef TOOL_REPLACING_FILE_H
#define TOOL_REPLACING_FILE_H

#include <filesystem>
#include <string_view>

#include "tool/output_file.h"

namespace tool {

// A file for people to keep that appears at its path complete or not at all, in place of an earlier
// one. All operations throw std::system_error that names the file when something cannot be written.
class ReplacingFile {
  public:
    // Makes a file beside PATH, so that a place that cannot be written shows at once.
    explicit ReplacingFile(std::filesystem::path path);
    // Without Finish nothing is left.
    ~ReplacingFile();
    ReplacingFile(const ReplacingFile&) = delete;
    ReplacingFile& operator=(const ReplacingFile&) = delete;

    void Append(std::string_view bytes) { m_file.Append(bytes); }

    // Puts the file in its place. To be called once; nothing may be added afterwards.
    void Finish();

  private:
    std::filesystem::path m_path;
    OutputFile m_file;
    bool m_finished = false;
};

// Makes a file for a while beside PATH, the path that people know: within one file system a rename
// replaces a file at once. SUFFIX tells the files beside one path apart.
OutputFile CreateBeside(const std::filesystem::path& path, std::string_view suffix);

}  // namespace tool

#endif
