#include "recorddb/editing/reference_keys.h"

#include <utility>

namespace recorddb {

namespace {

// Records remembered for each type.
constexpr std::size_t kMostKnown = 20'000;

}  // namespace

ReferenceKeys::ReferenceKeys(WriteBatch& batch, const schema::Schema& schema, KeyTable& table,
                             KeySearchLimits limits)
    : m_batch(batch),
      m_connection(batch.GetConnection()),
      m_schema(schema),
      m_table(table),
      m_limits(std::move(limits)),
      m_known(schema.Types().size()) {}

KeyMatch ReferenceKeys::Find(const schema::RecordType& type, std::string_view key) {
    return Find(type, key, m_limits);
}

KeyMatch ReferenceKeys::Find(const schema::RecordType& type, std::string_view key,
                             const KeySearchLimits& limits) {
    return KeySearch(m_schema, *this, limits).Find(type, key);
}

std::optional<std::int64_t> ReferenceKeys::Known(const schema::RecordType& type,
                                                 std::string_view key) {
    if (!MayRemember()) {
        return std::nullopt;
    }
    const KeyCache& known = CacheOf(type);
    const auto found = known.find(key);
    return found != known.end() ? std::optional(found->second) : std::nullopt;
}

// What does not exist is never remembered from one search to the next: it may be created a moment
// later.
void ReferenceKeys::Remember(const schema::RecordType& type, std::string_view key,
                             std::int64_t dbid) {
    if (!MayRemember()) {
        return;
    }
    KeyCache& known = CacheOf(type);
    if (known.size() >= kMostKnown) {
        known.clear();
    }
    known.emplace(key, dbid);
}

// Between transactions other writers may change keys, and a roll-back takes records away.
bool ReferenceKeys::MayRemember() {
    if (!m_connection.InTransaction()) {
        return false;
    }
    if (m_transactionCount != m_connection.TransactionCount() ||
        m_undoCount != m_batch.UndoCount()) {
        Forget();
        m_transactionCount = m_connection.TransactionCount();
        m_undoCount = m_batch.UndoCount();
    }
    return true;
}

void ReferenceKeys::Forget() {
    for (KeyCache& known : m_known) {
        known.clear();
    }
}

std::int64_t ReferenceKeys::LookUp(const schema::RecordType& type,
                                   const std::vector<FieldValue>& values) {
    return m_table.Find(type, values);
}

}  // namespace recorddb
