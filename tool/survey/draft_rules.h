#ifndef TOOL_SURVEY_DRAFT_RULES_H
#define TOOL_SURVEY_DRAFT_RULES_H

#include <cstddef>
#include <string>

#include "tool/survey/address_survey.h"
#include "tool/survey/draft.h"

namespace tool {

// What a draft makes of what stands at one address.

inline constexpr std::size_t kMostStates = 30;

// Whether an address is a part of another one.
bool IsBelow(const AddressSurvey& address, const AddressSurvey& above);

// Whether the values are the states of the records.
bool CanBeState(const AddressSurvey& address);

bool AreWholeNumbers(const AddressSurvey& address);

// Sets type, choices and date format of a field that is neither key nor reference.
void SetKind(DraftField& field, const AddressSurvey& address);

// Adds to a field what a person should know of its values, or decide.
void AddNotes(DraftField& field, const Survey& survey, AddressRef ref);

}  // namespace tool

#endif
