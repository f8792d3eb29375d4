#ifndef RECORDDB_SESSION_H
#define RECORDDB_SESSION_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "platform/core/adsession.h"
#include "recorddb/errors.h"
#include "recorddb/expected_search.h"
#include "recorddb/export.h"
#include "recorddb/session_options.h"
#include "recorddb/statistics.h"
#include "recorddb/written_value.h"

namespace recorddb {

struct SessionParts;

// When the commits of a transaction reach the database. What the session reads is the same.
enum class Writing {
    AtOnce,  // each by itself: what the database refuses is reported as the refusal of that record
    Gathered,  // many together, at the end or when something has to be read from the database. That
               // costs less, but what the database refuses then may be of any record: it fails the
               // transaction, and the work may be done again in one that writes at once.
    Ahead      // not at all: what was gathered is taken, and adopted by a transaction of another
               // session in its turn. Nothing is locked meanwhile. What cannot be gathered, such as
               // attachments, fails the transaction.
};

// What a transaction has gathered ahead of its turn. It belongs to no session and no thread. Made
// by SessionTransaction::Take.
class RECORDDB_API GatheredWork {
  public:
    struct State;

    explicit GatheredWork(std::unique_ptr<State> state);
    GatheredWork(const GatheredWork&) = delete;
    GatheredWork& operator=(const GatheredWork&) = delete;
    ~GatheredWork();

  private:
    friend class SessionTransaction;

    std::unique_ptr<State> m_state;
};

// A part of a session's transaction that can be undone by itself, such as the work on one record.
// The destructor undoes one that is still open. Made by SessionTransaction::Savepoint; savepoints
// nest.
class RECORDDB_API SessionSavepoint {
  public:
    explicit SessionSavepoint(std::shared_ptr<SessionParts> parts);
    SessionSavepoint(const SessionSavepoint&) = delete;
    SessionSavepoint& operator=(const SessionSavepoint&) = delete;
    ~SessionSavepoint();

    // Keeps the work as part of the savepoint or transaction around it. Throws sql::Error.
    void Release();

    // Undoes the work, and takes it off the statistics. Records that were opened meanwhile should
    // be let go of: committing one again is refused when what it was based on is undone. Nothing
    // happens when the savepoint has ended already.
    void Rollback() noexcept;

  private:
    struct State;

    std::unique_ptr<State> m_state;
};

// A transaction around many commits of a session, or a part of one, from construction to Commit or
// Rollback; the destructor rolls back one that is still open. Made by Session::BeginTransaction.
class RECORDDB_API SessionTransaction {
  public:
    enum class Extent { Whole, Part };

    SessionTransaction(std::shared_ptr<SessionParts> parts, Writing writing, Extent extent);
    SessionTransaction(const SessionTransaction&) = delete;
    SessionTransaction& operator=(const SessionTransaction&) = delete;
    ~SessionTransaction();

    // Reads what the work on coming records will need, all at once. This only changes how often the
    // database is asked, and is worth while where sql::Connection::ReadsManyForLess is true. No
    // savepoint may be open. Nothing happens unless writing is gathered. Throws sql::Error.
    void LookAhead(std::span<const ExpectedSearch> searches);

    // Ends a transaction of Writing::Ahead, and returns what it has gathered. No savepoint is open.
    std::unique_ptr<GatheredWork> Take();

    // Puts in what was gathered ahead, as if the work had been done here: new records get their
    // dbids now. The work was done on a state of the database that had all that was permanent at
    // `moment` (Session::Moment). For a transaction that gathers; what it has gathered so far is
    // written first. Returns false, and nothing else has happened, when the same work might now
    // have another outcome; then it has to be done anew. Either way it is used up. Throws
    // sql::Error.
    bool Adopt(GatheredWork& work, std::uint64_t moment);

    // Writes what was gathered so far. Throws sql::Error, after which nothing but a roll-back is
    // possible; the session remembers the failure.
    void Apply();

    // Makes the work permanent. Throws sql::Error, after which everything is undone; the session
    // remembers the failure.
    void Commit();

