#ifndef TOOL_VERIFY_RECORDS_LOOKUP_TOOLS_H
#define TOOL_VERIFY_RECORDS_LOOKUP_TOOLS_H

#include <memory>

#include "recorddb/database.h"
#include "recorddb/reader.h"
#include "recorddb/sql.h"
#include "tool/process/interrupt.h"
#include "tool/verify/records/record_lookup.h"
#include "tool/verify/sinks/verify_options.h"

namespace tool {

// What a comparison finds records with, by one connection.
struct LookupTools {
    // Both outlive the object. Throws sql::Error.
    LookupTools(recorddb::Database& database, const VerifyOptions& options)
        : scratch(recorddb::sql::OpenScratch()),
          scratchWork(*scratch),
          reader(database),
          lookup(database, reader, *scratch,
                 {.maxTries = options.maxReferenceTries,
                  .stopRequested = [] { return Interrupted() != 0; }}) {}

    std::unique_ptr<recorddb::sql::Connection> scratch;
    recorddb::sql::Transaction scratchWork;
    recorddb::RecordReader reader;
    RecordLookup lookup;
};

// Opens the database for reading.
inline std::unique_ptr<recorddb::Database> OpenForVerify(const VerifyOptions& options) {
    return recorddb::Database::Open(options.database, options.immutable
                                                          ? recorddb::Database::Mode::Immutable
                                                          : recorddb::Database::Mode::ReadOnly);
}

}  // namespace tool

#endif
