#include "tool/text/masked_password.h"

#include <algorithm>

namespace tool {

namespace {

constexpr std::string_view kMask = "***";
constexpr std::string_view kBlanks = " \t\r\n";

// Where a word that begins at `begin` ends.
std::size_t EndOfWord(std::string_view text, std::size_t begin) {
    return std::min(text.find_first_of(kBlanks, begin), text.size());
}

// A password may hold any character unescaped when a person types it, so it ends at the word's last
// "@".
std::string WithoutUrlPassword(std::string_view word) {
    const std::size_t scheme = word.find(":/");
    const std::size_t user = word.find_first_not_of('/', std::min(scheme, word.size() - 1) + 1);
    const std::size_t colon = word.find(':', user);
    const std::size_t at = word.rfind('@');
    if (scheme == std::string_view::npos || colon == std::string_view::npos ||
        at == std::string_view::npos || at < colon) {
        return std::string(word);
    }
    std::string masked(word.substr(0, colon + 1));
    masked += kMask;
    masked += word.substr(at);
    return masked;
}

std::string WithoutParameter(std::string text) {
    constexpr std::string_view name = "password=";
    for (std::size_t at = text.find(name); at != std::string::npos;
         at = text.find(name, at + name.size())) {
        const std::size_t begin = at + name.size();
        const std::size_t end = std::min(text.find_first_of("&#", begin), text.size());
        text.replace(begin, end - begin, kMask);
    }
    return text;
}

}  // namespace

std::string WithoutPasswords(std::string_view text) {
    std::string out;
    while (!text.empty()) {
        const std::size_t begin = std::min(text.find_first_not_of(kBlanks), text.size());
        const std::size_t end = EndOfWord(text, begin);
        out += text.substr(0, begin);
        if (begin < end) {
            out += WithoutParameter(WithoutUrlPassword(text.substr(begin, end - begin)));
        }
        text.remove_prefix(end);
    }
    return out;
}

}  // namespace tool
