#ifndef RECORDDB_SESSION_SESSION_PARTS_H
#define RECORDDB_SESSION_SESSION_PARTS_H

#include "platform/core/adptr.h"
#include "recorddb/database.h"
#include "recorddb/editing/database_failures.h"
#include "recorddb/editing/definitions.h"
#include "recorddb/editing/history_import.h"
#include "recorddb/editing/query_statements.h"
#include "recorddb/editing/reference_keys.h"
#include "recorddb/editing/value_rules.h"
#include "recorddb/files/attachment_folder.h"
#include "recorddb/session/session_options.h"
#include "recorddb/session/statistics.h"
#include "recorddb/store/attachment_table.h"
#include "recorddb/store/content_store.h"
#include "recorddb/store/dbid_reservations.h"
#include "recorddb/store/duplicate_table.h"
#include "recorddb/store/record_tables.h"

namespace recorddb {

// What a session, its records and its result sets share. Each of them holds a handle, so that they
// may be let go of in any order.
class SessionParts final : public AdRefCounted {
  public:
    // The database outlives the session and all that it handed out.
    SessionParts(Database& base, const SessionOptions& options)
        : database(base),
          connection(base.GetConnection()),
          schema(base.GetSchema()),
          failures(connection),
          definitions(schema),
          tables(connection, schema),
          keys(connection, schema, options.references),
          rules(schema, keys),
          dbids(connection, base.GetRecordIds()),
          queryStatements(connection),
          history(connection, schema, tables),
          folder(options.attachmentsFolder, options.maxAttachmentSize),
          attachments(connection),
          contents(connection, options.examineAttachments ? ContentStore::Keeping::Examine
                                                          : ContentStore::Keeping::Store),
          duplicates(connection) {}

    Database& database;
    sql::Connection& connection;
    const schema::Schema& schema;
    DatabaseFailures failures;
    Statistics statistics;
    Definitions definitions;
    RecordTables tables;
    ReferenceKeys keys;
    ValueRules rules;
    DbIdReservations dbids;
    QueryStatements queryStatements;
    HistoryImport history;
    AttachmentFolder folder;
    AttachmentTable attachments;
    ContentStore contents;
    DuplicateTable duplicates;
    Obx_String lastRefusal;  // see Session::TakeLastRefusal
};

}  // namespace recorddb

#endif
