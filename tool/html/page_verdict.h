#ifndef TOOL_HTML_PAGE_VERDICT_H
#define TOOL_HTML_PAGE_VERDICT_H

#include <string>
#include <vector>

namespace tool {

enum class VerdictTone {
    Good,       // nothing is left to do about the records
    Attention,  // somebody has to look at something
    Bad         // the run failed or proved a fault
};

// How a run came out.
struct PageVerdict {
    VerdictTone tone = VerdictTone::Good;
    std::string state;     // in two or three words, such as "Complete"
    std::string sentence;  // the same in one sentence
    std::string why;       // more about it; may be empty
};

// Something to do next.
struct NextStep {
    std::string text;
    std::vector<std::string> command;  // the words of a command line; empty when there is none
};

}  // namespace tool

#endif
