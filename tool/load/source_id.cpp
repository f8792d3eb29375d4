#include "tool/load/source_id.h"

#include "tool/guarded/guarded_text.h"
#include "tool/packet/field_search.h"

namespace tool {

std::string SourceIdOf(const SourceRecord& record, const ImportConfiguration& configuration) {
    std::string id = FindFieldValue(record.raw, configuration.OriginalId()).value_or("");
    return record.guarded ? Restored(id) : id;
}

}  // namespace tool
