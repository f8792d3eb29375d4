#include "tests/scripted/call_log.h"

#include <algorithm>
#include <utility>

namespace {

const char* WordInFront(CallLog::Kind kind) {
    switch (kind) {
        case CallLog::Kind::kTrace:
        case CallLog::Kind::kOtherTrace:
            return "trace: ";
        case CallLog::Kind::kRelease:
            return "release: ";
        case CallLog::Kind::kCall:
        case CallLog::Kind::kQuestion:
            break;
    }
    return "";
}

}  // namespace

void CallLog::Add(Kind kind, std::string text) {
    m_lines.push_back({kind, std::move(text)});
}

std::vector<std::string> CallLog::Lines(std::initializer_list<Kind> kinds) const {
    std::vector<std::string> lines;
    for (const Line& line : m_lines) {
        if (std::find(kinds.begin(), kinds.end(), line.kind) != kinds.end()) {
            lines.push_back(WordInFront(line.kind) + line.text);
        }
    }
    return lines;
}

std::vector<std::string> CallLog::Texts(Kind kind) const {
    std::vector<std::string> texts;
    for (const Line& line : m_lines) {
        if (line.kind == kind) {
            texts.push_back(line.text);
        }
    }
    return texts;
}
