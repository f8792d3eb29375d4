#ifndef TOOL_IO_FOLDER_FILES_H
#define TOOL_IO_FOLDER_FILES_H

#include <filesystem>
#include <string>
#include <vector>

namespace tool {

// What stands in a folder that was named as a source, and below it, without what is hidden.
struct FolderFiles {
    std::vector<std::filesystem::path> files;  // regular ones, and links to such
    // What is not read: pipes, devices and sockets, since reading these may never end; links to
    // folders, since they may lead in a circle; links that lead nowhere.
    std::vector<std::filesystem::path> others;
};

// Lists a folder, in no order. Throws SourceError when it cannot be read.
FolderFiles FilesOfFolder(const std::string& folder);

}  // namespace tool

#endif
