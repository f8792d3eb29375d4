#ifndef RECORDDB_EDITING_ENTITY_H
#define RECORDDB_EDITING_ENTITY_H

#include <cstdint>
#include <memory>
#include <vector>

#include "platform/core/adentity.h"
#include "recorddb/editing/database_failures.h"
#include "recorddb/editing/edited_record.h"
#include "recorddb/editing/record_attachments.h"
#include "recorddb/editing/record_checks.h"
#include "recorddb/editing/record_writer.h"
#include "recorddb/editing/value_rules.h"
#include "recorddb/statistics.h"
#include "recorddb/store/batch/write_batch.h"
#include "recorddb/store/dbid_reservations.h"
#include "recorddb/store/duplicate_table.h"
#include "recorddb/store/history_table.h"
#include "recorddb/store/key_table.h"
#include "recorddb/store/record_tables.h"

namespace recorddb {

// What open records work with. Their session owns it all.
struct EntityParts {
    DatabaseFailures& failures;
    WriteBatch& batch;
    RecordTables& tables;
    KeyTable& keys;
    ValueRules& rules;
    DbIdReservations& dbids;
    HistoryTable& history;
    RecordAttachments& attachments;
    DuplicateTable& duplicates;
    RecordChecks& checks;
    RecordWriter& writer;
    Statistics& statistics;   // of what has been committed
    Obx_String& lastRefusal;  // of an attachment
};

// A record that is open for writing. It keeps alive what it works with.
class Entity final : public AdEntity {
  public:
    // A new record of a type, in the initial state when it has states.
    static AdPtr<Entity> New(const std::shared_ptr<const EntityParts>& parts, EntityDef& def);

    // The record of a type with that dbid; null when there is none. Throws sql::Error.
    static AdPtr<Entity> Open(const std::shared_ptr<const EntityParts>& parts, EntityDef& def,
                              std::int64_t dbid);

    AdEntityDef* GetEntityDef() const override { return &m_record.def; }
    int GetFieldType(const Obx_String& fieldName) const override;
    Obx_String GetFieldReferencedEntityDefName(const Obx_String& fieldName) const override;
    AdFieldInfoPtr GetFieldValue(const Obx_String& fieldName) const override;
    Obx_String SetFieldValue(const Obx_String& fieldName, const Obx_String& value,
                             int import) override;
    Obx_String AddFieldValue(const Obx_String& fieldName, const Obx_String& value,
                             int import) override;
    Obx_String DeleteFieldValue(const Obx_String& fieldName, const Obx_String& value,
                                int import) override;
    Obx_String AddAttachment(const Obx_String& fieldName, const Obx_String& fileName,
                             const Obx_String& description) override;
    Obx_String DeleteAttachment(const Obx_String& fieldName, const Obx_String& attachment) override;
    void Validate(PaMessage& message) override;
    void Commit(PaMessage& message) override;
    void Revert() override;

    // Moves the record to a state. Throws a PaMsgException* when the type does not have it.
    void SetState(const Obx_String& state);

    // Marks the record as a duplicate of another one and moves it to the state that its type names
    // for duplicates. Throws a PaMsgException* when the two cannot be duplicate and original.
    void MarkAsDuplicateOf(Entity& original);

  private:
    Entity(std::shared_ptr<const EntityParts> parts, EntityDef& def);
    ~Entity() override;

    std::int64_t DbId();
    void Load();
    void LoadList(const schema::Field& field);
    // Loads the columns or the list that the field's value is part of.
    void Load(const schema::Field& field);
    void Change(const schema::Field& field, FieldValue value);
    ReferenceList CurrentList(const schema::Field& field);
    std::vector<Obx_String> ValuesOf(const schema::Field& field);
    std::vector<Obx_String> HistoryLines();
    std::vector<Attachment> Attachments(const schema::Field& field);
    PaMessage Attach(const schema::Field& field, const Obx_String& fileName,
                     const Obx_String& description);
    PaMessage Detach(const schema::Field& field, const Obx_String& attachment);
    void MoveToState(const schema::Field& field, FieldValue state);
    void CheckDuplicate(Entity& original);
    std::string DisplayKey();
    PaMessage Set(const schema::Field& field, const Obx_String& value);
    PaMessage Add(const schema::Field& field, const Obx_String& value);
    PaMessage Delete(const schema::Field& field, const Obx_String& value);
    PaMessage Check();
    PaMessage Write();

    // Does the work on the field of that name and returns the text of the message that it returns.
    template <typename Work>
    Obx_String OnField(const Obx_String& fieldName, Work work) {
        const FieldDef* const field = m_record.def.FindField(fieldName.View());
        if (field == nullptr) {
            return NoField(fieldName);
        }
        return m_parts->failures.Guard([&] { return work(field->Field()); }).FullMsg();
    }
    Obx_String NoField(const Obx_String& fieldName) const;

    std::shared_ptr<const EntityParts> m_parts;
    EditedRecord m_record;
    FieldValue m_firstState;        // of a new record, also after Revert
    bool m_checked = false;         // found valid, and not changed since
    std::uint64_t m_checkedAt = 0;  // WriteBatch::ChangeCount at that check
    bool m_fieldsSet = false;       // since it was opened or last committed
};

}  // namespace recorddb

#endif
