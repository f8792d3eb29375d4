#ifndef RECORDDB_SESSION_SESSION_PARTS_H
#define RECORDDB_SESSION_SESSION_PARTS_H

#include "platform/foundation/obx_string.h"
#include "recorddb/editing/database_failures.h"
#include "recorddb/editing/definitions.h"
#include "recorddb/editing/entity.h"
#include "recorddb/editing/history_import.h"
#include "recorddb/editing/query_statements.h"
#include "recorddb/editing/record_attachments.h"
#include "recorddb/editing/record_checks.h"
#include "recorddb/editing/record_writer.h"
#include "recorddb/editing/reference_keys.h"
#include "recorddb/editing/result_set.h"
#include "recorddb/editing/value_rules.h"
#include "recorddb/editing/watched_values.h"
#include "recorddb/session_options.h"
#include "recorddb/statistics.h"
#include "recorddb/store/batch/write_batch.h"
#include "recorddb/store/counted_record_ids.h"
#include "recorddb/store/dbid_reservations.h"
#include "recorddb/store/duplicate_table.h"
#include "recorddb/store/history_table.h"
#include "recorddb/store/key_table.h"
#include "recorddb/store/record_tables.h"
#include "recorddb/store/tables/search_indexes.h"

namespace recorddb {

// What a session owns. Its records and result sets each get what they use of it, and share the
// ownership of the whole, so that they and the session may be released in any order.
struct SessionParts {
    // Batch, schema and indexes outlive the session and all that it handed out.
    SessionParts(WriteBatch& batchOfSession, const schema::Schema& schema,
                 schema::SearchIndexes& searchIndexes, const SessionOptions& options)
        : batch(batchOfSession),
          connection(batch.GetConnection()),
          failures(connection),
          definitions(schema),
          tables(batch, schema),
          keyTable(batch, schema),
          keys(batch, schema, keyTable, options.references),
          rules(schema, keys),
          ids(batch, schema),
          dbids(connection, ids),
          historyTable(batch),
          history(batch, schema, tables, historyTable),
          attachments(batch, AttachmentFolder(options.attachmentsFolder, options.maxAttachmentSize),
                      options.examineAttachments ? ContentStore::Keeping::Examine
                                                 : ContentStore::Keeping::Store),
          duplicates(batch),
          checks(schema, tables, keyTable),
          watched(schema, keyTable),
          writer({batch, tables, keyTable, keys, dbids, attachments, duplicates, checks, watched}),
          queryStatements(connection),
          ofEntities{failures, batch,        tables,      keyTable,   rules,
                     dbids,    historyTable, attachments, duplicates, checks,
                     writer,   statistics,   lastRefusal},
          ofQueries{failures, batch, schema, keyTable, keys, queryStatements, searchIndexes} {}
    SessionParts(const SessionParts&) = delete;
    SessionParts& operator=(const SessionParts&) = delete;

    WriteBatch& batch;
    sql::Connection& connection;
    DatabaseFailures failures;
    Statistics statistics;
    Obx_String lastRefusal;  // see Session::TakeLastRefusal
    Definitions definitions;
    RecordTables tables;
    KeyTable keyTable;
    ReferenceKeys keys;
    ValueRules rules;
    schema::CountedRecordIds ids;
    DbIdReservations dbids;
    HistoryTable historyTable;
    HistoryImport history;
    RecordAttachments attachments;
    DuplicateTable duplicates;
    RecordChecks checks;
    WatchedValues watched;
    RecordWriter writer;
    QueryStatements queryStatements;
    EntityParts ofEntities;
    QueryParts ofQueries;
};

}  // namespace recorddb

#endif
