#include "recorddb/editing/record_writer.h"

#include <algorithm>
#include <string>

#include "platform/messages/message_ids.h"
#include "recorddb/editing/record_checks.h"
#include "recorddb/messages/error_message.h"
#include "recorddb/sql/error.h"
#include "recorddb/store/atomic_write.h"

namespace recorddb {

namespace {

using schema::Field;
using schema::FieldKind;

// Which tables the changes of a record reach.
struct Reach {
    bool row = false;  // a change of anything of a record counts as a change of its row
    bool lists = false;
    bool links = false;  // attachments and the mark of a duplicate
};

Reach ReachOf(const EditedRecord& record) {
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
// The row goes first; when it is refused, nothing was written. The lists of a new record go with
// its row, if need be.
AtomicWrite::Extent ExtentOf(const EditedRecord& record, Reach reach) {
    return reach.links || (reach.lists && !record.IsNew()) ? AtomicWrite::Extent::SeveralStatements
                                                           : AtomicWrite::Extent::OneStatement;
}

void SaveLists(SessionParts& parts, EditedRecord& record) {
    for (const Field& field : record.Type().fields) {
        if (field.kind == FieldKind::ReferenceList && record.buffer.IsChanged(field.index)) {
            parts.tables.List(record.Type(), field)
                .Save(record.dbid, record.buffer.Saved(field.index),
                      record.buffer.Get(field.index));
        }
    }
}

void FillInDisplayId(EditedRecord& record) {
    const schema::RecordType& type = record.Type();
    if (type.HasStates()) {
        record.buffer.Set(type.key.front(), schema::FormatDisplayId(type.prefix, record.dbid));
    }
}

PaMessage Outdated(SessionParts& parts, const EditedRecord& record) {
    const schema::RecordType& type = record.Type();
    const auto version = parts.tables.Records(type).Version(record.dbid);
    if (!version) {
        return ErrorMessage(message_id::kRecordGone, {{u"_datatype_", type.name},
                                                      {u"_value_", std::to_string(record.dbid)}});
    }
    const std::string id = parts.keys.KeyOf(type, record.dbid).value_or("");
    return ErrorMessage(message_id::kRecordChanged, {{u"_datatype_", type.name},
                                                     {u"_value_", id},
                                                     {u"_found_", std::to_string(*version)},
                                                     {u"_based_", std::to_string(record.version)}});
}

// True when the key changed by which references know the record.
bool KeyChanged(const EditedRecord& record) {
    const auto& key = record.Type().key;
    return std::any_of(key.begin(), key.end(),
                       [&record](std::size_t part) { return record.buffer.IsChanged(part); });
}

PaMessage WriteRow(SessionParts& parts, EditedRecord& record) {
    RecordTable& table = parts.tables.Records(record.Type());
    if (!record.IsNew()) {
        if (KeyChanged(record)) {
            parts.keys.Forget();
        }
        const bool updated = table.Update(record.dbid, record.version, record.buffer);
        return updated ? PaMessage() : Outdated(parts, record);
    }
    if (record.dbid == 0) {
        record.dbid = parts.dbids.Reserve(record.Type());
    }
    FillInDisplayId(record);
    table.Insert(record.dbid, record.buffer);
    return {};
}

PaMessage WriteLinks(SessionParts& parts, const EditedRecord& record) {
    if (record.original && !record.linked) {
        parts.duplicates.Link(record.Type().id, record.dbid, *record.original);
    }
    return WriteAttachments(parts.attachments, parts.folder, parts.contents, record.Type().id,
                            record.dbid, record.attachments);
}

void SaveListsOfNew(SessionParts& parts, EditedRecord& record) {
    try {
        SaveLists(parts, record);
    } catch (const sql::Error& error) {
        if (error.IsConstraint()) {
            parts.tables.Records(record.Type()).Remove(record.dbid);
        }
        throw;
    }
}

PaMessage WriteAll(SessionParts& parts, EditedRecord& record, Reach reach) {
    AtomicWrite write(parts.connection, ExtentOf(record, reach));
    PaMessage problem = WriteRow(parts, record);
    if (problem.ID() == 0 && reach.lists) {
        if (record.IsNew()) {
            SaveListsOfNew(parts, record);
        } else {
            SaveLists(parts, record);
        }
    }
    if (problem.ID() == 0 && reach.links) {
        problem = WriteLinks(parts, record);
    }
    if (problem.ID() == 0) {
        write.Keep();
    }
    return problem;
}

// A constraint is broken only when another writer came in between, or when the caller did without
// Validate: a broken one is looked for where Validate looks.
PaMessage Explain(SessionParts& parts, const EditedRecord& record, const sql::Error& error) {
    PaMessage problem;
    if (error.Kind() == sql::ErrorKind::UniqueViolation) {
        const auto& columns = error.Columns();
        const auto names = [&columns](std::string_view name) {
            return std::find(columns.begin(), columns.end(), name) != columns.end();
        };
        if (names(schema::dbIdName) ||
            (record.Type().HasStates() && names(schema::displayIdName))) {
            return ErrorMessage(
                message_id::kDbIdTaken,
                {{u"_datatype_", record.Type().name}, {u"_value_", std::to_string(record.dbid)}});
        }
        problem = CheckUnique(parts, record);
    } else if (error.Kind() == sql::ErrorKind::ForeignKeyViolation) {
        problem = CheckReferences(parts, record);
    }
    if (problem.ID() != 0) {
        return problem;
    }
    return ErrorMessage(message_id::kConstraintBroken,
                        {{u"_datatype_", record.Type().name}, {u"_coreinfo_", error.DriverText()}});
}

}  // namespace

PaMessage WriteRecord(SessionParts& parts, EditedRecord& record) {
    const Reach reach = ReachOf(record);
    const std::int64_t reserved = record.dbid;
    PaMessage problem;
    if (reach.row) {
        try {
            problem = WriteAll(parts, record, reach);
        } catch (const sql::Error& error) {
            if (!error.IsConstraint()) {
                throw;
            }
            problem = Explain(parts, record, error);
        }
    }
    const bool failed = problem.ID() != 0;
    if (record.IsNew() && (!failed || reserved == 0)) {
        parts.dbids.Release(record.Type(), record.dbid);
    }
    if (failed) {
        // Nobody has seen a dbid that was given in here, so the next attempt takes a fresh one.
        record.dbid = reserved;
        return problem;
    }
    record.version += reach.row ? 1 : 0;
    record.buffer.AcceptChanges();
    record.attachments.Clear();
    record.original.reset();
    return {};
}

}  // namespace recorddb
