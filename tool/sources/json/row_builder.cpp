#include "tool/sources/json/row_builder.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

namespace tool {

void RowBuilder::Begin(Row& row) {
    m_row = &row;
    row.tree.Clear();
    row.error.clear();
    row.isLast = false;
    row.nuls = 0;
    row.repeated = 0;
    row.repeatedName.clear();
    m_open.clear();
    m_tooDeep = 0;
    m_size = 0;
    m_name.clear();
    m_isComplete = false;
}

void RowBuilder::Value(RowTree::Kind kind, std::string_view text) {
    AddNode(kind, text);
    m_isComplete = m_open.empty() && m_tooDeep == 0;
}

void RowBuilder::Open(RowTree::Kind kind) {
    if (m_tooDeep > 0 || m_open.size() == m_limits.depth) {
        ++m_tooDeep;
        Fail(fmt::format("its values are nested deeper than {}, the most that --max-depth allows",
                         m_limits.depth));
        return;
    }
    AddNode(kind, {});
    m_open.push_back(m_row->error.empty() ? m_last : RowTree::kNone);
}

void RowBuilder::Close() {
    if (m_tooDeep > 0) {
        --m_tooDeep;
        return;
    }
    if (m_row->error.empty() && m_row->tree.KindOf(m_open.back()) == RowTree::Kind::Object) {
        DropRepeated(m_open.back());
    }
    m_open.pop_back();
    m_isComplete = m_open.empty();
}

void RowBuilder::Fail(std::string error) {
    if (m_row->error.empty()) {
        m_row->error = std::move(error);
        m_row->tree.Clear();
    }
}

void RowBuilder::AddNode(RowTree::Kind kind, std::string_view text) {
    constexpr std::size_t perNode = 8;
    m_size += m_name.size() + text.size() + perNode;
    if (m_size >= m_limits.size) {
        Fail(fmt::format("it is not shorter than {} bytes", m_limits.size));
    }
    if (!m_row->error.empty()) {
        return;
    }
    const bool isMember =
        !m_open.empty() && m_row->tree.KindOf(m_open.back()) == RowTree::Kind::Object;
    const std::string_view name = isMember ? WithoutNul(m_name, m_mendedName) : std::string_view();
    m_last = m_row->tree.Add(m_open.empty() ? RowTree::kNone : m_open.back(), kind, name,
                             WithoutNul(text, m_mendedText));
}

std::string_view RowBuilder::WithoutNul(std::string_view text, std::string& mended) {
    if (text.find('\0') == text.npos) {
        return text;
    }
    m_row->nuls += static_cast<std::uint64_t>(std::count(text.begin(), text.end(), '\0'));
    mended.clear();
    for (const char c : text) {
        if (c == '\0') {
            mended += "\xEF\xBF\xBD";
        } else {
            mended += c;
        }
    }
    return mended;
}

void RowBuilder::DropRepeated(RowTree::Index object) {
    m_row->repeated += m_row->tree.DropRepeated(object, m_row->repeatedName);
}

}  // namespace tool
