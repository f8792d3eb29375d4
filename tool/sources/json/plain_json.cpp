#include "tool/sources/json/plain_json.h"

#include <unicode/utf8.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

namespace tool {

namespace {

// Values within values; far more than rows have.
constexpr std::size_t kDeepest = 32;

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

// The same byte in each place of a word.
constexpr std::uint64_t EachByte(unsigned char byte) {
    return std::uint64_t{0x0101010101010101U} * byte;
}

// Whether one of the eight bytes from `bytes` on may be something else than itself in a string: a
// quote, a backslash, a control character, or part of a character beyond ASCII. False is certain:
// subtracting sets the highest bit of what was below, and borrows from a neighbour only then.
bool MayHaveSpecial(const char* bytes) {
    std::uint64_t word = 0;
    std::memcpy(&word, bytes, sizeof word);
    const std::uint64_t quotes = (word ^ EachByte('"')) - EachByte(1);
    const std::uint64_t backslashes = (word ^ EachByte('\\')) - EachByte(1);
    const std::uint64_t controls = word - EachByte(0x20);
    return ((word | quotes | backslashes | controls) & EachByte(0x80)) != 0;
}

class PlainJson {
  public:
    PlainJson(std::string_view text, RowBuilder& builder) : m_text(text), m_builder(builder) {}

    bool Read() {
        if (!ReadValue(0)) {
            return false;
        }
        SkipBlanks();
        return m_at == m_text.size();
    }

    std::size_t ReadAhead() { return ReadValue(0) ? m_at : 0; }

  private:
    char Current() const { return m_at < m_text.size() ? m_text[m_at] : '\0'; }

    void SkipBlanks() {
        while (Current() == ' ' || Current() == '\t' || Current() == '\n' || Current() == '\r') {
            ++m_at;
        }
    }

    bool Skip(char c) {
        SkipBlanks();
        if (Current() != c) {
            return false;
        }
        ++m_at;
        return true;
    }

    bool ReadValue(std::size_t depth) {
        SkipBlanks();
        switch (Current()) {
            case '"':
                return ReadString() && Take(RowTree::Kind::Text, m_string);
            case '{':
                return depth < kDeepest && ReadObject(depth + 1);
            case '[':
                return depth < kDeepest && ReadList(depth + 1);
            case 't':
                return ReadWord("true", RowTree::Kind::Word);
            case 'f':
                return ReadWord("false", RowTree::Kind::Word);
            case 'n':
                return ReadWord("null", RowTree::Kind::Null);
            default:
                return ReadNumber();
        }
    }

    bool Take(RowTree::Kind kind, std::string_view text) {
        m_builder.Value(kind, text);
        return true;
    }

    bool ReadWord(std::string_view word, RowTree::Kind kind) {
        if (!m_text.substr(m_at).starts_with(word)) {
            return false;
        }
        m_at += word.size();
        return Take(kind, kind == RowTree::Kind::Null ? std::string_view() : word);
    }

    bool ReadObject(std::size_t depth) {
        ++m_at;
        m_builder.Open(RowTree::Kind::Object);
        if (!Skip('}')) {
            do {
                SkipBlanks();
                if (!ReadString()) {
                    return false;
                }
                m_builder.Member(m_string);
                if (!Skip(':') || !ReadValue(depth)) {
                    return false;
                }
            } while (Skip(','));
            if (!Skip('}')) {
                return false;
            }
        }
        m_builder.Close();
        return true;
    }

    bool ReadList(std::size_t depth) {
        ++m_at;
        m_builder.Open(RowTree::Kind::List);
        if (!Skip(']')) {
            do {
                if (!ReadValue(depth)) {
                    return false;
                }
            } while (Skip(','));
            if (!Skip(']')) {
                return false;
            }
        }
        m_builder.Close();
        return true;
    }

    // -?(0|[1-9][0-9]*)(\.[0-9]+)?
    bool ReadNumber() {
        const std::size_t begin = m_at;
        m_at += Current() == '-' ? 1 : 0;
        const std::size_t digits = m_at;
        if (!SkipDigits() || (m_text[digits] == '0' && m_at - digits > 1)) {
            return false;
        }
        if (Current() == '.') {
            ++m_at;
            if (!SkipDigits()) {
                return false;
            }
        }
        return Current() != 'e' && Current() != 'E' &&
               Take(RowTree::Kind::Number, m_text.substr(begin, m_at - begin));
    }

    bool SkipDigits() {
        const std::size_t begin = m_at;
        while (IsDigit(Current())) {
            ++m_at;
        }
        return m_at > begin;
    }

    // Puts the text of a string into m_string, which stays valid until the next one.
    bool ReadString() {
        if (Current() != '"') {
            return false;
        }
        const std::size_t begin = ++m_at;
        while (true) {
            SkipItself();
            const auto c = static_cast<unsigned char>(Current());
            if (c == '"') {
                m_string = m_text.substr(begin, m_at++ - begin);
                return true;
            }
            if (c == '\\') {
                return ReadEscaped(begin);
            }
            if (!SkipCharacter(c)) {
                return false;
            }
        }
    }

    // Most of a string.
    void SkipItself() {
        constexpr std::size_t step = sizeof(std::uint64_t);
        while (m_text.size() - m_at >= step && !MayHaveSpecial(m_text.data() + m_at)) {
            m_at += step;
        }
    }

    bool SkipCharacter(unsigned char c) {
        if (c < 0x20) {
            return false;
        }
        if (c < 0x80) {
            ++m_at;
            return true;
        }
        UChar32 character = 0;
        U8_NEXT(reinterpret_cast<const std::uint8_t*>(m_text.data()), m_at, m_text.size(),
                character);
        return character >= 0;
    }

    // Reads on in a string whose first escape has been reached. The string begins at `begin`.
    bool ReadEscaped(std::size_t begin) {
        m_unescaped.assign(m_text.substr(begin, m_at - begin));
        while (Current() != '"') {
            const std::size_t from = m_at;
            if (Current() == '\\') {
                ++m_at;
                const char meant = Meant(Current());
                if (meant == '\0') {
                    return false;
                }
                ++m_at;
                m_unescaped += meant;
                continue;
            }
            if (!SkipCharacter(static_cast<unsigned char>(Current()))) {
                return false;
            }
            m_unescaped.append(m_text, from, m_at - from);
        }
        ++m_at;
        m_string = m_unescaped;
        return true;
    }

    // What a letter behind a backslash stands for; NUL for any other.
    static char Meant(char letter) {
        constexpr std::string_view letters = "\"\\/bfnrt";
        constexpr std::string_view meant = "\"\\/\b\f\n\r\t";
        const std::size_t at = letters.find(letter);
        return at == letters.npos ? '\0' : meant[at];
    }

    std::string_view m_text;
    RowBuilder& m_builder;
    std::size_t m_at = 0;
    std::string_view m_string;
    std::string m_unescaped;
};

}  // namespace

bool ReadPlainJson(std::string_view text, RowBuilder& builder) {
    return PlainJson(text, builder).Read();
}

std::size_t ReadPlainJsonAhead(std::string_view text, RowBuilder& builder) {
    return PlainJson(text, builder).ReadAhead();
}

}  // namespace tool
