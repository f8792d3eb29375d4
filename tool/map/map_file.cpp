#include "tool/map/map_file.h"

#include <algorithm>

namespace tool {

bool MapAddress::IsList() const {
    return std::find(steps.begin(), steps.end(), "*") != steps.end();
}

MapPlace MapValue::PlaceOf(std::string_view key) const {
    const auto found = keys.find(key);
    return found == keys.end() ? place : found->second;
}

const MapField* MapStep::FindField(std::string_view name) const {
    const auto found = std::find_if(fields.begin(), fields.end(),
                                    [&](const MapField& field) { return field.name == name; });
    return found == fields.end() ? nullptr : &*found;
}

std::string_view StepKindName(StepKind kind) {
    switch (kind) {
        case StepKind::History:
            return "history";
        case StepKind::Attachments:
            return "attachments";
        case StepKind::Duplicates:
            return "duplicates";
        default:
            return "records";
    }
}

}  // namespace tool
