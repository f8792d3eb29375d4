#include "tool/html/shell_word.h"

#include <algorithm>

namespace tool {

namespace {

bool NeedsNoQuotes(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
           std::string_view("_-./:,+@%=").find(c) != std::string_view::npos;
}

}  // namespace

std::string ShellWord(std::string_view word) {
    if (!word.empty() && std::all_of(word.begin(), word.end(), NeedsNoQuotes)) {
        return std::string(word);
    }
    std::string quoted = "'";
    for (const char c : word) {
        if (c == '\'') {
            quoted += "'\\''";
        } else {
            quoted += c;
        }
    }
    return quoted + "'";
}

}  // namespace tool
