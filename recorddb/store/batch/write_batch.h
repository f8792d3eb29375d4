#ifndef RECORDDB_STORE_BATCH_WRITE_BATCH_H
#define RECORDDB_STORE_BATCH_WRITE_BATCH_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "recorddb/layout.h"
#include "recorddb/model/field_value.h"
#include "recorddb/record.h"
#include "recorddb/schema.h"
#include "recorddb/sql.h"
#include "recorddb/sql/savepoint.h"
#include "recorddb/store/batch/batch_writer.h"
#include "recorddb/store/batch/history_expiry.h"
#include "recorddb/store/batch/key_rows.h"
#include "recorddb/store/batch/key_sets.h"
#include "recorddb/store/batch/known_answers.h"
#include "recorddb/store/batch/pending_changes.h"
#include "recorddb/store/batch/pending_layers.h"
#include "recorddb/store/batch/record_buffer.h"
#include "recorddb/store/batch/touched.h"
#include "recorddb/store/tables/last_dbids.h"

namespace recorddb {

// Gathers what the records of a transaction change, and writes it later, table by table. Meanwhile
// whoever reads lays it over what the database answers; where that cannot be done, it is written
// first. Changes lie in layers, one over the other, each of which can be dropped: of what was
// dropped nothing has reached the database.
//
// A batch that does not gather is empty, and its layers are savepoints of the database.
//
// Not gathered are attachments, and changes of fields by which records are found: these are
// written at once, after Apply. So the database's answer to a search by key lacks new records and
// is right otherwise, and a key that one record frees can be taken by the next one.
//
// Operations that write, or begin or end layers, throw sql::Error.
class WriteBatch {
  public:
    // Connection and schema outlive the object.
    WriteBatch(sql::Connection& connection, const schema::Schema& schema, Layout layout);
    WriteBatch(const WriteBatch&) = delete;
    WriteBatch& operator=(const WriteBatch&) = delete;
    ~WriteBatch();

    sql::Connection& GetConnection() const { return m_connection; }
    const schema::Schema& GetSchema() const { return m_schema; }
    Layout GetLayout() const { return m_layout; }

    // What the layout keeps beside the tables, as it is in the database.
    KeyRows& Keys() { return m_keyRows; }
    LastDbIds& Numbers() { return m_lastDbIds; }

    // Gathers from here on, in the transaction that has just begun, until that ends. Ahead: nothing
    // is written at all; what would have to be is refused with an sql::Error, and what is read is
    // noted.
    void Begin();
    void BeginAhead();
    // The transaction has ended, or is about to be rolled back: what was not written is forgotten.
    void End() noexcept;
    bool IsGathering() const { return m_isGathering; }
    bool IsAhead() const { return m_reads.IsOn(); }

    // What was gathered ahead, and what was read for it, which are not here any more. No layer is
    // open.
    std::pair<PendingChanges, ReadNotes> Take();
    // Puts in what was gathered ahead, when nothing else has been gathered.
    void Adopt(PendingChanges changes);

    // What follows Apply: only reading, or also writing to the database at once. The open layers
    // must be able to undo the latter, so they become savepoints.
    enum class For { Reading, Writing };

    // Writes what was gathered. A failure may be that of any record since the last call; after it
    // nothing more can be written, and the transaction is good for a roll-back only.
    void Apply(For what);

    // Layers, from the moment of the call on. Only the last one can be ended.
    std::size_t BeginLayer();                    // returns its number
    void ReleaseLayer(std::size_t layer);        // adds its changes to those below
    void DropLayer(std::size_t layer) noexcept;  // with all above it, if it has not ended

    // Numbers that tell whether what was read or worked out may still be relied on: how often
    // something was undone, in the database or here, and how much was added.
    std::uint64_t UndoCount() const { return m_connection.RollbackCount() + m_drops; }
    std::uint64_t ChangeCount() const { return m_changes; }

    // --- changes ---

    // True when the change of a record has to be written at once: it is one of a field by which
    // records are found.
    bool ChangesKey(const schema::RecordType& type, const RecordBuffer& record) const;

