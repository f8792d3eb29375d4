#ifndef TOOL_SURVEY_DRAFT_WORK_H
#define TOOL_SURVEY_DRAFT_WORK_H

#include <cstddef>
#include <map>
#include <string_view>
#include <utility>

#include "tool/survey/draft.h"
#include "tool/survey/draft_names.h"

namespace tool {

// A field of a draft: by position, its type and its place there.
using DraftPlace = std::pair<std::size_t, std::size_t>;

// A draft that is being made, and what its parts were made of.
struct DraftWork {
    explicit DraftWork(const Survey& surveyed) : survey(surveyed) {}

    const Survey& survey;
    Draft draft;
    DraftNames typeNames{DraftNames::kTypeLimit};
    std::map<DraftPlace, AddressRef> addresses;  // where fields come from
    // Of addresses, by position of the source and in it: those that make fields of rows.
    std::map<std::pair<std::size_t, std::size_t>, DraftPlace> fields;
};

// Adds a type for something in a source, without fields, and returns its position.
std::size_t AddType(DraftWork& work, std::size_t source, std::string_view name);

}  // namespace tool

#endif
