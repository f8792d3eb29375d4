#ifndef RECORDDB_STORE_BATCH_KNOWN_ANSWERS_H
#define RECORDDB_STORE_BATCH_KNOWN_ANSWERS_H

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "recorddb/model/field_value.h"
#include "recorddb/record.h"
#include "recorddb/schema.h"
#include "recorddb/store/batch/history_expiry.h"
#include "recorddb/store/batch/key_sets.h"
#include "recorddb/store/batch/pending_changes.h"
#include "recorddb/store/batch/record_buffer.h"

namespace recorddb {

// A record's row as it stands in the database: its values by field, of fields with a column.
using KnownRow = std::vector<FieldValue>;

// What was read from the database ahead of its use, in the transaction under way. Readers take an
// answer from here, if there is one, and lay over it what has been gathered, as they do with the
// database's own. Whoever writes to the database says here which answers no longer hold.
class KnownAnswers {
  public:
    // The schema outlives the object.
    explicit KnownAnswers(const schema::Schema& schema);

    bool IsEmpty() const { return m_isEmpty; }

    // Forgets all answers.
    void Forget() noexcept;
    // Forgets the answers that the writing of these changes, or of this record, may make wrong.
    void Forget(const PendingChanges& changes);
    void Forget(const schema::RecordType& type, std::int64_t dbid, const RecordBuffer& record);

    // The answers. Nothing, or null, when the database has to be asked.

    // The record with these values; 0: there is none. Nothing also when there are several.
    std::optional<std::int64_t> Find(const schema::RecordType& type, const FieldSet& fields,
                                     const std::vector<const FieldValue*>& values) const;
    // The version of a record; nothing also when there is no such record.
    std::optional<std::int64_t> FindVersion(const schema::RecordType& type,
                                            std::int64_t dbid) const;
    const KnownRow* FindRow(const schema::RecordType& type, std::int64_t dbid) const;
    // The list of a record; no value when it is empty.
    const FieldValue* FindList(const schema::RecordType& type, std::size_t field,
                               std::int64_t dbid) const;
    const std::vector<HistoryTimes>* FindTimes(const RecordKey& record) const;
    // All entries of a record, by time and then by number.
    const std::vector<HistoryEntry>* FindEntries(const RecordKey& record) const;
    const std::vector<Attachment>* FindAttachments(const RecordKey& record) const;
    // The record that it is a duplicate of; no value when it is none.
    const std::optional<std::int64_t>* FindOriginal(const RecordKey& record) const;

  private:
    // These fill in the answers.
    friend class LookAhead;
    friend class RecordQuestions;

    struct Matches {
        std::int64_t dbid = 0;  // of the first one
        std::size_t count = 0;  // two at most
    };
    // Answers to searches by the same fields, by the text that KeyText makes of the values.
    using Searches = std::unordered_map<std::string, Matches>;

    struct OfType {
        std::map<FieldSet, Searches> searches;
        std::unordered_map<std::int64_t, std::int64_t> versions;
        std::unordered_map<std::int64_t, KnownRow> rows;
        std::map<std::size_t, std::unordered_map<std::int64_t, FieldValue>> lists;  // by field
    };

    OfType& Of(const schema::RecordType& type) {
        return m_types[static_cast<std::size_t>(type.id - 1)];
    }
    const OfType& Of(const schema::RecordType& type) const {
        return m_types[static_cast<std::size_t>(type.id - 1)];
    }
    template <typename ValueOf>
    void ForgetValues(OfType& type, ValueOf valueOf);
    void ForgetRecord(const RecordKey& record);

    const schema::Schema& m_schema;
    bool m_isEmpty = true;
    std::vector<OfType> m_types;
    std::map<RecordKey, std::vector<HistoryTimes>> m_times;
    std::map<RecordKey, std::vector<HistoryEntry>> m_entries;
    std::map<RecordKey, std::vector<Attachment>> m_attachments;
    std::map<RecordKey, std::optional<std::int64_t>> m_originals;
};

}  // namespace recorddb

#endif
