#include "tool/guarded/guarded_session.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include "tool/guarded/guarded_message.h"
#include "tool/guarded/guarded_text.h"

namespace tool {

namespace {

Obx_String GuardedAnswer(const Obx_String& value) {
    return Guarded(value, PacketPlace::None);
}

// An attachment as the core describes it: id, file name and size, a line each, and the description,
// which alone may have line ends.
Obx_String GuardedAttachment(const Obx_String& text) {
    constexpr int ownLines = 3;
    std::u16string_view rest = text.View();
    std::u16string guarded;
    const auto append = [&guarded](std::u16string_view line) {
        guarded += Guarded(Obx_String(line), PacketPlace::AttachmentLine).View();
    };
    for (int line = 0; line < ownLines; ++line) {
        const std::size_t end = std::min(rest.find(u'\n'), rest.size());
        append(rest.substr(0, end));
        guarded += u'\n';
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    append(rest);
    return Obx_String(std::move(guarded));
}

// What `text` says: the text itself where nothing in it is guarded, as mostly, otherwise put into
// `room`.
const Obx_String& RestoredIn(Obx_String& room, const Obx_String& text) {
    if (!IsGuarded(text.View())) {
        return text;
    }
    room = Restored(text);
    return room;
}

// A text of a fixed room. One that its room does not hold has no terminator, and stays so, since it
// is refused for that.
template <std::size_t Size>
void Restore(char16_t (&text)[Size]) {
    const auto* const end = std::find(std::begin(text), std::end(text), u'\0');
    const std::u16string_view view(text, static_cast<std::size_t>(end - text));
    if (end != std::end(text) && IsGuarded(view)) {
        const Obx_String restored = Restored(Obx_String(view));
        std::copy_n(restored.View().begin(), restored.View().size(), text);
        text[restored.View().size()] = u'\0';
    }
}

AdHistory RestoredEntry(AdHistory entry) {
    Restore(entry.userName);
    Restore(entry.actionName);
    Restore(entry.oldState);
    Restore(entry.newState);
    Restore(entry.comments);
    return entry;
}

class GuardedFieldInfo final : public AdFieldInfo {
  public:
    GuardedFieldInfo(AdFieldInfoPtr field, bool isAttachments)
        : m_field(std::move(field)), m_isAttachments(isAttachments) {}

    Obx_String GetValue() const override { return GuardedAnswer(m_field->GetValue()); }
    void GetValue(CStringArray& values) const override {
        CStringArray all;
        m_field->GetValue(all);
        values.RemoveAll();
        for (const Obx_String& value : all) {
            values.Add(m_isAttachments ? GuardedAttachment(value) : GuardedAnswer(value));
        }
    }
    int GetValueStatus() const override { return m_field->GetValueStatus(); }

  private:
    AdFieldInfoPtr m_field;
    bool m_isAttachments;
};

class GuardedEntity final : public AdEntity {
  public:
    explicit GuardedEntity(AdEntityPtr entity) : m_entity(std::move(entity)) {}

    // What is guarded here; the record itself for anything else.
    static AdEntityPtr Inner(const AdEntityPtr& entity) {
        const auto* const guarded = dynamic_cast<const GuardedEntity*>(entity.GetPtr());
        return guarded != nullptr ? guarded->m_entity : entity;
    }

    AdEntityDef* GetEntityDef() const override { return m_entity->GetEntityDef(); }
    int GetFieldType(const Obx_String& fieldName) const override {
        return WithGuardedMessages([&] { return m_entity->GetFieldType(fieldName); });
    }
    Obx_String GetFieldReferencedEntityDefName(const Obx_String& fieldName) const override {
        return WithGuardedMessages(
            [&] { return m_entity->GetFieldReferencedEntityDefName(fieldName); });
    }
    AdFieldInfoPtr GetFieldValue(const Obx_String& fieldName) const override {
        return WithGuardedMessages([&] {
            const int type = m_entity->GetFieldType(fieldName);
            return AdFieldInfoPtr(new GuardedFieldInfo(m_entity->GetFieldValue(fieldName),
                                                       type == ad_field_type::kAttachments));
        });
    }
    Obx_String SetFieldValue(const Obx_String& fieldName, const Obx_String& value,
                             int import) override {
        Obx_String room;
        const Obx_String& restored = RestoredIn(room, value);
        return Refusal([&] { return m_entity->SetFieldValue(fieldName, restored, import); });
    }
    Obx_String AddFieldValue(const Obx_String& fieldName, const Obx_String& value,
                             int import) override {
        Obx_String room;
        const Obx_String& restored = RestoredIn(room, value);
        return Refusal([&] { return m_entity->AddFieldValue(fieldName, restored, import); });
    }
    Obx_String DeleteFieldValue(const Obx_String& fieldName, const Obx_String& value,
                                int import) override {
        return Refusal(
            [&] { return m_entity->DeleteFieldValue(fieldName, Restored(value), import); });
    }
    Obx_String AddAttachment(const Obx_String& fieldName, const Obx_String& fileName,
                             const Obx_String& description) override {
        return Refusal([&] {
            return m_entity->AddAttachment(fieldName, Restored(fileName), Restored(description));
        });
    }
    // Restoring the four lines as one text gives the core's own text.
    Obx_String DeleteAttachment(const Obx_String& fieldName,
                                const Obx_String& attachment) override {
        return Refusal([&] { return m_entity->DeleteAttachment(fieldName, Restored(attachment)); });
    }
    void Validate(PaMessage& message) override {
        WithGuardedMessages([&] { m_entity->Validate(message); });
        message = GuardedMessage(message);
    }
    void Commit(PaMessage& message) override {
        WithGuardedMessages([&] { m_entity->Commit(message); });
        message = GuardedMessage(message);
    }
    void Revert() override { m_entity->Revert(); }

  private:
    template <typename Work>
    static Obx_String Refusal(Work work) {
        Obx_String refusal = WithGuardedMessages(work);
        return refusal.IsEmpty() ? refusal : GuardedAnswer(refusal);
    }

    AdEntityPtr m_entity;
};

class GuardedQueryDef final : public AdQueryDef {
  public:
    explicit GuardedQueryDef(AdQueryDefPtr query) : m_query(std::move(query)) {}

    static AdQueryDefPtr Inner(const AdQueryDefPtr& query) {
        const auto* const guarded = dynamic_cast<const GuardedQueryDef*>(query.GetPtr());
        return guarded != nullptr ? guarded->m_query : query;
    }

    void SelectField(int column, const Obx_String& fieldPath) override {
        m_query->SelectField(column, fieldPath);
    }
    void SelectDbId(int column) override { m_query->SelectDbId(column); }
    AdFilterNode* BuildFilter(AdFilterNode* parent, const Obx_String& fieldName,
                              AdCompOp_t operation, const Obx_String& value,
                              int reserved) override {
        return WithGuardedMessages([&] {
            return m_query->BuildFilter(parent, fieldName, operation, Restored(value), reserved);
        });
    }

  private:
    AdQueryDefPtr m_query;
};

class GuardedResultSet final : public AdResultSet {
  public:
    explicit GuardedResultSet(AdResultSetPtr resultSet) : m_resultSet(std::move(resultSet)) {}

    void SetRowLimit(long rows) override { m_resultSet->SetRowLimit(rows); }
    void Prepare() override {
        WithGuardedMessages([this] { m_resultSet->Prepare(); });
    }
    void Execute() override {
        WithGuardedMessages([this] { m_resultSet->Execute(); });
    }
    void FetchNext(int& status) override { m_resultSet->FetchNext(status); }
    long GetRowCount() override { return m_resultSet->GetRowCount(); }
    void GetColumn(int column, Obx_String& value, int reserved) override {
        WithGuardedMessages([&] { m_resultSet->GetColumn(column, value, reserved); });
        value = GuardedAnswer(value);
    }

  private:
    AdResultSetPtr m_resultSet;
};

class GuardedSession final : public AdSession {
  public:
    explicit GuardedSession(AdSessionPtr session) : m_session(std::move(session)) {}

    AdEntityDef* GetEntityDef(const Obx_String& recordTypeName) override {
        return m_session->GetEntityDef(recordTypeName);
    }
    AdEntityPtr GetEntity(AdEntityDef* recordType, const Obx_String& identifier) override {
        return WithGuardedMessages(
            [&] { return Open(m_session->GetEntity(recordType, Restored(identifier))); });
    }
    AdEntityPtr ImportEntity(AdEntityDef* recordType, const unsigned short* state,
                             const unsigned short* existingId) override {
        const bool isNamed = state != nullptr;
        const Obx_String restored = isNamed ? Restored(Obx_String(state)) : Obx_String();
        return WithGuardedMessages([&] {
            return Open(m_session->ImportEntity(recordType, isNamed ? restored.Units() : nullptr,
                                                existingId));
        });
    }
    void MarkEntityAsDuplicate(const AdEntityPtr& duplicate, const AdEntityPtr& original,
                               AdActionDef* action, int import) override {
        WithGuardedMessages([&] {
            m_session->MarkEntityAsDuplicate(GuardedEntity::Inner(duplicate),
                                             GuardedEntity::Inner(original), action, import);
        });
    }
    AdQueryDefPtr BuildQueryDef(AdEntityDef* recordType, int reserved) override {
        return AdQueryDefPtr(new GuardedQueryDef(m_session->BuildQueryDef(recordType, reserved)));
    }
    void UnbuildQueryDef(AdQueryDefPtr& query) override { query.SetPtr(nullptr); }
    AdResultSetPtr BuildResultSet(const AdQueryDefPtr& query) override {
        return AdResultSetPtr(
            new GuardedResultSet(m_session->BuildResultSet(GuardedQueryDef::Inner(query))));
    }
    void UnbuildResultSet(AdResultSetPtr& resultSet) override { resultSet.SetPtr(nullptr); }

    void ImportHistoryData(const AdHistory* entries, long count, long options,
                           CEnumArray<int, int>& problemEntries, Obx_String& problems,
                           AdHistoryCallback callback, void* context) override {
        std::vector<AdHistory> restored;
        std::transform(entries, entries + count, std::back_inserter(restored), RestoredEntry);
        WithGuardedMessages([&] {
            m_session->ImportHistoryData(restored.data(), count, options, problemEntries, problems,
                                         callback, context);
        });
        problems = GuardedAnswer(problems);
    }
    void CommitImportHistory() override { m_session->CommitImportHistory(); }
    void RevertImportHistory() override { m_session->RevertImportHistory(); }
    void UpdateImportHistoryExpiredTimestamp(AdEntityDef* recordType, long recordId) override {
        m_session->UpdateImportHistoryExpiredTimestamp(recordType, recordId);
    }

  private:
    static AdEntityPtr Open(AdEntityPtr entity) {
        return AdEntityPtr(new GuardedEntity(std::move(entity)));
    }

    AdSessionPtr m_session;
};

}  // namespace

AdSessionPtr OpenGuarded(AdSessionPtr session) {
    return AdSessionPtr(new GuardedSession(std::move(session)));
}

}  // namespace tool
