#include "tool/losses/changed_text.h"

#include <fmt/format.h>

#include <algorithm>

#include "tool/packet/importer_text.h"

namespace tool {

namespace {

constexpr std::size_t kNpos = std::string_view::npos;

constexpr std::size_t kLongestQuotation = 60;

// The longest reference is "&#x10FFFF;", and zeros in front of the number change nothing.
constexpr std::size_t kLongestReference = 16;

std::string WithLineFeeds(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\r') {
            out += text[i];
        } else if (i + 1 == text.size() || text[i + 1] != '\n') {
            out += '\n';
        }
    }
    return out;
}

// The reference, or what looks like one, that stands where `text` begins to differ from another
// one.
std::string_view ReferenceAt(std::string_view text, std::size_t at) {
    const std::size_t begin = text.rfind('&', at);
    const std::size_t end = begin == kNpos ? kNpos : text.find(';', begin);
    const bool isOne = end != kNpos && end >= at && end - begin < kLongestReference;
    return isOne ? text.substr(begin, end + 1 - begin) : std::string_view();
}

// Cut only where a character begins.
std::string_view Beginning(std::string_view text, std::size_t most) {
    if (text.size() <= most) {
        return text;
    }
    while (most > 0 && (static_cast<unsigned char>(text[most]) & 0xC0U) == 0x80U) {
        --most;
    }
    return text.substr(0, most);
}

}  // namespace

bool SameButForLineEnds(std::string_view a, std::string_view b) {
    return a == b || WithLineFeeds(a) == WithLineFeeds(b);
}

std::string DescribeChange(std::string_view written, std::string_view read) {
    const std::string a = WithLineFeeds(written);
    const std::string b = WithLineFeeds(read);
    const auto differing = std::mismatch(a.begin(), a.end(), b.begin(), b.end());
    const auto at = static_cast<std::size_t>(differing.first - a.begin());
    const std::string_view escape = ReferenceAt(a, at);
    const std::string_view reference = ReferenceAt(b, at);
    // The text "&amp;#7;" becomes the reference "&#7;" when its escape is decoded, which is another
    // case.
    const bool isWritten =
        reference.starts_with("&#") && a.find(reference.substr(1), at) == std::string::npos;
    if (isWritten) {
        return fmt::format("the reference \"{}\" stays as it is written", reference);
    }
    if (DecodePacketEscapes(escape) != escape) {
        return fmt::format("the text \"{}\" is decoded as if it were an escape", escape);
    }
    return fmt::format("{} becomes {}", Quoted(std::string_view(a).substr(at)),
                       Quoted(std::string_view(b).substr(at)));
}

std::string Quoted(std::string_view text) {
    std::string line(Beginning(text, kLongestQuotation));
    std::replace_if(
        line.begin(), line.end(), [](char c) { return static_cast<unsigned char>(c) < 0x20; }, ' ');
    return fmt::format("\"{}{}\"", line, text.size() > kLongestQuotation ? "..." : "");
}

}  // namespace tool
