#include "tool/load/records/source_id.h"

#include "tool/guarded/guarded_text.h"
#include "tool/packet/field_search.h"

namespace tool {

std::string SourceIdOf(const SourceRecord& record, const ImportConfiguration& configuration) {
    // One that cannot be imported has no packet; what it is called may still be made out.
    const std::string_view text = record.packet.empty() ? record.raw : record.packet;
    std::string id = FindFieldValue(text, configuration.OriginalId()).value_or("");
    return record.guarded ? Restored(id) : id;
}

}  // namespace tool
