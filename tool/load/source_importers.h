#ifndef TOOL_LOAD_SOURCE_IMPORTERS_H
#define TOOL_LOAD_SOURCE_IMPORTERS_H

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "recorddb/session.h"
#include "tool/load/loaded_source.h"
#include "tool/load/records/atomic_import.h"
#include "tool/load/records/record_group.h"
#include "tool/load/records/record_importer.h"

namespace tool {

// Imports records of sources that are not being read any more, each under the configuration of its
// source.
class SourceImporters {
  public:
    // `group` stays the caller's.
    SourceImporters(AdPtr<recorddb::Session> session, RecordGroup& group);

    // As AtomicImport::Import, for a record of `source`.
    AtomicImport::Result Import(const LoadedSource& source, std::string_view packet);

  private:
    struct Configured {
        std::string configuration;  // as a packet
        bool isGuarded;
        std::unique_ptr<RecordImporter> importer;
    };

    RecordImporter& ImporterFor(const LoadedSource& source);

    AdPtr<recorddb::Session> m_session;
    RecordGroup& m_group;
    std::vector<Configured> m_importers;  // the latest one at the end
};

}  // namespace tool

#endif
