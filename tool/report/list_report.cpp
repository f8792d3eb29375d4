#include "tool/report/list_report.h"

#include <vector>

namespace tool {

namespace fs = std::filesystem;

ListReport::Spool::Spool(const fs::path& folder)
    : in(OutputFile::CreateUnnamed(folder)), out(in.Descriptor(), folder.string()) {}

ListReport::ListReport(const fs::path& path, std::size_t lists) : m_report(path) {
    for (std::size_t list = 0; list < lists; ++list) {
        m_lists.emplace_back(m_report.WorkFolder());
    }
}

void ListReport::AddItem(std::string_view text, std::size_t list) {
    Spool& items = m_lists.at(list);
    items.in.Append(items.empty ? "\n" : ",\n");
    items.in.Append(text);
    items.empty = false;
}

void ListReport::Append(Spool& list) {
    std::vector<char> piece(kPieceSize);
    while (std::size_t got = list.out.Read(piece.data(), piece.size())) {
        m_report.Append({piece.data(), got});
    }
}

void ListReport::Finish(std::string_view head, std::string_view tail,
                        std::initializer_list<std::string_view> between) {
    m_report.Append(head);
    const auto* text = between.begin();
    for (Spool& list : m_lists) {
        Append(list);
        if (text != between.end()) {
            m_report.Append(*text++);
        }
    }
    m_report.Append(tail);
    m_report.Finish();
}

}  // namespace tool
