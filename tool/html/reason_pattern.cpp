#include "tool/html/reason_pattern.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <utility>

#include "tool/html/html_text.h"

namespace tool {

namespace {

// A search for the end of a quote may go through all of it.
constexpr std::size_t kReadLimit = std::size_t{64} * 1024;
constexpr std::size_t kWordingLimit = 400;
constexpr std::size_t kValueLimit = 80;
constexpr std::size_t kValuesKept = 12;
constexpr std::size_t kPatternNameLimit = 60;

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

bool IsWordByte(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte >= 0x80 || std::isalnum(byte) != 0 || c == '_';
}

bool OpensQuote(std::string_view text, std::size_t at) {
    const bool apart =
        at == 0 || text[at - 1] == ' ' || text[at - 1] == '(' || text[at - 1] == '\n';
    return apart && at + 1 < text.size();
}

// Whether a value that began after `begin` has another quote in it that opens at `at`.
bool OpensInnerQuote(std::string_view text, std::size_t begin, std::size_t at) {
    if (at == begin + 1) {
        return at + 1 < text.size() && IsWordByte(text[at + 1]);
    }
    return OpensQuote(text, at) && text[at + 1] != ' ';
}

// Where the quote that opens at `begin` closes. Values hold quotes of their own, which are counted;
// where that finds no end, the next quote is the end.
std::size_t EndOfQuote(std::string_view text, std::size_t begin) {
    int depth = 0;
    for (std::size_t at = begin + 1; at < text.size(); ++at) {
        if (text[at] != '"') {
            continue;
        }
        if (OpensInnerQuote(text, begin, at)) {
            ++depth;
        } else if (depth-- == 0) {
            return at;
        }
    }
    return std::min(text.find('"', begin + 1), text.size() - 1);
}

bool AnnouncesName(std::string_view before) {
    static constexpr std::array<std::string_view, 2> kWords = {"field ", "type "};
    return std::any_of(kWords.begin(), kWords.end(),
                       [&](std::string_view word) { return before.ends_with(word); });
}

class Reader {
  public:
    explicit Reader(std::string_view reason) : m_reason(reason) {}

    ReasonPattern Read() {
        while (m_at < m_reason.size() && m_pattern.wording.size() < kWordingLimit) {
            if (m_reason[m_at] == '"' && OpensQuote(m_reason, m_at)) {
                TakeQuote();
            } else if (IsDigit(m_reason[m_at]) && (m_at == 0 || !IsWordByte(m_reason[m_at - 1]))) {
                TakeNumber();
            } else {
                // The mark itself must not come from the text.
                const char c = m_reason[m_at++];
                m_pattern.wording += c == ReasonPattern::kValueMark ? ' ' : c;
            }
        }
        m_pattern.wording = Clipped(m_pattern.wording, kWordingLimit);
        return std::move(m_pattern);
    }

  private:
    void TakeQuote() {
        const std::size_t end = EndOfQuote(m_reason, m_at);
        const std::string_view content = m_reason.substr(m_at + 1, end - m_at - 1);
        const bool isName = AnnouncesName(m_reason.substr(0, m_at)) &&
                            content.size() <= kPatternNameLimit &&
                            content.find(ReasonPattern::kValueMark) == std::string_view::npos;
        m_pattern.wording += '"';
        if (isName) {
            m_pattern.wording += content;
        } else {
            TakeValue(content);
        }
        m_pattern.wording += '"';
        m_at = end + 1;
    }

    void TakeNumber() {
        std::size_t end = m_at;
        while (end < m_reason.size() && IsDigit(m_reason[end])) {
            ++end;
        }
        TakeValue(m_reason.substr(m_at, end - m_at));
        m_at = end;
    }

    void TakeValue(std::string_view value) {
        m_pattern.wording += ReasonPattern::kValueMark;
        if (m_pattern.values.size() < kValuesKept) {
            m_pattern.values.push_back(Clipped(value, kValueLimit));
        }
    }

    std::string_view m_reason;
    std::size_t m_at = 0;
    ReasonPattern m_pattern;
};

}  // namespace

ReasonPattern PatternOf(std::string_view reason) {
    return Reader(reason.substr(0, kReadLimit)).Read();
}

std::string Readable(const ReasonPattern& pattern) {
    std::string text;
    std::size_t next = 0;
    for (const char c : pattern.wording) {
        if (c != ReasonPattern::kValueMark) {
            text += c;
            continue;
        }
        const bool known = next < pattern.values.size() && !pattern.values[next].empty();
        text += known ? pattern.values[next] : std::string(kEllipsis);
        ++next;
    }
    return text;
}

}  // namespace tool
