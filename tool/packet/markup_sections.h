#ifndef TOOL_PACKET_MARKUP_SECTIONS_H
#define TOOL_PACKET_MARKUP_SECTIONS_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "tool/io/text_window.h"

namespace tool {

// The parts of XML in which tags are not tags.
enum class SectionKind { None, Comment, CData, Instruction };

struct Section {
    SectionKind kind;
    std::size_t begin;  // of the opening mark
    std::size_t end;    // after the closing mark
};

// The section that opens at the start of `text`. `text` must hold kSectionLookahead bytes unless
// the source ends before.
SectionKind SectionAt(std::string_view text);
constexpr std::size_t kSectionLookahead = 9;

// Length of the mark that opens a section: "<!--", "<![CDATA[", "<?".
std::size_t OpeningLength(SectionKind kind);

// Finds where sections end, and remembers what it has searched in vain, so that a text full of
// sections that never close is still searched once only.
class SectionEnds {
  public:
    // `window` stays the caller's and must outlive this object.
    explicit SectionEnds(TextWindow& window) : m_window(window) {}

    // The position after the mark that closes the section of `kind` opened at `opening`, growing
    // the window as far as needed but looking at nothing from position `limit` on. Returns kNpos
    // when the section does not close before that. Neither does a comment close in which another
    // comment opens: no XML reader takes such a comment, and its end mark belongs to the other one.
    std::size_t Find(SectionKind kind, std::size_t opening, std::size_t limit);

    static constexpr std::size_t kNpos = std::string_view::npos;

  private:
    std::size_t FindCommentEnd(std::size_t from, std::size_t limit);
    std::size_t FindMark(std::string_view mark, std::size_t from, std::size_t limit,
                         std::uint64_t& searchedTo);

    TextWindow& m_window;
    std::uint64_t m_cdataSearched = 0;  // in bytes of text from the source's start
    std::uint64_t m_instructionSearched = 0;
};

}  // namespace tool

#endif
