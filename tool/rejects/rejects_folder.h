#ifndef TOOL_REJECTS_REJECTS_FOLDER_H
#define TOOL_REJECTS_REJECTS_FOLDER_H

#include <filesystem>
#include <string_view>

#include "tool/io/output_file.h"

namespace tool {

// The files that one load adds to a folder of rejected records: always new ones. What stands there,
// from earlier loads or by the hand of a person, is never opened for writing, and several loads may
// add files at once.
//
// All operations throw std::system_error that names the file when something cannot be written.
class RejectsFolder {
  public:
    // Throws when `path` is no folder, or is seen now to be one that cannot be written.
    explicit RejectsFolder(std::filesystem::path path);

    const std::filesystem::path& Path() const { return m_path; }

    // The names of a pair that was added.
    struct Pair {
        std::filesystem::path configuration;  // empty: there is none
        OutputFile records;
    };

    // Adds a pair of files under the next free number, making the folder where it is missing. Each
    // appears with its content at once, on the disk as well. An empty `configuration` makes no
    // file. As long as the records file is open, others see that it is being written (flock).
    Pair Add(std::string_view configuration, std::string_view records) const;

  private:
    void Make() const;
    int NextNumber() const;

    std::filesystem::path m_path;
};

}  // namespace tool

#endif
