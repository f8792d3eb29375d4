#include "tool/packet/markup_sections.h"

#include <algorithm>

#include "tool/packet/markup_text.h"

namespace tool {

namespace {

constexpr std::string_view kCommentOpening = "<!--";
constexpr std::string_view kInstructionOpening = "<?";

}  // namespace

SectionKind SectionAt(std::string_view text) {
    if (text.starts_with(kCommentOpening)) {
        return SectionKind::Comment;
    }
    if (text.starts_with(kCDataOpening)) {
        return SectionKind::CData;
    }
    // A stray "<?" in front of anything else opens nothing that could close.
    if (text.starts_with(kInstructionOpening) && text.size() > 2 && StartsName(text[2])) {
        return SectionKind::Instruction;
    }
    return SectionKind::None;
}

std::size_t OpeningLength(SectionKind kind) {
    switch (kind) {
        case SectionKind::Comment:
            return kCommentOpening.size();
        case SectionKind::CData:
            return kCDataOpening.size();
        case SectionKind::Instruction:
            return kInstructionOpening.size();
        case SectionKind::None:
            break;
    }
    return 0;
}

std::size_t SectionEnds::Find(SectionKind kind, std::size_t opening, std::size_t limit) {
    std::size_t from = opening + OpeningLength(kind);
    switch (kind) {
        case SectionKind::Comment:
            return FindCommentEnd(from, limit);
        case SectionKind::CData:
            return FindMark("]]>", from, limit, m_cdataSearched);
        case SectionKind::Instruction:
            return FindMark("?>", from, limit, m_instructionSearched);
        case SectionKind::None:
            break;
    }
    return kNpos;
}

std::size_t SectionEnds::FindCommentEnd(std::size_t from, std::size_t limit) {
    while (true) {
        std::string_view text = m_window.Text().substr(0, limit);
        std::size_t dashes = text.find("--", from);
        if (dashes != kNpos && dashes + 2 < text.size()) {
            if (text[dashes + 2] == '>') {
                return dashes + 3;
            }
            if (text.substr(dashes - 2, 2) == "<!") {
                return kNpos;
            }
            from = dashes + 1;
        } else if (text.size() == limit || !m_window.Grow()) {
            return kNpos;
        } else if (dashes == kNpos) {
            from = std::max(from, text.empty() ? 0 : text.size() - 1);
        }
    }
}

std::size_t SectionEnds::FindMark(std::string_view mark, std::size_t from, std::size_t limit,
                                  std::uint64_t& searchedTo) {
    std::uint64_t front = m_window.Consumed();
    if (searchedTo > front) {
        from = std::max(from, static_cast<std::size_t>(searchedTo - front));
    }
    while (true) {
        std::string_view text = m_window.Text().substr(0, limit);
        std::size_t found = text.find(mark, from);
        if (found != kNpos) {
            return found + mark.size();
        }
        if (text.size() >= mark.size()) {
            from = std::max(from, text.size() - (mark.size() - 1));
        }
        if (text.size() == limit || !m_window.Grow()) {
            searchedTo = front + from;
            return kNpos;
        }
    }
}

}  // namespace tool