    // Undoes the work, and takes it off the statistics. Nothing happens when the transaction has
    // ended already.
    void Rollback() noexcept;

    // Begins a savepoint. Throws sql::Error.
    std::unique_ptr<SessionSavepoint> Savepoint();

    // Begins a part of this transaction, which was begun with Writing::AtOnce. It is a transaction
    // in all, but that its work becomes permanent with this one. Meanwhile, everything goes to the
    // part; one at a time, which ends before this one. Throws sql::Error.
    std::unique_ptr<SessionTransaction> BeginPart(Writing writing);

  private:
    struct State;

    std::unique_ptr<State> m_state;
};

// A session with a record database: the core's operations, and what a program that knows the
// database needs besides. Made by Database::OpenSession; the database outlives it and everything
// that it hands out. For one thread.
class RECORDDB_API Session final : public AdSession {
  public:
    explicit Session(std::shared_ptr<SessionParts> parts);

    AdEntityDef* GetEntityDef(const Obx_String& recordTypeName) override;
    AdEntityPtr GetEntity(AdEntityDef* recordType, const Obx_String& identifier) override;
    AdEntityPtr ImportEntity(AdEntityDef* recordType, const unsigned short* state,
                             const unsigned short* existingId) override;
    void MarkEntityAsDuplicate(const AdEntityPtr& duplicate, const AdEntityPtr& original,
                               AdActionDef* action, int import) override;
    AdQueryDefPtr BuildQueryDef(AdEntityDef* recordType, int reserved) override;
    void UnbuildQueryDef(AdQueryDefPtr& query) override;
    AdResultSetPtr BuildResultSet(const AdQueryDefPtr& query) override;
    void UnbuildResultSet(AdResultSetPtr& resultSet) override;
    void ImportHistoryData(const AdHistory* entries, long count, long options,
                           CEnumArray<int, int>& problemEntries, Obx_String& problems,
                           AdHistoryCallback callback, void* context) override;
    void CommitImportHistory() override;
    void RevertImportHistory() override;
    void UpdateImportHistoryExpiredTimestamp(AdEntityDef* recordType, long recordId) override;

    // What the session has done so far.
    const Statistics& GetStatistics() const;

    // The text of the latest refusal of an attachment or a duplicate mark, empty when there was
    // none since the last call. The importer's own messages for these two leave the cause out.
    Obx_String TakeLastRefusal();

    // From here on, the values that records get in this field are noted; with null, the unique keys
    // that records of the type get.
    void Watch(const schema::RecordType& type, const schema::Field* field);
    // From here on nothing is noted; forgets what was.
    void WatchNothing();
    // What has been noted since the last call, also of work that was undone meanwhile.
    std::vector<WrittenValue> TakeWritten();

    // Begins a transaction around many commits, which otherwise are one transaction each. One at a
    // time. Throws sql::Error; std::logic_error when one is open already.
    std::unique_ptr<SessionTransaction> BeginTransaction(Writing writing = Writing::AtOnce);

    // From now on remembers what the latest so many transactions have written, for Adopt. Other
    // writers get their turn only where they wait when a transaction of Writing::Gathered begins;
    // 0 ends that, and is for when no transaction is open. Throws sql::Error.
    void RememberWrites(std::size_t transactions);

    // From now on remembers what the parts of the transaction under way write, for Adopt in one of
    // them. The work ahead may have been done on the state before any of them, whatever `moment`
    // says. That takes memory of a fixed size: after millions of records less and less is adopted.
    void RememberAllWrites();

    // A number for what this session has made permanent so far.
    std::uint64_t Moment() const;

    // Clears Failure, for work that begins again after a roll-back.
    void ForgetFailure();

    // The latest failure of the database itself (disk full, locked, damaged ...), as opposed to a
    // record that was refused. Callers of the core got it as a PaMsgException*.
    const std::optional<sql::Error>& Failure() const;

  private:
    ~Session() override;

    std::shared_ptr<SessionParts> m_parts;
};

}  // namespace recorddb

#endif
