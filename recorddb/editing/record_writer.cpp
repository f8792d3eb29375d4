#include "recorddb/editing/record_writer.h"

#include <algorithm>
#include <string>

#include "platform/messages/message_ids.h"
#include "recorddb/messages/error_message.h"
#include "recorddb/store/tables/table_layout.h"

namespace recorddb {

namespace {

using schema::Field;
using schema::FieldKind;

void FillInDisplayId(EditedRecord& record) {
    const schema::RecordType& type = record.Type();
    if (type.HasStates()) {
        record.buffer.Set(type.key.front(), schema::FormatDisplayId(type.prefix, record.dbid));
    }
}

// True when the key changed by which references know the record.
bool KeyChanged(const EditedRecord& record) {
    const auto& key = record.Type().key;
    return std::any_of(key.begin(), key.end(),
                       [&record](std::size_t part) { return record.buffer.IsChanged(part); });
}

}  // namespace

RecordWriter::Reach RecordWriter::ReachOf(const EditedRecord& record) {
    Reach reach;
    reach.links = !record.attachments.Empty() || (record.original && !record.linked);
    reach.row = reach.links || record.IsNew();
    for (const Field& field : record.Type().fields) {
        if (record.buffer.IsChanged(field.index)) {
            reach.row = true;
            reach.lists = reach.lists || field.kind == FieldKind::ReferenceList;
        }
    }
    return reach;
}

// A savepoint costs a tenth of what writing a record does, so one is made only where it is needed.
// The row goes first; when it is refused, nothing was written. When a list of a new record is
// refused, its row is removed again and its lists with it.
AtomicWrite::Refusable RecordWriter::RefusableOf(const EditedRecord& record, Reach reach) {
    return reach.links || (reach.lists && !record.IsNew()) ? AtomicWrite::Refusable::Any
                                                           : AtomicWrite::Refusable::First;
}

void RecordWriter::SaveLists(const EditedRecord& record) {
    for (const Field& field : record.Type().fields) {
        if (field.kind == FieldKind::ReferenceList && record.buffer.IsChanged(field.index)) {
            m_parts.tables.List(record.Type(), field)
                .Save(record.dbid, record.buffer.Saved(field.index),
                      record.buffer.Get(field.index));
        }
    }
}

PaMessage RecordWriter::Outdated(const EditedRecord& record) {
    const schema::RecordType& type = record.Type();
    const auto version = m_parts.tables.Records(type).Version(record.dbid);
    if (!version) {
        return ErrorMessage(message_id::kRecordGone, {{u"_datatype_", type.name},
                                                      {u"_value_", std::to_string(record.dbid)}});
    }
    const std::string id = m_parts.keyTable.KeyOf(type, record.dbid).value_or("");
    return ErrorMessage(message_id::kRecordChanged, {{u"_datatype_", type.name},
                                                     {u"_value_", id},
                                                     {u"_found_", std::to_string(*version)},
                                                     {u"_based_", std::to_string(record.version)}});
}

void RecordWriter::NumberNew(EditedRecord& record) {
    if (record.dbid == 0) {
        record.dbid = m_parts.dbids.Reserve(record.Type());
    }
    FillInDisplayId(record);
}

PaMessage RecordWriter::WriteRow(EditedRecord& record) {
    RecordTable& table = m_parts.tables.Records(record.Type());
    if (!record.IsNew()) {
        if (KeyChanged(record)) {
            m_parts.keys.Forget();
        }
        const bool updated = table.Update(record.dbid, record.version, record.buffer);
        return updated ? PaMessage() : Outdated(record);
    }
    NumberNew(record);
    table.Insert(record.dbid, record.buffer);
    return {};
}

PaMessage RecordWriter::WriteLinks(const EditedRecord& record) {
    if (record.original && !record.linked) {
        m_parts.duplicates.Link(record.Type().id, record.dbid, *record.original);
    }
    return m_parts.attachments.Write(record.Type().id, record.dbid, record.attachments);
}

void RecordWriter::SaveListsOfNew(const EditedRecord& record, const AtomicWrite& write) {
    try {
        SaveLists(record);
    } catch (const sql::Error& error) {
        if (error.IsConstraint() && !write.UndoesAll()) {
            m_parts.tables.Records(record.Type()).Remove(record.dbid);
        }
        throw;
    }
}

PaMessage RecordWriter::WriteAll(EditedRecord& record, Reach reach) {
    AtomicWrite write(m_parts.batch.GetConnection(), RefusableOf(record, reach));
    PaMessage problem = WriteRow(record);
    if (problem.ID() == 0 && reach.lists) {
        if (record.IsNew()) {
            SaveListsOfNew(record, write);
        } else {
            SaveLists(record);
        }
    }
    // What the record refers to may have been undone since it was set; where no foreign key stands,
    // nobody else would notice.
    if (problem.ID() == 0 && IsSpread(m_parts.batch.GetLayout(), record.Type())) {
        problem = m_parts.checks.CheckReferences(record);
    }
    if (problem.ID() == 0 && reach.links) {
        problem = WriteLinks(record);
    }
    if (problem.ID() == 0) {
        write.Keep();
    }
    return problem;
}

PaMessage RecordWriter::DbIdTaken(const EditedRecord& record) {
    return ErrorMessage(message_id::kDbIdTaken, {{u"_datatype_", record.Type().name},
                                                 {u"_value_", std::to_string(record.dbid)}});
}

// Attachments have contents, which are too large to gather. A record that was opened before
// something was undone may rely on what is no longer there; the engine finds out.
bool RecordWriter::MayBeGathered(const EditedRecord& record) const {
    const WriteBatch& batch = m_parts.batch;
    return batch.IsGathering() && record.attachments.Empty() &&
           record.undoCount == batch.UndoCount() &&
           (record.IsNew() || !batch.ChangesKey(record.Type(), record.buffer));
}

// Refuses what the engine would refuse of the record because of what this session has done.
PaMessage RecordWriter::CheckGathered(const EditedRecord& record) {
    const schema::RecordType& type = record.Type();
    if (record.IsNew() && m_parts.batch.Pending().HasNew(type, record.dbid)) {
        return DbIdTaken(record);
    }
    if (!record.IsNew() && m_parts.tables.Records(type).Version(record.dbid) != record.version) {
        return Outdated(record);
    }
    return {};
}

PaMessage RecordWriter::Gather(EditedRecord& record) {
    if (record.IsNew()) {
        NumberNew(record);
    }
    PaMessage problem = CheckGathered(record);
    if (problem.ID() != 0) {
        return problem;
    }
    m_parts.batch.Put(record.Type(), record.dbid, record.version, record.buffer);
    if (record.original && !record.linked) {
        m_parts.duplicates.Link(record.Type().id, record.dbid, *record.original);
    }
    return {};
}

PaMessage RecordWriter::WriteAtOnce(EditedRecord& record, Reach reach) {
    // Outside the try: a failure here is one of the records that were gathered, not of this one.
    m_parts.batch.Apply(WriteBatch::For::Writing);
    m_parts.batch.ForgetVersions();
    if (m_parts.batch.Writes().IsOn()) {
        m_parts.batch.Writes().Note(record.Type(), record.dbid, record.buffer);
    }
    m_parts.batch.Answers().Forget(record.Type(), record.dbid, record.buffer);
    try {
        PaMessage problem = WriteAll(record, reach);
        // Once more, since it has a dbid now if it had none.
        m_parts.batch.Answers().Forget(record.Type(), record.dbid, record.buffer);
        return problem;
    } catch (const sql::Error& error) {
        if (!error.IsConstraint()) {
            throw;
        }
        return Explain(record, error);
    }
}

// A constraint is broken only when another writer came in between, or when the caller skipped
// Validate: so the checks of Validate find out which one it is.
PaMessage RecordWriter::Explain(const EditedRecord& record, const sql::Error& error) {
    PaMessage problem;
    if (error.Kind() == sql::ErrorKind::UniqueViolation) {
        const auto& columns = error.Columns();
        const auto names = [&columns](std::string_view name) {
            return std::find(columns.begin(), columns.end(), name) != columns.end();
        };
        if (names(schema::kDbIdName) ||
            (record.Type().HasStates() && names(schema::kDisplayIdName))) {
            return DbIdTaken(record);
        }
        problem = m_parts.checks.CheckUnique(record);
    } else if (error.Kind() == sql::ErrorKind::ForeignKeyViolation) {
        problem = m_parts.checks.CheckReferences(record);
    }
    if (problem.ID() != 0) {
        return problem;
    }
    return ErrorMessage(message_id::kConstraintBroken,
                        {{u"_datatype_", record.Type().name}, {u"_coreinfo_", error.DriverText()}});
}

PaMessage RecordWriter::Write(EditedRecord& record) {
    const Reach reach = ReachOf(record);
    const std::int64_t reserved = record.dbid;
    PaMessage problem;
    if (reach.row) {
        problem = MayBeGathered(record) ? Gather(record) : WriteAtOnce(record, reach);
    }
    const bool failed = problem.ID() != 0;
    if (record.IsNew() && (!failed || reserved == 0)) {
        m_parts.dbids.Release(record.Type(), record.dbid);
    }
    if (failed) {
        // Nobody has seen a dbid that was given in here, so the next attempt takes a fresh one.
        record.dbid = reserved;
        return problem;
    }
    m_parts.watched.Note(record);
    record.version += reach.row ? 1 : 0;
    record.buffer.AcceptChanges();
    record.attachments.Clear();
    record.original.reset();
    return {};
}

}  // namespace recorddb
