#ifndef RECORDDB_EDITING_RECORD_WRITER_H
#define RECORDDB_EDITING_RECORD_WRITER_H

#include "platform/messages/pamessage.h"
#include "recorddb/editing/edited_record.h"
#include "recorddb/editing/record_attachments.h"
#include "recorddb/editing/record_checks.h"
#include "recorddb/editing/reference_keys.h"
#include "recorddb/editing/watched_values.h"
#include "recorddb/errors.h"
#include "recorddb/store/atomic_write.h"
#include "recorddb/store/batch/write_batch.h"
#include "recorddb/store/dbid_reservations.h"
#include "recorddb/store/duplicate_table.h"
#include "recorddb/store/key_table.h"
#include "recorddb/store/record_tables.h"

namespace recorddb {

// Writes the changes of records: into the batch while that gathers, otherwise into the tables.
class RecordWriter {
  public:
    // What it works with, all of which outlives it.
    struct Parts {
        WriteBatch& batch;
        RecordTables& tables;
        KeyTable& keyTable;
        ReferenceKeys& keys;
        DbIdReservations& dbids;
        RecordAttachments& attachments;
        DuplicateTable& duplicates;
        RecordChecks& checks;
        WatchedValues& watched;
    };

    explicit RecordWriter(const Parts& parts) : m_parts(parts) {}

    // Writes the changes of a record, all or nothing, into the batch or the tables. Returns a
    // message with id 0, after which the record counts as loaded and unchanged, or the message that
    // says why it was refused, after which it still holds its changes. Throws sql::Error when the
    // database fails.
    PaMessage Write(EditedRecord& record);

  private:
    // Which tables the changes of a record reach.
    struct Reach {
        bool row = false;  // a change of anything of a record counts as a change of its row
        bool lists = false;
        bool links = false;  // attachments and the mark of a duplicate
    };

    static Reach ReachOf(const EditedRecord& record);
    static AtomicWrite::Refusable RefusableOf(const EditedRecord& record, Reach reach);
    bool MayBeGathered(const EditedRecord& record) const;
    PaMessage Gather(EditedRecord& record);
    PaMessage CheckGathered(const EditedRecord& record);
    PaMessage WriteAtOnce(EditedRecord& record, Reach reach);
    PaMessage WriteAll(EditedRecord& record, Reach reach);
    void NumberNew(EditedRecord& record);
    PaMessage WriteRow(EditedRecord& record);
    void SaveLists(const EditedRecord& record);
    void SaveListsOfNew(const EditedRecord& record, const AtomicWrite& write);
    PaMessage WriteLinks(const EditedRecord& record);
    PaMessage Outdated(const EditedRecord& record);
    static PaMessage DbIdTaken(const EditedRecord& record);
    PaMessage Explain(const EditedRecord& record, const sql::Error& error);

    Parts m_parts;
};

}  // namespace recorddb

#endif
