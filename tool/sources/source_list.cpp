#include "tool/sources/source_list.h"

#include <fmt/format.h>

#include <algorithm>
#include <numeric>
#include <system_error>

#include "tool/io/byte_source.h"
#include "tool/io/source_error.h"

namespace tool {

namespace fs = std::filesystem;

namespace {

bool IsPacketFile(const fs::directory_entry& entry) {
    std::string name = entry.path().filename().string();
    std::error_code ignored;
    return name.size() > 4 && name.ends_with(".xml") && !name.starts_with('.') &&
           !entry.is_directory(ignored);
}

std::vector<fs::path> PacketFiles(const fs::path& directory, const std::string& argument) {
    std::vector<fs::path> files;
    try {
        for (const fs::directory_entry& entry : fs::directory_iterator(directory)) {
            if (IsPacketFile(entry)) {
                files.push_back(entry.path());
            }
        }
    } catch (const fs::filesystem_error& error) {
        throw SourceError(
            fmt::format("{}: the directory cannot be read: {}; make it readable for this user and "
                        "run again",
                        argument, error.code().message()));
    }
    std::sort(files.begin(), files.end(), [](const fs::path& a, const fs::path& b) {
        return a.filename().string() < b.filename().string();
    });
    return files;
}

}  // namespace

SourceList::SourceList(const std::vector<std::string>& arguments, int standardInput) {
    if (arguments.empty()) {
        throw SourceError(
            "no source is given; name a packet file, a directory with *.xml files or "
            "- for standard input");
    }
    for (const std::string& argument : arguments) {
        AddArgument(argument, standardInput);
    }
}

SourceList::SourceList(const std::vector<std::shared_ptr<const MadeSource>>& made) {
    for (const auto& source : made) {
        m_sources.push_back({{}, source->Name(), source->Size(), source});
    }
}

std::uint64_t SourceList::TotalSize() const {
    return std::accumulate(
        m_sources.begin(), m_sources.end(), std::uint64_t{0},
        [](std::uint64_t sum, const Source& source) { return sum + source.size; });
}

void SourceList::AddArgument(const std::string& argument, int standardInput) {
    std::error_code ignored;
    if (argument != "-") {
        if (fs::is_directory(argument, ignored)) {
            AddDirectory(argument, argument);
        } else {
            AddFile(argument, argument);
        }
        return;
    }
    if (m_standardInputTaken) {
        throw SourceError(
            "standard input (-) is named twice, and can be read once only; name it "
            "once or use files");
    }
    m_standardInputTaken = true;
    FileBytes bytes(standardInput, "standard input");
    AddSpooled(bytes);
}

void SourceList::AddDirectory(const fs::path& directory, const std::string& argument) {
    std::vector<fs::path> files = PacketFiles(directory, argument);
    if (files.empty()) {
        throw SourceError(
            fmt::format("{}: there is no *.xml file in this directory; name the directory that "
                        "holds the packets, or the packet files themselves",
                        argument));
    }
    for (const fs::path& file : files) {
        AddFile(file, file.string());
    }
}

void SourceList::AddFile(const fs::path& path, const std::string& name) {
    FileBytes bytes(path, name);
    std::error_code ignored;
    if (fs::is_regular_file(path, ignored)) {
        m_sources.push_back({path, name, fs::file_size(path), nullptr});
    } else {
        AddSpooled(bytes);
    }
}

void SourceList::AddSpooled(ByteSource& bytes) {
    m_spooled.push_back(std::make_unique<SpoolFile>(bytes));
    m_sources.push_back(
        {m_spooled.back()->Path(), bytes.Name(), m_spooled.back()->Size(), nullptr});
}

}  // namespace tool
