#ifndef TOOL_HTML_FINDING_LIST_H
#define TOOL_HTML_FINDING_LIST_H

#include <cstdint>
#include <string>
#include <vector>

#include "tool/sources/kind/map_findings.h"

namespace tool {

// What the reading of the sources through a map has found, for the page about a run. Memory does
// not grow with the number of findings.
class FindingList {
  public:
    static constexpr std::size_t kFindingsKept = 300;

    void Add(const MapFinding& finding);

    // The part of the page about them, as HTML; empty without any.
    std::string SectionHtml() const;

  private:
    std::uint64_t m_count = 0;
    std::vector<MapFinding> m_kept;  // the first ones, with long texts cut
};

}  // namespace tool

#endif
