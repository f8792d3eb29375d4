#include "recorddb/session/session.h"

#include "platform/messages/message_ids.h"
#include "platform/messages/pamsgexception.h"
#include "recorddb/messages/error_message.h"
#include "recorddb/queries/query_def.h"
#include "recorddb/queries/result_set.h"
#include "recorddb/records/entity.h"
#include "recorddb/records/value_text.h"

namespace recorddb {

namespace {

[[noreturn]] void ThrowBadValue(const char16_t* text, int line) {
    AdThrowMsgExcept(AdGetBadValue0MsgID(), text, u"recorddb/session/session", line);
}

[[noreturn]] void ThrowNoRecord(const EntityDef& def, const Obx_String& identifier) {
    ThrowMessage(ErrorMessage(message_id::kNoRecord, {{u"_datatype_", def.Type().name},
                                                      {u"_value_", identifier.ToUtf8()}}));
}

}  // namespace

Session::Session(Database& database, const SessionOptions& /*options*/)
    : m_parts(new SessionParts(database)) {}

AdEntityDef* Session::GetEntityDef(const Obx_String& recordTypeName) {
    return &m_parts->definitions.Find(recordTypeName);
}

AdEntityPtr Session::GetEntity(AdEntityDef* recordType, const Obx_String& identifier) {
    EntityDef& def = m_parts->definitions.Own(recordType);
    return m_parts->failures.Guard([&]() -> AdEntityPtr {
        const std::string text = identifier.ToUtf8();
        std::int64_t dbid = IntegerOf(text).value_or(0);
        if (dbid == 0 && def.Type().HasStates()) {
            dbid = m_parts->keys.Find(def.Type(), text).dbid;
        }
        const AdPtr<Entity> entity = Entity::Open(m_parts, def, dbid);
        if (!entity) {
            ThrowNoRecord(def, identifier);
        }
        return AdEntityPtr(entity.GetPtr());
    });
}

AdEntityPtr Session::ImportEntity(AdEntityDef* recordType, const unsigned short* state,
                                  const unsigned short* existingId) {
    EntityDef& def = m_parts->definitions.Own(recordType);
    return m_parts->failures.Guard([&]() -> AdEntityPtr {
        AdPtr<Entity> entity;
        if (existingId == nullptr) {
            entity = Entity::New(m_parts, def);
        } else {
            const Obx_String identifier(existingId);
            entity = Entity::Open(m_parts, def, IntegerOf(identifier.ToUtf8()).value_or(0));
            if (!entity) {
                ThrowNoRecord(def, identifier);
            }
        }
        if (const Obx_String wanted(state); !wanted.IsEmpty()) {
            entity->SetState(wanted);
        }
        return AdEntityPtr(entity.GetPtr());
    });
}

void Session::MarkEntityAsDuplicate(const AdEntityPtr& /*duplicate*/,
                                    const AdEntityPtr& /*original*/, AdActionDef* /*action*/,
                                    int /*import*/) {
    ThrowBadValue(u"not yet", __LINE__);
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
    return AdResultSetPtr(new ResultSet(m_parts, AdPtr<QueryDef>(own)));
}

void Session::UnbuildResultSet(AdResultSetPtr& resultSet) {
    resultSet.SetPtr(nullptr);
}

void Session::ImportHistoryData(const AdHistory* /*entries*/, long /*count*/, long /*options*/,
                                CEnumArray<int, int>& /*problemEntries*/, Obx_String& /*problems*/,
                                AdHistoryCallback /*callback*/, void* /*context*/) {
    ThrowBadValue(u"not yet", __LINE__);
}

void Session::CommitImportHistory() {}

void Session::RevertImportHistory() {}

void Session::UpdateImportHistoryExpiredTimestamp(AdEntityDef* /*recordType*/, long /*recordId*/) {}

std::unique_ptr<SessionTransaction> Session::BeginTransaction() {
    return std::make_unique<SessionTransaction>(m_parts);
}

}  // namespace recorddb
