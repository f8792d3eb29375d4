#ifndef TOOL_VERIFY_RECORDS_KEPT_FIELDS_H
#define TOOL_VERIFY_RECORDS_KEPT_FIELDS_H

#include "recorddb/schema.h"
#include "tool/packet/import_configuration.h"
#include "tool/packet/importer_fields.h"
#include "tool/sources/kind/source_values.h"
#include "tool/verify/records/kept_record.h"

namespace tool {

// Sets the fields and the original id of `record` to what the fields of a packet say that is
// imported under `configuration` into records of `type`. `guarded`: the packet's values are.
void KeepPacketFields(const ImporterFields& fields, bool guarded,
                      const ImportConfiguration& configuration,
                      const recorddb::schema::RecordType& type, KeptRecord& record);

// The same from the values of a source that is no packet.
void KeepSourceValues(const SourceValues& values, const ImportConfiguration& configuration,
                      const recorddb::schema::RecordType& type, KeptRecord& record);

}  // namespace tool

#endif
