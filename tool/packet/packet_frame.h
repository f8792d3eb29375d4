#ifndef TOOL_PACKET_PACKET_FRAME_H
#define TOOL_PACKET_PACKET_FRAME_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "tool/packet/markup_sections.h"

namespace tool {

// What is wrong with what stands around the records of a packet.
enum class FrameDefectKind {
    CutShort,     // an element is open at the end of the packet, or a tag is
    Text,         // text beside records, or outside of all elements
    Markup,       // tags that do not fit together, sections that do not close
    Undecodable,  // bytes that are not text
};

struct FrameDefect {
    FrameDefectKind kind;
    std::uint64_t line;  // from 1
    std::string text;    // what is wrong, for people, valid UTF-8
};

using FrameHandler = std::function<void(const FrameDefect&)>;

// Examines what stands around the records of a packet, which an import ignores. A sound packet
// loses nothing by that, but one that was cut short or mixed with something else may lose records.
// A packet needs no root element, and its elements may hold anything beside records except text
// between them.
class PacketFrame {
  public:
    // `take` is called for each defect. Elements that are nested deeper than `maxDepth` are a
    // defect, after which only the decoding is still checked.
    PacketFrame(FrameHandler take, std::size_t maxDepth);

    // The pieces of the packet in their order, each with the line that it begins on. Texts hold
    // decoding marks.

    // Any part of what stands outside of records and sections, cut anywhere.
    void AddText(std::string_view text, std::uint64_t line);
    // A whole section, and one that opens and does not close.
    void AddSection(SectionKind kind, std::string_view section, std::uint64_t line);
    void AddOpenSection(SectionKind kind, std::uint64_t line);
    // A record that ends where it should.
    void AddRecord(std::uint64_t line);
    // One that does not: `text` is as much of it as was read as the record. What follows, up to the
    // next record, is taken for the rest of it.
    void AddBrokenRecord(std::string_view text, std::uint64_t line);
    // The packet's end.
    void End(std::uint64_t line);

  private:
    enum class State { Text, Opened, StartTag, EndTag, Quoted, Declaration };
    struct Run {
        std::uint64_t line = 0;  // 0: no text
        std::string text;        // its beginning
    };
    struct Element {
        std::string name;
        std::uint64_t line = 0;
        bool holdsRecord = false;
        Run text;  // the first one in it while it holds no record
    };

    void AddCharacter(char c);
    void AddToText(char c);
    void AddToTag(char c);
    void AddToDeclaration(char c);
    void EndTag();
    void Open();
    void Close();
    void EndText();
    void BreakTag();
    void NoteMark(char mark);
    void Report(FrameDefectKind kind, std::uint64_t line, std::string text);
    Element& Innermost() { return m_open.back(); }
    std::size_t Depth() const { return m_open.size() - 1; }

    FrameHandler m_take;
    std::size_t m_maxDepth;
    std::vector<Element> m_open;  // the first one stands for the packet itself
    State m_state = State::Text;
    State m_quotedIn = State::StartTag;
    char m_quote = '"';
    char m_last = ' ';           // the character before, in a tag
    std::size_t m_brackets = 0;  // that are open in a declaration
    std::string m_name;          // of the tag
    bool m_nameEnded = false;
    std::uint64_t m_line = 1;     // of the character in hand
    std::uint64_t m_tagLine = 1;  // of the "<"
    Run m_text;                   // the text in hand
    bool m_markSeen = false;      // since the last record
    bool m_inBrokenRecord = false;
    bool m_tooDeep = false;
};

}  // namespace tool

#endif
