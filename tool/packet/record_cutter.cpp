#include "tool/packet/record_cutter.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "tool/io/decoding_marks.h"
#include "tool/io/text_units.h"
#include "tool/packet/markup_text.h"

namespace tool {

namespace {

constexpr std::string_view kStartTag = "<record>";
constexpr std::string_view kEndTagHead = "</record";

// Enough bytes to tell every mark and tag that matters from the others.
constexpr std::size_t kLookahead = 9;
static_assert(kLookahead >= kSectionLookahead && kLookahead >= kEndTagHead.size());

// Blanks that an end tag may hold before its ">"; more than this is no end tag to us.
constexpr std::size_t kEndTagBlanks = 256;

// As much of a tag as is looked at to see whether it names a record, and as is shown to people.
constexpr std::size_t kTagLookahead = 80;

// Rules out nearly every tag of a record by its second byte. `tag` has three bytes at least.
bool MayMatter(const char* tag) {
    return tag[1] == 'r' || tag[1] == '!' || tag[1] == '?' || (tag[1] == '/' && tag[2] == 'r');
}

// The first "<" in [`from`, `end`) that may begin something of interest, or that has too few bytes
// of `text` after it to tell; kNotFound when there is none.
std::size_t ScanTags(std::string_view text, std::size_t from, std::size_t end) {
    while (from < end) {
        const void* found = std::memchr(text.data() + from, '<', end - from);
        if (found == nullptr) {
            break;
        }
        const char* tag = static_cast<const char*>(found);
        auto at = static_cast<std::size_t>(tag - text.data());
        if (at + kLookahead > text.size() || MayMatter(tag)) {
            return at;
        }
        from = at + 1;
    }
    return kNotFound;
}

bool EqualsNoCase(std::string_view text, std::string_view lower) {
    return std::equal(text.begin(), text.end(), lower.begin(), lower.end(), [](char a, char b) {
        return (a >= 'A' && a <= 'Z' ? static_cast<char>(a - 'A' + 'a') : a) == b;
    });
}

// Whether `tag` is a start tag whose name, apart from case and prefix, is "record".
bool NamesRecord(std::string_view tag) {
    std::string_view name = tag.substr(1, tag.find_first_of(" \t\r\n/>", 1) - 1);
    std::size_t colon = name.find(':');
    return EqualsNoCase(colon == kNotFound ? name : name.substr(colon + 1), "record");
}

// Does not cut a character in two, and is valid UTF-8 also where the source is not.
std::string Excerpt(std::string_view text) {
    std::size_t size = std::min(text.size(), kTagLookahead);
    while (size > 0 && size < text.size() && (static_cast<unsigned char>(text[size]) >> 6U) == 2) {
        --size;
    }
    std::string_view part = text.substr(0, size);
    std::size_t end = part.find_first_of("\r\n>");
    return ReplaceDecodingMarks(part.substr(0, end == kNotFound ? kNotFound : end + 1));
}

}  // namespace

RecordCutter::RecordCutter(TextWindow& window, std::size_t limit, UnseenHandler unseen,
                           PacketFrame* frame)
    : m_window(window),
      m_limit(limit),
      m_unseen(std::move(unseen)),
      m_frame(frame),
      m_ends(window) {}

bool RecordCutter::Next(CutRecord& record) {
    m_window.Consume(std::exchange(m_taken, 0));
    if (!SkipToRecord()) {
        return false;
    }
    record.line = m_window.Line();
    record.offset = m_window.SourceOffset();
    record.defect = RecordDefect::None;
    record.openSection = false;
    record.disguised.clear();
    m_taken = FindRecordEnd(record);
    record.text = record.defect == RecordDefect::TooLong ? std::string_view()
                                                         : m_window.Text().substr(0, m_taken);
    TellFrame(record);
    return true;
}

void RecordCutter::TellFrame(const CutRecord& record) {
    if (m_frame == nullptr) {
        return;
    }
    if (record.defect == RecordDefect::None) {
        m_frame->AddRecord(record.line);
    } else {
        m_frame->AddBrokenRecord(m_window.Text().substr(0, m_taken), record.line);
    }
}

// Consumes what is neither record nor section.
void RecordCutter::Pass(std::size_t size) {
    if (m_frame != nullptr) {
        m_frame->AddText(m_window.Text().substr(0, size), m_window.Line());
    }
    m_window.Consume(size);
}

bool RecordCutter::SkipToRecord() {
    while (true) {
        std::string_view text = m_window.Text();
        Pass(std::min(text.find('<'), text.size()));
        if (m_window.Text().empty()) {
            if (!m_window.Grow()) {
                if (m_frame != nullptr) {
                    m_frame->End(m_window.Line());
                }
                return false;
            }
            continue;
        }
        m_window.Ensure(kLookahead);
        if (m_window.Text().starts_with(kStartTag)) {
            return true;
        }
        SkipMarkup();
    }
}

void RecordCutter::SkipMarkup() {
    SectionKind kind = SectionAt(m_window.Text());
    if (kind == SectionKind::None) {
        ReportOtherSpelling();
        Pass(1);
        return;
    }
    std::size_t end = m_ends.Find(kind, 0, m_limit);
    if (end == kNotFound) {
        if (m_frame != nullptr) {
            m_frame->AddOpenSection(kind, m_window.Line());
        }
        m_window.Consume(OpeningLength(kind));
        return;
    }
    ReportHidden(end);
    if (m_frame != nullptr) {
        m_frame->AddSection(kind, m_window.Text().substr(0, end), m_window.Line());
    }
    m_window.Consume(end);
}

// The next "<" from `from` on that may begin something of interest, or kNotFound when the record's
// limit or the source's end comes first.
std::size_t RecordCutter::FindMarkup(std::size_t from) {
    while (true) {
        std::string_view text = m_window.Text();
        std::size_t end = std::min(text.size(), m_limit);
        std::size_t at = ScanTags(text, from, end);
        if (at == kNotFound) {
            from = std::max(from, end);
            if (end == m_limit || !m_window.Grow()) {
                return kNotFound;
            }
        } else if (at + kLookahead <= text.size() || !m_window.Grow()) {
            return at;
        } else {
            from = at;
        }
    }
}

std::size_t RecordCutter::FindRecordEnd(CutRecord& record) {
    std::size_t at = kStartTag.size();
    while ((at = FindMarkup(at)) != kNotFound) {
        std::string_view rest = m_window.Text().substr(at);
        if (rest.starts_with(kStartTag)) {
            record.defect = RecordDefect::Unterminated;
            return at;
        }
        if (std::size_t length = EndTagLength(at); length > 0) {
            return at + length;
        }
        rest = m_window.Text().substr(at);
        SectionKind kind = SectionAt(rest);
        at = kind == SectionKind::None ? at + 1 : SkipSection(kind, at, record);
    }
    std::size_t size = m_window.Text().size();
    record.defect = size >= m_limit ? RecordDefect::TooLong : RecordDefect::Unterminated;
    return std::min(size, m_limit);
}

// Length of the record's end tag if one stands at `at`, else 0.
std::size_t RecordCutter::EndTagLength(std::size_t at) {
    if (!m_window.Text().substr(at).starts_with(kEndTagHead)) {
        return 0;
    }
    for (std::size_t i = kEndTagHead.size(); i < kEndTagHead.size() + kEndTagBlanks; ++i) {
        if (!m_window.Ensure(at + i + 1)) {
            return 0;
        }
        char c = m_window.Text()[at + i];
        if (c == '>') {
            return i + 1;
        }
        if (!IsXmlBlank(c)) {
            return 0;
        }
    }
    return 0;
}

// The position from which the search for the record's end goes on.
std::size_t RecordCutter::SkipSection(SectionKind kind, std::size_t at, CutRecord& record) {
    std::size_t end = m_ends.Find(kind, at, m_limit);
    if (end == kNotFound) {
        record.openSection = true;
        return at + OpeningLength(kind);
    }
    if (m_window.Text().substr(at, end - at).find(kStartTag) != kNotFound) {
        record.disguised.push_back({kind, at, end});
    }
    return end;
}

void RecordCutter::ReportHidden(std::size_t size) {
    if (!m_unseen) {
        return;
    }
    std::string_view section = m_window.Text().substr(0, size);
    std::uint64_t line = m_window.Line();
    std::size_t counted = 0;
    for (std::size_t at = section.find(kStartTag); at != kNotFound;
         at = section.find(kStartTag, at + 1)) {
        line += CountLineEnds(section.substr(counted, at - counted));
        counted = at;
        m_unseen({UnseenKind::InsideSection, line, std::string(kStartTag)});
    }
}

void RecordCutter::ReportOtherSpelling() {
    if (!m_unseen) {
        return;
    }
    m_window.Ensure(kTagLookahead + 4);
    std::string_view tag = m_window.Text().substr(0, kTagLookahead + 4);
    if (NamesRecord(tag)) {
        m_unseen({UnseenKind::OtherSpelling, m_window.Line(), Excerpt(tag)});
    }
}

}  // namespace tool
