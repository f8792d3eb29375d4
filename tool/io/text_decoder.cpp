#include "tool/io/text_decoder.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <cstring>

#include "tool/io/source_error.h"
#include "tool/io/text_units.h"

namespace tool {

namespace {

using namespace std::string_view_literals;

// Room for any real XML declaration, also in UTF-16.
constexpr std::size_t kHeadSize = 2048;
// A character that a chunk cuts leaves three bytes at the most.
constexpr std::size_t kCarryRoom = 4;

constexpr std::string_view kWhiteSpace = " \t\r\n";

struct Detected {
    Encoding encoding;
    std::size_t markLength;
};

bool OpensXml(char c) {
    return c == '<' || kWhiteSpace.find(c) != std::string_view::npos;
}

Detected DetectEncoding(std::string_view head) {
    if (head.starts_with("\xEF\xBB\xBF"sv)) {
        return {Encoding::Utf8, 3};
    }
    if (head.starts_with("\xFF\xFE"sv)) {
        return {Encoding::Utf16LittleEndian, 2};
    }
    if (head.starts_with("\xFE\xFF"sv)) {
        return {Encoding::Utf16BigEndian, 2};
    }
    if (head.size() >= 2 && OpensXml(head[0]) && head[1] == '\0') {
        return {Encoding::Utf16LittleEndian, 0};
    }
    if (head.size() >= 2 && head[0] == '\0' && OpensXml(head[1])) {
        return {Encoding::Utf16BigEndian, 0};
    }
    return {Encoding::Utf8, 0};
}

bool IsUtf32(std::string_view head) {
    return head.starts_with("\xFF\xFE\0\0"sv) || head.starts_with("\0\0\xFE\xFF"sv) ||
           head.starts_with("<\0\0\0"sv) || head.starts_with("\0\0\0<"sv);
}

// As XML has such names, so that one can be shown, and be a word of a command.
bool IsEncodingName(std::string_view name) {
    const auto isLetter = [](char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); };
    return !name.empty() && isLetter(name[0]) && std::all_of(name.begin(), name.end(), [&](char c) {
        return isLetter(c) || (c >= '0' && c <= '9') || c == '.' || c == '_' || c == '-';
    });
}

[[noreturn]] void RefuseEncoding(const std::string& source, const std::string& encoding) {
    if (!IsEncodingName(encoding)) {
        throw SourceError(
            source +
            ": its XML declaration names an encoding that is none, and packets are read in UTF-8 "
            "or UTF-16 only; name UTF-8 there when the file is in it, and convert it first "
            "otherwise");
    }
    throw SourceError(fmt::format(
        "{0}: the file is in {1}, and packets are read in UTF-8 or UTF-16 only; convert "
        "it first, for example with iconv -f {1} -t UTF-8, and name UTF-8 in its XML "
        "declaration",
        source, encoding));
}

// The value of the pseudo attribute "encoding" of an XML declaration at the start of `head`, empty
// when there is none.
std::string_view DeclaredEncoding(std::string_view head) {
    std::size_t begin = std::min(head.find_first_not_of(kWhiteSpace), head.size());
    head.remove_prefix(begin);
    std::size_t end = head.find("?>");
    if (!head.starts_with("<?xml") || end == std::string_view::npos) {
        return {};
    }
    head = head.substr(0, end);
    std::size_t name = head.find("encoding");
    if (name == std::string_view::npos) {
        return {};
    }
    std::size_t quote = head.find_first_of("'\"", name);
    if (quote == std::string_view::npos) {
        return {};
    }
    std::size_t close = head.find(head[quote], quote + 1);
    return head.substr(quote + 1, close == std::string_view::npos ? close : close - quote - 1);
}

bool IsKnownEncoding(std::string_view name) {
    std::string folded(name);
    std::transform(folded.begin(), folded.end(), folded.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    constexpr std::string_view known[] = {"",       "utf-8", "utf8",     "us-ascii", "ascii",
                                          "utf-16", "utf16", "utf-16le", "utf-16be"};
    return std::find(std::begin(known), std::end(known), folded) != std::end(known);
}

}  // namespace

TextDecoder::TextDecoder(ByteSource& source, std::size_t chunk)
    : m_source(source),
      m_chunk(chunk),
      m_buffer(std::make_unique_for_overwrite<char[]>(chunk + kCarryRoom)) {
    ReadHead();
    if (IsUtf32(m_head)) {
        RefuseEncoding(source.Name(), "UTF-32");
    }
    Detected detected = DetectEncoding(m_head);
    m_encoding = detected.encoding;
    m_textBegin = detected.markLength;
    m_headAt = detected.markLength;
    CheckDeclaration();
}

void TextDecoder::ReadHead() {
    m_head.resize(kHeadSize);
    std::size_t size = 0;
    while (size < kHeadSize) {
        std::size_t got = m_source.Read(m_head.data() + size, kHeadSize - size);
        if (got == 0) {
            break;
        }
        size += got;
    }
    m_head.resize(size);
    m_bytesRead = size;
}

void TextDecoder::CheckDeclaration() const {
    std::string_view head = std::string_view(m_head).substr(m_headAt);
    std::string decoded;
    if (m_encoding != Encoding::Utf8) {
        bool marked = false;
        AppendUtf16(head, m_encoding == Encoding::Utf16BigEndian, false, decoded, marked);
        head = decoded;
    }
    std::string_view name = DeclaredEncoding(head);
    if (!IsKnownEncoding(name)) {
        RefuseEncoding(m_source.Name(), std::string(name));
    }
}

std::size_t TextDecoder::NextBytes(char* buffer, std::size_t size) {
    if (m_headAt < m_head.size()) {
        std::size_t count = m_head.copy(buffer, size, m_headAt);
        m_headAt += count;
        return count;
    }
    std::size_t count = m_source.Read(buffer, size);
    m_bytesRead += count;
    return count;
}

bool TextDecoder::Read(std::string& out) {
    if (m_ended) {
        return false;
    }
    std::size_t got = NextBytes(m_buffer.get() + m_carry, m_chunk);
    m_ended = got == 0;
    std::size_t size = m_carry + got;
    std::size_t used = Decode(size, m_ended, out);
    m_carry = size - used;
    std::memmove(m_buffer.get(), m_buffer.get() + used, m_carry);
    return size > 0;
}

std::size_t TextDecoder::Decode(std::size_t size, bool last, std::string& out) {
    if (m_encoding == Encoding::Utf8) {
        std::size_t used = MarkInvalidUtf8(m_buffer.get(), size, last, m_marked);
        out.append(m_buffer.get(), used);
        return used;
    }
    return AppendUtf16(std::string_view(m_buffer.get(), size),
                       m_encoding == Encoding::Utf16BigEndian, last, out, m_marked);
}

std::uint64_t TextDecoder::SourceBytes(std::string_view text) const {
    return m_encoding == Encoding::Utf8 ? text.size() : 2 * CountUtf16Units(text);
}

}  // namespace tool
