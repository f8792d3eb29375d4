#ifndef TOOL_SURVEY_KEY_RULES_H
#define TOOL_SURVEY_KEY_RULES_H

#include <cstddef>
#include <string>

#include "tool/survey/source_survey.h"

namespace tool {

// What makes an address fit for a key of records.

inline constexpr std::size_t kLongestKeyText = 200;  // in characters

// The last name in an address; a list gives its own to its elements.
std::string LastName(const AddressSurvey& address);
// The same with small letters for the capitals of ASCII.
std::string LowerLastName(const AddressSurvey& address);

// Whether a map can write the address: none of its names is empty.
bool CanBeNamed(const SourceSurvey& source, const AddressSurvey& address);

// How good the name of an address is for a key; smaller is better.
std::size_t KeyRank(const AddressSurvey& address);

// Whether records could be known by the values, as far as each has one.
bool CanBeKey(const AddressSurvey& address);

// Whether the rows of a source can be known by what stands at an address: each has a value there,
// and no two the same.
bool IsKey(const SourceSurvey& source, const AddressSurvey& address);

}  // namespace tool

#endif
