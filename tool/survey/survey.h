#ifndef TOOL_SURVEY_SURVEY_H
#define TOOL_SURVEY_SURVEY_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "tool/survey/source_survey.h"

namespace tool {

// An address of a survey: its source, and the address in it, by position.
struct AddressRef {
    std::size_t source = 0;
    std::size_t address = 0;

    bool operator==(const AddressRef&) const = default;
};

// The values at an address are found again at another one, where each stands once only.
struct ValuesElsewhere {
    AddressRef from;
    AddressRef in;
    std::size_t found = 0;  // of the different values that were looked for
    std::size_t lookedFor = 0;

    bool AreAll() const { return found == lookedFor; }
};

// What has been found out about data of which neither map nor schema is known.
struct Survey {
    std::vector<SourceSurvey> sources;
    std::vector<std::string> notRead;  // names of files
    std::vector<ValuesElsewhere> elsewhere;

    const AddressSurvey& At(AddressRef ref) const {
        return sources[ref.source].addresses[ref.address];
    }
};

// Looks at all files. Throws SourceError when one of them cannot be read, std::system_error when a
// temporary file cannot be written.
Survey SurveyAll(const SurveyFiles& files, const SurveyOptions& options);

}  // namespace tool

#endif
