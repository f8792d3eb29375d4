#ifndef TOOL_SURVEY_DRAFT_HISTORY_H
#define TOOL_SURVEY_DRAFT_HISTORY_H

#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

#include "tool/survey/draft.h"
#include "tool/survey/source_survey.h"

namespace tool {

// Where the items of a list have what an entry of history is made of: addresses, by position.
struct HistoryParts {
    std::size_t when = 0;
    std::size_t who = 0;
    std::optional<std::size_t> id;
    std::optional<std::size_t> action;
    std::optional<std::size_t> before;
    std::optional<std::size_t> after;

    bool Has(std::size_t address) const;
};

// The parts that the elements of a list, each an object, are an entry of history by: each names a
// time and somebody. `element` is their address, `end` the place behind the last one below it. None
// for what names neither, or a file: attachments do, too.
std::optional<HistoryParts> FindHistory(const SourceSurvey& source, std::size_t element,
                                        std::size_t end);

// What of the items no entry holds: addresses with values.
std::vector<std::size_t> UnreadByHistory(const SourceSurvey& source, std::size_t element,
                                         std::size_t end, const HistoryParts& parts);

// Whether entries can find their record by a field of that name: they have some of their own.
bool CanFindHistory(std::string_view key);

// Adds to `step`, which belongs to a list, the values of the entries. `areRecordsToo` says that
// records of their own keep what entries do not, so that nothing has to be said of it.
void AddHistoryValues(const SourceSurvey& source, std::size_t element, const HistoryParts& parts,
                      bool areRecordsToo, DraftStep& step);

}  // namespace tool

#endif
