#include "tool/packet/packet_frame.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "tool/io/decoding_marks.h"
#include "tool/io/text_units.h"
#include "tool/packet/markup_text.h"

namespace tool {

namespace {

// As much of a text or a name as is kept to compare and to show.
constexpr std::size_t kKept = 80;

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

bool IsMark(char c) {
    return static_cast<unsigned char>(c) >= NulMark;
}

// Valid UTF-8, although what was kept may end within a character.
std::string ReadableStart(std::string_view text) {
    const auto isPart = [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U; };
    if (text.size() == kKept) {
        while (!text.empty() && isPart(text.back())) {
            text.remove_suffix(1);
        }
        text.remove_suffix(text.empty() ? 0 : 1);
    }
    std::string shown = ReplaceDecodingMarks(text);
    std::replace_if(shown.begin(), shown.end(), IsXmlBlank, ' ');
    return shown;
}

std::string_view NameOf(SectionKind kind) {
    switch (kind) {
        case SectionKind::Comment:
            return "a comment";
        case SectionKind::CData:
            return "a CDATA section";
        default:
            return "a processing instruction";
    }
}

}  // namespace

PacketFrame::PacketFrame(FrameHandler take, std::size_t maxDepth)
    : m_take(std::move(take)), m_maxDepth(maxDepth) {
    m_open.emplace_back();
    m_open.back().holdsRecord = true;
}

void PacketFrame::AddText(std::string_view text, std::uint64_t line) {
    m_line = line;
    for (const char c : text) {
        AddCharacter(c);
        m_line += c == '\n' ? 1 : 0;
    }
}

void PacketFrame::AddCharacter(char c) {
    if (IsMark(c)) {
        NoteMark(c);
        c = ' ';
    }
    if (m_tooDeep) {
        return;
    }
    switch (m_state) {
        case State::Text:
            AddToText(c);
            return;
        case State::Declaration:
            AddToDeclaration(c);
            return;
        case State::Quoted:
            if (c == m_quote) {
                m_state = m_quotedIn;
            } else if (c == '<' && m_quotedIn != State::Declaration) {
                BreakTag();
                AddToText(c);
            }
            return;
        default:
            AddToTag(c);
    }
}

void PacketFrame::AddToText(char c) {
    if (c == '<') {
        m_state = State::Opened;
        m_tagLine = m_line;
        return;
    }
    if (m_text.line == 0) {
        if (IsXmlBlank(c)) {
            return;
        }
        m_text.line = m_line;
    }
    if (m_text.text.size() < kKept) {
        m_text.text += c;
    }
    if (m_text.text == kByteOrderMark) {
        m_text = {};
    }
}

void PacketFrame::AddToTag(char c) {
    if (m_state == State::Opened) {
        m_name.clear();
        m_nameEnded = false;
        m_last = ' ';
        if (c == '/') {
            m_state = State::EndTag;
        } else if (c == '!') {
            m_state = State::Declaration;
            m_brackets = 0;
        } else if (StartsName(c)) {
            m_state = State::StartTag;
            m_name += c;
        } else {
            BreakTag();
            AddToText(c);
        }
        return;
    }
    if (c == '>') {
        EndTag();
    } else if (c == '<') {
        BreakTag();
        AddToText(c);
    } else if (m_state == State::StartTag && (c == '"' || c == '\'')) {
        m_quote = c;
        m_quotedIn = State::StartTag;
        m_state = State::Quoted;
    } else {
        m_nameEnded = m_nameEnded || IsXmlBlank(c) || c == '/';
        if (!m_nameEnded && m_name.size() < kKept) {
            m_name += c;
        }
    }
    m_last = c;
}

// "<!DOCTYPE ...>", whose brackets may hold declarations of their own.
void PacketFrame::AddToDeclaration(char c) {
    if (c == '"' || c == '\'') {
        m_quote = c;
        m_quotedIn = State::Declaration;
        m_state = State::Quoted;
    } else if (c == '[' || c == '<') {
        ++m_brackets;
    } else if (m_brackets == 0) {
        m_state = c == '>' ? State::Text : m_state;
    } else if (c == ']' || c == '>') {
        --m_brackets;
    }
}

void PacketFrame::EndTag() {
    const bool isEmpty = m_state == State::StartTag && m_last == '/';
    const bool opens = m_state == State::StartTag;
    m_state = State::Text;
    EndText();
    if (!opens) {
        Close();
    } else if (!isEmpty) {
        Open();
    }
}

void PacketFrame::Open() {
    if (m_inBrokenRecord) {
        return;
    }
    if (Depth() == m_maxDepth) {
        Report(FrameDefectKind::Markup, m_tagLine,
               fmt::format("the elements outside of records are nested deeper than {}, the most "
                           "that --max-depth allows, and are not looked at from here on",
                           m_maxDepth));
        m_tooDeep = true;
        return;
    }
    m_open.push_back({m_name, m_tagLine, false, {}});
}

void PacketFrame::Close() {
    const auto found =
        std::find_if(m_open.rbegin(), m_open.rend() - 1,
                     [this](const Element& element) { return element.name == m_name; });
    if (found == m_open.rend() - 1) {
        if (!m_inBrokenRecord) {
            Report(FrameDefectKind::Markup, m_tagLine,
                   fmt::format("</{}> closes no element", ReadableStart(m_name)));
        }
        return;
    }
    if (found != m_open.rbegin() && !m_inBrokenRecord) {
        Report(
            FrameDefectKind::Markup, m_tagLine,
            fmt::format("</{}> comes before the end of <{}>, which opens on line {}",
                        ReadableStart(m_name), ReadableStart(Innermost().name), Innermost().line));
    }
    m_open.erase(found.base() - 1, m_open.end());
}

// Text in an element is no defect unless a record stands beside it.
void PacketFrame::EndText() {
    if (m_text.line == 0) {
        return;
    }
    const Run text = std::exchange(m_text, {});
    if (m_inBrokenRecord) {
        return;
    }
    if (Innermost().holdsRecord) {
        Report(FrameDefectKind::Text, text.line,
               fmt::format("text outside of records: \"{}\"", ReadableStart(text.text)));
    } else if (Innermost().text.line == 0) {
        Innermost().text = text;
    }
}

void PacketFrame::BreakTag() {
    m_state = State::Text;
    if (!m_inBrokenRecord) {
        Report(FrameDefectKind::Markup, m_tagLine, "\"<\" begins a tag that does not end");
    }
}

void PacketFrame::NoteMark(char mark) {
    if (!std::exchange(m_markSeen, true)) {
        Report(FrameDefectKind::Undecodable, m_line,
               fmt::format("{} outside of records", DescribeDecodingMark(mark)));
    }
}

void PacketFrame::AddSection(SectionKind kind, std::string_view section, std::uint64_t line) {
    m_line = line;
    if (const std::size_t mark = FindDecodingMark(section); mark != kNotFound) {
        m_line += CountLineEnds(section.substr(0, mark));
        NoteMark(section[mark]);
    }
    if (kind != SectionKind::CData || m_state != State::Text || m_tooDeep) {
        return;
    }
    section.remove_prefix(OpeningLength(kind));
    section.remove_suffix(3);
    m_line = line;
    for (const char c : section.substr(0, section.find_last_not_of(" \t\r\n") + 1)) {
        // A "<" is a character like any other here.
        AddToText(c == '<' || IsMark(c) ? '?' : c);
        m_line += c == '\n' ? 1 : 0;
        if (m_text.text.size() == kKept) {
            break;
        }
    }
}

void PacketFrame::AddOpenSection(SectionKind kind, std::uint64_t line) {
    if (!m_inBrokenRecord && !m_tooDeep) {
        Report(FrameDefectKind::Markup, line,
               fmt::format("{} opens and does not close", NameOf(kind)));
    }
}

void PacketFrame::AddRecord(std::uint64_t line) {
    m_line = line;
    m_markSeen = false;
    if (m_tooDeep) {
        return;
    }
    if (m_state != State::Text) {
        BreakTag();
    }
    EndText();
    m_inBrokenRecord = false;
    Innermost().holdsRecord = true;
    if (const Run text = std::exchange(Innermost().text, {}); text.line != 0) {
        Report(FrameDefectKind::Text, text.line,
               fmt::format("text outside of records: \"{}\"", ReadableStart(text.text)));
    }
}

void PacketFrame::AddBrokenRecord(std::string_view text, std::uint64_t line) {
    AddRecord(line);
    m_inBrokenRecord = true;
    // What was read as the record may include the end tags of elements around it.
    while (m_open.size() > 1 && text.find("</" + Innermost().name) != kNotFound) {
        m_open.pop_back();
    }
}

void PacketFrame::End(std::uint64_t line) {
    m_line = line;
    if (m_tooDeep) {
        return;
    }
    EndText();
    if (m_state != State::Text) {
        Report(FrameDefectKind::CutShort, m_tagLine,
               "the packet is cut short: it ends within a tag");
    } else if (m_open.size() > 1) {
        Report(FrameDefectKind::CutShort, line,
               fmt::format("the packet is cut short: the element <{}>, which opens on line {}, "
                           "does not end",
                           ReadableStart(m_open[1].name), m_open[1].line));
    }
}

void PacketFrame::Report(FrameDefectKind kind, std::uint64_t line, std::string text) {
    m_take({kind, line, std::move(text)});
}

}  // namespace tool
