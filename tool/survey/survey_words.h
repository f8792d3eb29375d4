#ifndef TOOL_SURVEY_SURVEY_WORDS_H
#define TOOL_SURVEY_SURVEY_WORDS_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "tool/survey/survey.h"

namespace tool {

// What a survey says in words, wherever it says it. The texts hold what stands in the files as it
// is; whoever shows them makes it visible.

// An address as a map writes it: a column's name, or the way to a JSON value.
std::string AddressText(const SourceSurvey& source, const AddressSurvey& address);

// How the files are read: "CSV, separated by ;, windows-1252 (a guess)".
std::string FormatText(const SourceSurvey& source);

// "bugs.csv", "issues/issue-*.json (312 files)".
std::string FilesText(const SourceSurvey& source);

// What the values at an address are: "text", "whole number", "date (%d.%m.%Y)", "list".
std::string KindText(const AddressSurvey& address);

// How many different values there are: "3", "more than 500".
std::string DistinctText(const AddressSurvey& address);

// The most frequent values with how often they come, or some where hardly any comes twice: "closed
// (12), open (3)", "such as 101, 102". Empty when there are none.
std::string ValuesText(const AddressSurvey& address, std::size_t most);

// What else is worth knowing of an address.
struct Remark {
    enum class Kind {
        Key,
        Elsewhere,
        NotAllDates,
        NoZone,
        NoValueWord,
        Commas,
        CarriageReturns,
        OuterBlanks,
        Forbidden
    };

    Kind kind;
    std::string text;  // "could be the key: each row has another value"
};

std::vector<Remark> Remarks(const Survey& survey, AddressRef ref);

// What else is worth knowing of a source as a whole.
std::vector<std::string> Remarks(const SourceSurvey& source);

}  // namespace tool

#endif
