#ifndef TOOL_VERIFY_SINKS_DATA_SOURCE_H
#define TOOL_VERIFY_SINKS_DATA_SOURCE_H

#include <string>

#include "recorddb/journal.h"
#include "tool/packet/import_configuration.h"

namespace tool {

// A source of records that is compared.
struct DataSource {
    std::string type;  // name of the record type, as the configuration has it
    ImportedData data = ImportedData::Nothing;
    recorddb::journal::JournalKey key;  // under which a load of it is known
};

}  // namespace tool

#endif
