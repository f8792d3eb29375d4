#include "tool/survey/draft.h"

#include <algorithm>
#include <utility>

#include "tool/survey/draft_order.h"
#include "tool/survey/draft_records.h"
#include "tool/survey/draft_references.h"
#include "tool/survey/draft_work.h"

namespace tool {

const DraftField* DraftType::Key() const {
    const auto found = std::find_if(fields.begin(), fields.end(),
                                    [](const DraftField& field) { return field.isKey; });
    return found == fields.end() ? nullptr : &*found;
}

std::size_t AddType(DraftWork& work, std::size_t source, std::string_view name) {
    DraftType type;
    type.name = work.typeNames.Take(name);
    type.source = source;
    work.draft.types.push_back(std::move(type));
    return work.draft.types.size() - 1;
}

Draft MakeDraft(const Survey& survey) {
    DraftWork work(survey);
    DraftNames sourceNames(DraftNames::kTypeLimit);
    for (const SourceSurvey& source : survey.sources) {
        work.draft.sources.push_back({sourceNames.Take(source.group.name), {}, {}});
    }
    DraftRecords(work);
    DraftReferences(work);
    SortTypes(work.draft);
    return std::move(work.draft);
}

}  // namespace tool
