#include "tool/replacing_file.h"

#include <fmt/format.h>
#include <unistd.h>

#include <system_error>
#include <utility>

namespace tool {

namespace fs = std::filesystem;

namespace {

void Remove(const fs::path& path) {
    std::error_code ignored;
    fs::remove(path, ignored);
}

}  // namespace

OutputFile CreateBeside(const fs::path& path, std::string_view suffix) {
    fs::path neighbour = path;
    neighbour += fmt::format(".{}.{}", ::getpid(), suffix);
    // What stands there was left by a process of the same number that was killed.
    Remove(neighbour);
    try {
        return OutputFile::CreateNew(neighbour);
    } catch (const std::system_error& error) {
        throw std::system_error(error.code(),
                                path.string() + ": the report cannot be written here");
    }
}

ReplacingFile::ReplacingFile(fs::path path)
    : m_path(std::move(path)), m_file(CreateBeside(m_path, "new")) {}

ReplacingFile::~ReplacingFile() {
    if (!m_finished) {
        Remove(m_file.Path());
    }
}

void ReplacingFile::Finish() {
    m_file.Sync();
    m_file.Close();
    std::error_code error;
    fs::rename(m_file.Path(), m_path, error);
    if (error) {
        throw std::system_error(error, m_path.string() + ": cannot be written");
    }
    m_finished = true;
}

}  // namespace tool
