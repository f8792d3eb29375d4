#include "platform/xmlstream/plain_reader.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <string>

#include "platform/foundation/markup_escapes.h"
#include "platform/foundation/utf.h"

namespace {

enum class Kind : unsigned char {
    kOther,    // what is not plain, or not everywhere
    kText,     // ASCII that stands for itself in text, and in the values of attributes as well
    kBlank,    // line feed and tab
    kEscape,   // the ampersand
    kBracket,  // the closing square one, which may be part of "]]>"
    kTag,      // the opening angle bracket
    kBeyond    // ASCII
};

constexpr std::array<Kind, 256> KindsOfBytes() {
    std::array<Kind, 256> kinds{};
    for (std::size_t byte = 0; byte < kinds.size(); ++byte) {
        kinds[byte] = byte >= 0x80 ? Kind::kBeyond : byte >= 0x20 ? Kind::kText : Kind::kOther;
    }
    kinds['\n'] = Kind::kBlank;
    kinds['\t'] = Kind::kBlank;
    kinds['&'] = Kind::kEscape;
    kinds[']'] = Kind::kBracket;
    kinds['<'] = Kind::kTag;
    return kinds;
}
constexpr std::array<Kind, 256> kKinds = KindsOfBytes();

Kind KindOf(char byte) {
    return kKinds[static_cast<unsigned char>(byte)];
}

// How many bytes, of the first eight, are Kind::kText before one that is not. Most bytes of most
// texts are.
std::size_t CountText(const char* bytes) {
    constexpr std::uint64_t each = 0x0101010101010101;
    constexpr std::uint64_t highest = each * 0x80;
    std::uint64_t eight = 0;
    std::memcpy(&eight, bytes, sizeof eight);
    if constexpr (std::endian::native == std::endian::big) {
        eight = std::byteswap(eight);
    }
    // Sets the highest bit of bytes below the limit. The first bit that is set is right; those
    // after it may not be, since a byte borrows from the next one.
    const auto below = [](std::uint64_t value, std::uint64_t limit) {
        return (value - each * limit) & ~value;
    };
    const std::uint64_t others = (eight | below(eight, 0x20) | below(eight ^ each * '&', 1) |
                                  below(eight ^ each * '<', 1) | below(eight ^ each * ']', 1)) &
                                 highest;
    return static_cast<std::size_t>(std::countr_zero(others)) / 8;
}

constexpr bool IsLetter(char byte) {
    return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') || byte == '_';
}

constexpr std::array<bool, 256> BytesInNames() {
    std::array<bool, 256> inNames{};
    for (std::size_t byte = 0; byte < 0x80; ++byte) {
        const auto character = static_cast<char>(byte);
        inNames[byte] = IsLetter(character) || (character >= '0' && character <= '9') ||
                        character == '-' || character == '.';
    }
    return inNames;
}
constexpr std::array<bool, 256> kInNames = BytesInNames();

bool IsInName(char byte) {
    return kInNames[static_cast<unsigned char>(byte)];
}

// UTF-8 of characters that may stand in XML; those that are markup or controls are looked at
// before.
bool IsXmlText(std::string_view text) {
    std::u16string units;
    return !Utf8ToUtf16(text, units).has_value() &&
           units.find_first_of(u"\uFFFE\uFFFF") == std::u16string::npos;
}

// True for ASCII that is plain wherever it stands in text. Without an early end it is done for many
// bytes at once.
bool IsPlainAscii(std::string_view text) {
    unsigned char others = 0;
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        const bool isControl = byte < 0x20 && byte != '\n' && byte != '\t';
        others |=
            static_cast<unsigned char>(isControl || byte >= 0x80 || byte == '&' || byte == ']');
    }
    return others == 0;
}

// Takes a text apart from its front on.
class Cutter {
  public:
    Cutter(std::string_view text, std::size_t at) : m_text(text), m_at(at) {}

    std::size_t At() const { return m_at; }

