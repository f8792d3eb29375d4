#ifndef TOOL_LOAD_RECORDS_ATOMIC_IMPORT_H
#define TOOL_LOAD_RECORDS_ATOMIC_IMPORT_H

#include <string>
#include <string_view>

#include "recorddb/session.h"
#include "tool/load/records/record_group.h"
#include "tool/load/records/record_importer.h"
#include "tool/load/sinks/load_totals.h"
#include "tool/packet/import_configuration.h"

namespace tool {

// Imports packets within a group of records, so that each is in the database as a whole or not at
// all.
class AtomicImport {
  public:
    // `importer` and `group` stay the caller's.
    AtomicImport(AdPtr<recorddb::Session> session, RecordImporter& importer, RecordGroup& group);

    struct Result {
        std::string error;  // why it failed, for people; then nothing of it was written
        LoadTotals done;    // of a packet that went through
    };

    // Imports one packet, valid UTF-8, that holds `data`. Throws sql::Error when the database
    // fails, std::bad_alloc when memory does.
    Result Import(std::string_view packet, ImportedData data);

  private:
    AdPtr<recorddb::Session> m_session;
    RecordImporter& m_importer;
    RecordGroup& m_group;
};

}  // namespace tool

#endif
