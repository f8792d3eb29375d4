#ifndef TOOL_SOURCES_SOURCE_LIST_H
#define TOOL_SOURCES_SOURCE_LIST_H

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "tool/io/spool_file.h"
#include "tool/sources/kind/made_source.h"

namespace tool {

// One file of packets, or a source that was made of other files.
struct Source {
    std::filesystem::path path;  // what to open; can be opened and read again and again
    std::string name;            // what people call it: the path as given, or "standard input"
    std::uint64_t size = 0;      // in bytes, for the progress
    std::shared_ptr<const MadeSource> made = nullptr;  // takes the place of the file
};

// The packet files that the SOURCE arguments of the command line stand for, in order.
//
// An argument is a file, a directory (its *.xml files in the bytewise order of their names, hidden
// files and subdirectories left out) or "-". Standard input, and any pipe or device, is copied to a
// temporary file first, since a source is read twice: once to know it by its content, once to load.
class SourceList {
  public:
    // Expands `arguments` and makes sure that each file can be opened; `standardInput` is the
    // descriptor that "-" reads and stays the caller's. Throws SourceError that says what to do, or
    // std::system_error when a temporary file cannot be written.
    explicit SourceList(const std::vector<std::string>& arguments, int standardInput = 0);
    explicit SourceList(const std::vector<std::shared_ptr<const MadeSource>>& made);

    // Valid as long as the list, which removes its temporary files when it goes.
    const std::vector<Source>& Sources() const { return m_sources; }

    // The sizes of all sources together, in bytes.
    std::uint64_t TotalSize() const;

  private:
    void AddArgument(const std::string& argument, int standardInput);
    void AddDirectory(const std::filesystem::path& directory, const std::string& argument);
    void AddFile(const std::filesystem::path& path, const std::string& name);
    void AddSpooled(ByteSource& bytes);

    std::vector<Source> m_sources;
    std::vector<std::unique_ptr<SpoolFile>> m_spooled;
    bool m_standardInputTaken = false;
};

}  // namespace tool

#endif
