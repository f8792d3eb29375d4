#include "tool/report/finding_json.h"

#include <nlohmann/json.hpp>

#include "tool/report/json_text.h"

namespace tool {

std::string FindingAsJson(const MapFinding& finding) {
    return JsonText({{"weight", FindingWeightName(finding.weight)},
                     {"kind", finding.kind},
                     {"count", finding.count},
                     {"place", finding.place},
                     {"text", finding.text},
                     {"paste", finding.paste}});
}

}  // namespace tool
