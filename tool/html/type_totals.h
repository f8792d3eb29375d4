#ifndef TOOL_HTML_TYPE_TOTALS_H
#define TOOL_HTML_TYPE_TOTALS_H

#include <string>
#include <vector>

#include "tool/load/sinks/load_totals.h"
#include "tool/packet/import_configuration.h"

namespace tool {

// What the packets of one kind of data did to one record type.
struct TypeTotals {
    std::string type;
    ImportedData data = ImportedData::Records;
    LoadTotals totals;  // without the time
};

// The numbers of each record type, in the order in which the types come up first. Configurations
// can name more types than there are, so the list is bounded.
class TypeTotalsList {
  public:
    // Adds `more` to what there is of `type` and `data`.
    void Add(const std::string& type, ImportedData data, const LoadTotals& more);

    const std::vector<TypeTotals>& Types() const { return m_types; }
    LoadTotals Sum() const;

  private:
    std::vector<TypeTotals> m_types;
};

}  // namespace tool

#endif
