#ifndef TOOL_LOAD_RECORDS_RECORD_IMPORTER_H
#define TOOL_LOAD_RECORDS_RECORD_IMPORTER_H

#include <memory>
#include <string>
#include <string_view>

#include "recorddb/session.h"
#include "tool/packet/import_configuration.h"
#include "ztimporter/adimporter.h"

namespace tool {

// What the import of one packet did.
struct ImportOutcome {
    std::string error;          // why it failed, as UTF-8 for people; empty when it went through
    recorddb::Statistics done;  // what reached the database, also before a failure

    bool Failed() const { return !error.empty(); }

    // True when the importer passed the packet over without a word.
    bool Skipped() const { return !Failed() && done.commits == 0 && done.historyEntries == 0; }
};

// Hands packets to the importer so that nothing of one record reaches another.
//
// The importer keeps the values of a record after an exception and after its silent skips, and
// would mix them into the next record, also across packets. So after a packet that failed and after
// one that did nothing this class goes on with a fresh importer, to which it gives the
// configuration in force again.
//
// Both operations throw std::bad_alloc where there is too little memory to go on; a record for
// which there is too little counts as one that failed.
class RecordImporter {
  public:
    explicit RecordImporter(AdPtr<recorddb::Session> session);

    // Puts `configuration` in force, as a whole, for the packets that follow. Returns the
    // importer's error, empty on success; after an error the former configuration stays in force.
    std::string Configure(const ImportConfiguration& configuration);

    // Whether the values in the following data packets are guarded; at first they are not.
    void SetGuarded(bool guarded);

    // Imports one data packet, valid UTF-8.
    ImportOutcome Import(std::string_view packet);

  private:
    std::unique_ptr<AdImporter> MakeImporter() const;
    void StartAnew();

    AdPtr<recorddb::Session> m_session;
    bool m_guarded = false;  // what MakeImporter makes an importer for
    std::unique_ptr<AdImporter> m_importer;
    std::u16string m_configuration;
    std::u16string m_packet;  // kept to reuse its memory
};

}  // namespace tool

#endif
