#include "tool/list_report.h"

#include <fmt/format.h>
#include <unistd.h>

#include <system_error>
#include <utility>
#include <vector>

namespace tool {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t pieceSize = std::size_t{256} * 1024;

// A neighbour of PATH, since only within one file system a rename replaces a file at once.
fs::path Neighbour(const fs::path& path, std::string_view suffix) {
    fs::path neighbour = path;
    neighbour += fmt::format(".{}.{}", ::getpid(), suffix);
    return neighbour;
}

void Remove(const fs::path& path) {
    std::error_code ignored;
    fs::remove(path, ignored);
}

// Makes a file for a while beside REPORT, the path that people know.
OutputFile CreateBeside(const fs::path& report, std::string_view suffix) {
    fs::path path = Neighbour(report, suffix);
    // What stands there was left by a process of the same number that was killed.
    Remove(path);
    try {
        return OutputFile::CreateNew(path);
    } catch (const std::system_error& error) {
        throw std::system_error(error.code(),
                                report.string() + ": the report cannot be written here");
    }
}

}  // namespace

ListReport::Spool::Spool(const fs::path& path)
    : in(CreateBeside(path, "items")), out(in.Path(), in.Path().string()) {
    Remove(in.Path());
}

ListReport::ListReport(fs::path path)
    : m_path(std::move(path)), m_items(m_path), m_report(CreateBeside(m_path, "new")) {}

ListReport::~ListReport() {
    if (!m_finished) {
        Remove(m_report.Path());
    }
}

void ListReport::AddItem(std::string_view text) {
    m_items.in.Append(m_empty ? "\n" : ",\n");
    m_items.in.Append(text);
    m_empty = false;
}

void ListReport::Finish(std::string_view head, std::string_view tail) {
    m_report.Append(head);
    std::vector<char> piece(pieceSize);
    while (std::size_t got = m_items.out.Read(piece.data(), piece.size())) {
        m_report.Append({piece.data(), got});
    }
    m_report.Append(tail);
    m_report.Sync();
    m_report.Close();
    std::error_code error;
    fs::rename(m_report.Path(), m_path, error);
    if (error) {
        throw std::system_error(error, m_path.string() + ": cannot be written");
    }
    m_finished = true;
}

}  // namespace tool