    // Adds the changes of a record. `version` is that which it has so far, 0 for a new one. All
    // columns have been loaded of which one was changed.
    void Put(const schema::RecordType& type, std::int64_t dbid, std::int64_t version,
             const RecordBuffer& record);

    // Adds entries, which are numbered and of one record, and the times of all entries of that
    // record, before and after.
    void PutHistory(const RecordKey& record, std::string_view field,
                    std::span<const HistoryEntry> added, const std::vector<HistoryTimes>& before,
                    std::vector<HistoryTimes> after);

    void PutLink(const RecordKey& duplicate, PendingLink link);

    // --- who reads and writes what ---

    // To be called by whoever takes an answer of the database, or one that is known ahead.
    void NoteRead(const schema::RecordType& type, std::int64_t dbid) {
        NoteRead(RecordKey(type.id, dbid));
    }
    void NoteRead(const RecordKey& record) {
        if (m_reads.IsOn()) {
            m_reads.Record(record);
        }
    }
    void NoteSearch(const schema::RecordType& type, const FieldSet& fields,
                    const std::vector<const FieldValue*>& values, bool found) {
        if (m_reads.IsOn()) {
            m_reads.Search(type, fields, values, found);
        }
    }
    // For what is neither a record nor such a search: the gathered work cannot be taken over then.
    void NoteUnclearRead() {
        if (m_reads.IsOn()) {
            m_reads.Unclear();
        }
    }

    // The writes of this transaction and of those before it. Apply notes what it writes; whoever
    // writes to the database at once while records are gathered does so, too.
    RecentWrites& Writes() { return m_writes; }

    // --- what the database answers ---

    // The answers that are known ahead; none while nothing is gathered.
    KnownAnswers& Answers() { return m_answers; }
    const KnownAnswers& Answers() const { return m_answers; }

    // --- what readers lay over the database's answer ---

    const PendingLayers& Pending() const { return m_pending; }

    // The version of a record that was changed here, or was read before in this transaction.
    std::optional<std::int64_t> KnownVersion(const schema::RecordType& type,
                                             std::int64_t dbid) const;
    // Remembers what the database answered.
    void NoteVersion(const schema::RecordType& type, std::int64_t dbid, std::int64_t version);
    // To be called after the database was written to at once.
    void ForgetVersions() noexcept;

    // The new record with these values in a set of KeySetsOf(type); 0 for none.
    std::int64_t FindKey(const schema::RecordType& type, const FieldSet& fields,
                         const std::vector<const FieldValue*>& values) const;

  private:
    // What is known of one type.
    struct Type {
        std::vector<FieldSet> keySets;
        std::vector<bool> isInKey;  // by field
    };

    const Type& Of(const schema::RecordType& type) const {
        return m_types[static_cast<std::size_t>(type.id - 1)];
    }
    PendingRecord ChangeOf(const schema::RecordType& type, std::int64_t dbid, std::int64_t version,
                           const RecordBuffer& record) const;
    int WaveOf(const schema::RecordType& type, const RecordBuffer& record) const;
    bool RefersToNew(const schema::RecordType& type, const RecordBuffer& record) const;
    void AddKeys(const schema::RecordType& type, const PendingRecord& record);
    void NoteChange();
    void RefuseAhead(For what) const;
    sql::Connection& m_connection;
    const schema::Schema& m_schema;
    Layout m_layout;
    KeyRows m_keyRows;
    LastDbIds m_lastDbIds;
    std::vector<Type> m_types;
    PendingLayers m_pending;
    std::vector<std::unique_ptr<sql::Savepoint>> m_savepoints;  // by layer, null for none
    bool m_isGathering = false;
    bool m_hasFailed = false;
    std::uint64_t m_drops = 0;
    std::uint64_t m_changes = 0;
    std::vector<std::unordered_map<std::int64_t, std::int64_t>> m_versions;  // by type and dbid
    KnownAnswers m_answers;
    ReadNotes m_reads;
    RecentWrites m_writes;
    BatchWriter m_writer;
};

}  // namespace recorddb

#endif
