#ifndef TOOL_REPORT_FINDING_JSON_H
#define TOOL_REPORT_FINDING_JSON_H

#include <string>
#include <string_view>

#include "tool/sources/kind/map_findings.h"

namespace tool {

// A finding as a JSON object of "weight" ("count", "note" or "loss"), "kind", "count", "place",
// "text" and "paste".
std::string FindingAsJson(const MapFinding& finding);

// The text between the end of the list before the findings and the first of these; empty when there
// are none.
inline std::string_view FindingsOpening(bool hasAny) {
    return hasAny ? "],\"findings\":[" : "";
}

}  // namespace tool

#endif
