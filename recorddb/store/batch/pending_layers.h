#ifndef RECORDDB_STORE_BATCH_PENDING_LAYERS_H
#define RECORDDB_STORE_BATCH_PENDING_LAYERS_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "recorddb/model/field_value.h"
#include "recorddb/schema.h"
#include "recorddb/store/batch/history_expiry.h"
#include "recorddb/store/batch/pending_changes.h"

namespace recorddb {

// Changes in layers, one over the other, and what readers see of all of them: of each thing what
// the topmost layer says that knows it. They lay that over the database's answer.
class PendingLayers {
  public:
    // For so many record types. There is one layer.
    explicit PendingLayers(std::size_t types);

    // The layers by number; the first one, 0, is always there.
    std::size_t Depth() const { return m_depth; }
    PendingChanges& At(std::size_t layer) { return m_layers[layer]; }
    PendingChanges& Top() { return m_layers[m_depth]; }
    bool IsEmpty() const;

    void Push();           // an empty one
    void Merge();          // the topmost one into that below it
    void Drop() noexcept;  // the topmost one

    bool HasNew(const schema::RecordType& type, std::int64_t dbid) const;
    // The highest dbid among new records; 0 when there is none.
    std::int64_t HighestNew(const schema::RecordType& type) const;

    // The new record of the type with that number; null for none.
    const PendingRecord* FindNew(std::int64_t type, std::int64_t dbid) const;

    // The newest change of the record; null when there is none.
    const PendingRecord* Find(const schema::RecordType& type, std::int64_t dbid) const;
    // The newest change of the record that knows its columns; null when there is none.
    const PendingRecord* FindColumns(const schema::RecordType& type, std::int64_t dbid) const;

    // The list of a record; null when it has not changed.
    const FieldValue* FindList(const schema::RecordType& type, std::size_t field,
                               std::int64_t dbid) const;

    // The new record with this key, which is KeyText's; 0 for none.
    std::int64_t FindKey(const schema::RecordType& type, const std::string& key) const;

    // Whether a column of records that the database has differs here for some record.
    bool ChangesColumn(const schema::RecordType& type, std::size_t field) const;

    struct Condition {
        std::size_t field;
        FieldValue value;  // none: the field has no value
    };
    // The new records for which all conditions hold, by dbid. They are compared as they were
    // created: where ChangesColumn is true of a column, the changes are written first.
    std::vector<const PendingRecord*> NewWith(const schema::RecordType& type,
                                              const std::vector<Condition>& conditions) const;

    // The times of the entries of a record whose history was changed; null for others.
    const std::vector<HistoryTimes>* FindTimes(const RecordKey& record) const;

    std::optional<std::int64_t> FindOriginal(const RecordKey& duplicate) const;

  private:
    // What `find` finds in the topmost layer in which it finds something.
    template <typename Find>
    auto FromTop(Find find) const {
        auto found = find(m_layers[m_depth]);
        for (std::size_t layer = m_depth; layer > 0 && !found; --layer) {
            found = find(m_layers[layer - 1]);
        }
        return found;
    }

    std::size_t m_types;
    std::vector<PendingChanges> m_layers;  // those past m_depth are kept for their memory
    std::size_t m_depth = 0;
};

}  // namespace recorddb

#endif
