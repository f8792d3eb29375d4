#include "tool/list_report.h"

#include <system_error>
#include <vector>

namespace tool {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t pieceSize = std::size_t{256} * 1024;

}  // namespace

ListReport::Spool::Spool(const fs::path& path)
    : in(CreateBeside(path, "items")), out(in.Path(), in.Path().string()) {
    std::error_code ignored;
    fs::remove(in.Path(), ignored);
}

ListReport::ListReport(const fs::path& path) : m_items(path), m_report(path) {}

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
    m_report.Finish();
}

}  // namespace tool