    // Up to the next tag. False when it is not there, or something is not plain.
    bool CutText(std::string_view& cut) {
        const std::size_t begin = m_at;
        const std::size_t end = m_text.find('<', begin);
        if (end != std::string_view::npos && IsPlainAscii(m_text.substr(begin, end - begin))) {
            m_at = end;
            cut = m_text.substr(begin, end - begin);
            return true;
        }
        bool isAscii = true;
        for (; StepOverText(); ++m_at) {
            switch (KindOf(m_text[m_at])) {
                case Kind::kText:
                case Kind::kBlank:
                    break;
                case Kind::kBeyond:
                    isAscii = false;
                    break;
                case Kind::kEscape:
                    if (!StandsAtEscape()) {
                        return false;
                    }
                    break;
                case Kind::kBracket:
                    if (m_text.substr(m_at).starts_with("]]>")) {
                        return false;
                    }
                    break;
                case Kind::kTag:
                    cut = m_text.substr(begin, m_at - begin);
                    return isAscii || IsXmlText(cut);
                default:
                    return false;
            }
        }
        return false;
    }

    bool CutTag(PlainReader::Tag& tag) {
        Cut('<');
        tag.isEnd = Cut('/');
        tag.name = CutName();
        if (!tag.isEnd && Cut(' ')) {
            tag.attribute = CutName();
            if (tag.attribute.empty() || !Cut('=') || !Cut('"') || !CutValue(tag.value)) {
                return false;
            }
        }
        return !tag.name.empty() && Cut('>');
    }

  private:
    // To the next byte that may be something else. False when there is none.
    bool StepOverText() {
        constexpr std::size_t step = 8;
        if constexpr (std::endian::native == std::endian::little) {
            std::size_t count = step;
            while (count == step && m_text.size() - m_at >= step) {
                count = CountText(m_text.data() + m_at);
                m_at += count;
            }
        }
        return m_at < m_text.size();
    }

    std::string_view CutName() {
        const std::size_t begin = m_at;
        if (m_at < m_text.size() && IsLetter(m_text[m_at])) {
            while (m_at < m_text.size() && IsInName(m_text[m_at])) {
                ++m_at;
            }
        }
        return m_text.substr(begin, m_at - begin);
    }

    // The value of an attribute, up to its quotation mark, which is cut as well.
    bool CutValue(std::string_view& cut) {
        const std::size_t begin = m_at;
        while (m_at < m_text.size() && m_text[m_at] != '"' && KindOf(m_text[m_at]) == Kind::kText) {
            ++m_at;
        }
        cut = m_text.substr(begin, m_at - begin);
        return Cut('"');
    }

    bool Cut(char expected) {
        const bool found = m_at < m_text.size() && m_text[m_at] == expected;
        m_at += found ? 1 : 0;
        return found;
    }

    bool StandsAtEscape() const {
        const std::string_view rest = m_text.substr(m_at);
        return std::any_of(
            kMarkupEscapes.begin(), kMarkupEscapes.end(),
            [rest](const MarkupEscape& escape) { return rest.starts_with(escape.sequence); });
    }

    std::string_view m_text;
    std::size_t m_at;
};

}  // namespace

PlainReader::Result PlainReader::ReadTag(std::string_view text, std::size_t& at, Tag& tag) {
    if (at == 0 && text.starts_with(kByteOrderMark)) {
        return Result::kNotPlain;
    }
    Cutter cutter(text, at);
    if (!cutter.CutText(tag.before)) {
        return cutter.At() == text.size() ? Result::kIncomplete : Result::kNotPlain;
    }
    if (text.find('>', cutter.At()) == std::string_view::npos) {
        return Result::kIncomplete;
    }
    if (!cutter.CutTag(tag)) {
        return Result::kNotPlain;
    }
    at = cutter.At();
    return Result::kRead;
}

PlainReader::Result PlainReader::ReadTag(std::string_view text, std::size_t& at,
                                         TokenQueue& queue) {
    Tag tag;
    std::size_t next = at;
    if (const Result result = ReadTag(text, next, tag); result != Result::kRead) {
        return result;
    }
    const bool fits =
        tag.isEnd ? queue.Depth() > 0 && queue.OpenName() == tag.name : queue.Depth() < kDeepest;
    if (!fits) {
        return Result::kNotPlain;
    }
    if (!tag.before.empty()) {
        queue.AddWholeText(tag.before);
    }
    if (tag.isEnd) {
        queue.AddEndTag(tag.name);
    } else {
        queue.AddStartTag(tag.name, tag.attribute, tag.value);
    }
    at = next;
    return Result::kRead;
}
