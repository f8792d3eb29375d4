#include "recorddb/session.h"

#include <utility>

#include "platform/messages/message_ids.h"
#include "platform/messages/pamsgexception.h"
#include "recorddb/editing/entity.h"
#include "recorddb/editing/query_def.h"
#include "recorddb/editing/result_set.h"
#include "recorddb/messages/error_message.h"
#include "recorddb/session/session_parts.h"
#include "recorddb/value_text.h"

namespace recorddb {

namespace {

[[noreturn]] void ThrowBadValue(const char16_t* text, int line) {
    AdThrowMsgExcept(AdGetBadValue0MsgID(), text, u"recorddb/session/session", line);
}

std::shared_ptr<const EntityParts> PartsOfEntities(const std::shared_ptr<SessionParts>& parts) {
    return {parts, &parts->ofEntities};
}

// The record with that dbid; `identifier` is what the caller gave, for the error.
AdPtr<Entity> OpenEntity(const std::shared_ptr<SessionParts>& parts, EntityDef& def,
                         std::int64_t dbid, std::string_view identifier) {
    AdPtr<Entity> entity = Entity::Open(PartsOfEntities(parts), def, dbid);
    if (!entity) {
        ThrowMessage(ErrorMessage(message_id::kNoRecord,
                                  {{u"_datatype_", def.Type().name}, {u"_value_", identifier}}));
    }
    return entity;
}

}  // namespace

Session::Session(std::shared_ptr<SessionParts> parts) : m_parts(std::move(parts)) {}

Session::~Session() = default;

AdEntityDef* Session::GetEntityDef(const Obx_String& recordTypeName) {
    return &m_parts->definitions.Find(recordTypeName);
}

AdEntityPtr Session::GetEntity(AdEntityDef* recordType, const Obx_String& identifier) {
    EntityDef& def = m_parts->definitions.Own(recordType);
    return m_parts->failures.Guard([&] {
        const std::string text = identifier.ToUtf8();
        std::int64_t dbid = IntegerOf(text).value_or(0);
        if (dbid == 0 && def.Type().HasStates()) {
            dbid = m_parts->keys.Find(def.Type(), text).dbid;
        }
        return AdEntityPtr(OpenEntity(m_parts, def, dbid, text).GetPtr());
    });
}

AdEntityPtr Session::ImportEntity(AdEntityDef* recordType, const unsigned short* state,
                                  const unsigned short* existingId) {
    EntityDef& def = m_parts->definitions.Own(recordType);
    return m_parts->failures.Guard([&] {
        AdPtr<Entity> entity;
        if (existingId == nullptr) {
            entity = Entity::New(PartsOfEntities(m_parts), def);
        } else {
            const std::string text = Obx_String(existingId).ToUtf8();
            entity = OpenEntity(m_parts, def, IntegerOf(text).value_or(0), text);
        }
        if (const Obx_String wanted(state); !wanted.IsEmpty()) {
            entity->SetState(wanted);
        }
        return AdEntityPtr(entity.GetPtr());
    });
}

void Session::MarkEntityAsDuplicate(const AdEntityPtr& duplicate, const AdEntityPtr& original,
                                    AdActionDef* action, int /*import*/) {
    auto* const ownDuplicate = dynamic_cast<Entity*>(duplicate.GetPtr());
    auto* const ownOriginal = dynamic_cast<Entity*>(original.GetPtr());
    if (ownDuplicate == nullptr || ownOriginal == nullptr) {
        ThrowBadValue(u"the duplicate and its original must be records of this session", __LINE__);
    }
    if (action == nullptr || action->GetType() != AdActionType_t::kDuplicate) {
        ThrowBadValue(u"a record is marked as a duplicate by its duplicate action", __LINE__);
    }
    // Throws for record types without states, which do not have the action.
    ownDuplicate->GetEntityDef()->LookupActionDef(AdActionType_t::kDuplicate);
    try {
        m_parts->failures.Guard([&] { ownDuplicate->MarkAsDuplicateOf(*ownOriginal); });
    } catch (PaMsgException* exception) {
        m_parts->lastRefusal = exception->Messages().front().FullMsg();
        throw;
    }
}

AdQueryDefPtr Session::BuildQueryDef(AdEntityDef* recordType, int /*reserved*/) {
    return AdQueryDefPtr(new QueryDef(m_parts->definitions.Own(recordType)));
}

void Session::UnbuildQueryDef(AdQueryDefPtr& query) {
    query.SetPtr(nullptr);
}

AdResultSetPtr Session::BuildResultSet(const AdQueryDefPtr& query) {
    auto* const own = dynamic_cast<QueryDef*>(query.GetPtr());
    if (own == nullptr) {
        ThrowBadValue(u"the query is not one of this session", __LINE__);
    }
    return AdResultSetPtr(new ResultSet(
        std::shared_ptr<const QueryParts>(m_parts, &m_parts->ofQueries), AdPtr<QueryDef>(own)));
}

void Session::UnbuildResultSet(AdResultSetPtr& resultSet) {
    resultSet.SetPtr(nullptr);
}

void Session::ImportHistoryData(const AdHistory* entries, long count, long /*options*/,
                                CEnumArray<int, int>& problemEntries, Obx_String& problems,
                                AdHistoryCallback callback, void* context) {
    for (long i = 0; i < count; ++i) {
        const PaMessage problem =
            m_parts->failures.Guard([&] { return m_parts->history.Add(entries[i], i + 1); });
        if (problem.ID() != 0) {
            problemEntries.Add(static_cast<int>(i));
            problems += problems.IsEmpty() ? u"" : u"\n";
            problems += problem.FullMsg();
        }
        if (callback != nullptr) {
            callback(i + 1, count, context);
        }
    }
}

void Session::CommitImportHistory() {
    m_parts->statistics.historyEntries +=
        m_parts->failures.Guard([this] { return m_parts->history.Commit(); });
}

void Session::RevertImportHistory() {
    m_parts->history.DropPending(0);
}

void Session::UpdateImportHistoryExpiredTimestamp(AdEntityDef* recordType, long recordId) {
    const EntityDef& def = m_parts->definitions.Own(recordType);
    m_parts->failures.Guard([&] { m_parts->history.UpdateExpiry(def.Type(), recordId); });
}

const Statistics& Session::GetStatistics() const {
    return m_parts->statistics;
}

Obx_String Session::TakeLastRefusal() {
    return std::exchange(m_parts->lastRefusal, Obx_String());
}

void Session::Watch(const schema::RecordType& type, const schema::Field* field) {
    m_parts->watched.Watch(type, field);
}

void Session::WatchNothing() {
    m_parts->watched.WatchNothing();
}

std::vector<WrittenValue> Session::TakeWritten() {
    return m_parts->watched.Take();
}

const std::optional<sql::Error>& Session::Failure() const {
    return m_parts->failures.Last();
}

void Session::ForgetFailure() {
    m_parts->failures.Forget();
}

void Session::RememberWrites(std::size_t transactions) {
    m_parts->batch.Writes().Remember(transactions);
    if (transactions == 0) {
        m_parts->failures.Watch([this] { m_parts->connection.LetOthersWrite(); });
    }
}

void Session::RememberAllWrites() {
    m_parts->batch.Writes().RememberAll();
}

std::uint64_t Session::Moment() const {
    return m_parts->batch.Writes().Moment();
}

std::unique_ptr<SessionTransaction> Session::BeginTransaction(Writing writing) {
    return std::make_unique<SessionTransaction>(m_parts, writing,
                                                SessionTransaction::Extent::Whole);
}

}  // namespace recorddb
