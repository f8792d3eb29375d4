#ifndef PLATFORM_MESSAGES_CORE_MESSAGES_H
#define PLATFORM_MESSAGES_CORE_MESSAGES_H

#include <array>

#include "platform/messages/catalogue.h"
#include "platform/messages/message_ids.h"

// The core's part of the catalogue, by ascending id.
inline constexpr auto kCoreMessages = std::to_array<CatalogueMessage>({
    {message_id::kBadValue, u"A value cannot be used: _text_ (_file_, line _line_).",
     "An operation was given an argument that it cannot take, such as a session that is not open. "
     "This is a fault of the program that makes the call; report it with the whole text."},
    {message_id::kInvalidUtf16,
     u"The text is not valid UTF-16: the unit at index _position_ belongs to no character.",
     "A packet contains half of a surrogate pair, so it was damaged or cut on its way. Nothing of "
     "it was imported. Produce the packet again, and check how it was converted to UTF-16."},
    {message_id::kDatabaseFailed, u"The database failed (_coreinfo_): _text_",
     "The database itself refused to work: the disk is full, the file is locked by another program "
     "or damaged, or it may not be written to. The text ends with the database engine's reason. "
     "Nothing is wrong with the data. Mend the cause and run the same work again."},
    {message_id::kNoRecordType, u"There is no record type \"_value_\".",
     "A name was given that is not a record type of this database. Case does not matter. Compare "
     "it with the schema that the database was made from."},
    {message_id::kNoField, u"The record type \"_datatype_\" has no field \"_field_\".",
     "A name was given that is not a field of the record type. Case does not matter. Compare it "
     "with the schema, or rename the field in the source."},
    {message_id::kNoRecord,
     u"There is no record of type \"_datatype_\" with the identifier \"_value_\".",
     "A record was asked for by its dbid or display id and is not in the database."},
    {message_id::kNoState,
     u"The record type \"_datatype_\" has no state \"_value_\"; its states are: _states_.",
     "Only the states that the schema lists can be given to a record; case matters. Correct the "
     "state in the source, or do not import states."},
    {message_id::kNoAction, u"The record type \"_datatype_\" has no action of the kind _value_.",
     "Only record types with states can change state and have duplicates (kinds 3 and 4)."},
    {message_id::kValueNotText,
     u"The field \"_field_\" of a record of type \"_datatype_\" cannot take \"_value_\": it is not "
     u"valid text.",
     "The value holds half of a surrogate pair or a NUL character, so it was damaged on its way. "
     "Produce the source again."},
    {message_id::kValueTooLong,
     u"The field \"_field_\" of a record of type \"_datatype_\" cannot take \"_value_\": it has "
     u"_length_ characters, and the field takes _limit_.",
     "The schema limits the length of the field's values. Nothing is cut silently. Shorten the "
     "value in the source, or make the database with a schema that allows more."},
    {message_id::kValueNotInteger,
     u"The field \"_field_\" of a record of type \"_datatype_\" cannot take \"_value_\": it is not "
     u"a whole number of at most 64 bits.",
     "The schema says that the field holds whole numbers. Correct the value in the source."},
    {message_id::kValueNotDateTime,
     u"The field \"_field_\" of a record of type \"_datatype_\" cannot take \"_value_\": it is not "
     u"a valid date and time.",
     "The schema says that the field holds dates and times, written as \"YYYY-MM-DD HH:MM:SS\" or "
     "in another form of ISO 8601. The value is written otherwise, or names a date that does not "
     "exist. Correct it in the source."},
    {message_id::kValueNotChoice,
     u"The field \"_field_\" of a record of type \"_datatype_\" cannot take \"_value_\": its "
     u"choices are: _choices_.",
     "The schema lists the values that the field can have; case matters. Correct the value in the "
     "source, or make the database with a schema that has it among the choices."},
    {message_id::kFieldOfDatabase,
     u"The field \"_field_\" of a record of type \"_datatype_\" cannot be set to \"_value_\": the "
     u"database fills it in.",
     "The dbid and the display id of a record are given by the database. Leave the field out."},
    {message_id::kFieldNotPlain,
     u"The field \"_field_\" of a record of type \"_datatype_\" cannot be set to \"_value_\": it "
     u"does not hold a single value.",
     "The field is a reference list, or holds attachments or history, which are added one by one. "
     "This is a fault of the program that makes the call."},
    {message_id::kFieldNotList,
     u"The field \"_field_\" of a record of type \"_datatype_\" is not a reference list: "
     u"\"_value_\" can be neither added to it nor taken out.",
     "Only reference lists take values one by one. This is a fault of the program that makes the "
     "call."},
    {message_id::kReferenceUnknown,
     u"The field \"_field_\" of a record of type \"_datatype_\" cannot refer to \"_value_\": there "
     u"is no record of type \"_refentitydef_\" with this key.",
     "A reference names a record by its unique key: its display id, or the fields that the schema "
     "says, separated by blanks. ztimport lets the record wait for one that the same load may "
     "still bring, except with --whole-packets; a program that calls the importer itself imports "
     "the records that are referred to first. Correct the value in the source, bring the record "
     "that is missing, or map the reference to the field that the source uses."},
    {message_id::kReferenceUnclear,
     u"The field \"_field_\" of a record of type \"_datatype_\" cannot refer to \"_value_\": "
     u"several records of type \"_refentitydef_\" could be meant.",
     "The unique key has several fields, which are separated by blanks, and contains blanks itself "
     "in such a way that it fits more than one record. Rename one of them."},
    {message_id::kNotInList,
     u"The field \"_field_\" of a record of type \"_datatype_\" does not hold \"_value_\", which "
     u"was to be taken out.",
     "The record named exists but is not in the list, so there is nothing to take out."},
    {message_id::kReferenceUndecided,
     u"The field \"_field_\" of a record of type \"_datatype_\" cannot refer to \"_value_\": it "
     u"can be read as the key of a record of type \"_refentitydef_\" in more ways than the _limit_ "
     u"that are tried (--max-reference-tries).",
     "The parts of a key are separated by blanks and may have blanks in them, so a text of many "
     "words can be cut into them in very many ways. Keys are seldom that long: correct the value "
     "in the source. If it is right, raise the limit, or refer to the record by a field with a "
     "unique value."},
    {message_id::kRequiredFieldEmpty,
     u"The field \"_field_\" of a record of type \"_datatype_\" is empty, but needs a value.",
     "The schema says that the field is required. Give it a value in the source."},
    {message_id::kValueNotUnique,
     u"The field \"_field_\" of a record of type \"_datatype_\" cannot be \"_value_\": the record "
     u"\"_id_\" has this value already.",
     "The schema says that no two records have the same value here. Either the record was imported "
     "before, then import it as an update; or the source has the value twice."},
    {message_id::kKeyNotUnique,
     u"There is a record of type \"_datatype_\" with the key \"_value_\" already (dbid _id_).",
     "The fields of the unique key together tell the records of a type apart. Either the record "
     "was imported before, then import it as an update; or the source has the key twice."},
    {message_id::kReferencedRecordGone,
     u"The field \"_field_\" of a record of type \"_datatype_\" refers to the record of type "
     u"\"_refentitydef_\" with the dbid _value_, which is gone.",
     "The record was there when the reference was set and has been removed since. Import the "
     "record again."},
    {message_id::kRecordChanged,
     u"The record \"_value_\" of type \"_datatype_\" was changed by somebody else: it has version "
     u"_found_, and this change was made to version _based_.",
     "Two programs changed the record at the same time. The later change was refused, so that it "
     "does not overwrite the other silently. Import the record again."},
    {message_id::kRecordGone, u"The record of type \"_datatype_\" with the dbid _value_ is gone.",
     "The record was opened, and before it was written it was removed, or its creation was undone "
     "with a failed transaction. Import it again."},
    {message_id::kDbIdTaken,
     u"The dbid _value_, under which a new record of type \"_datatype_\" was to be written, was "
     u"given to another record meanwhile.",
     "Another program created a record at the same time. Import the record again."},
    {message_id::kConstraintBroken,
     u"The database refused a record of type \"_datatype_\": _coreinfo_",
     "The record breaks a rule that the database's tables have and that its schema does not tell, "
     "so the tables have been changed by hand. The text ends with the database engine's reason."},
    {message_id::kDbIdsUsedUp,
     u"No record of type \"_datatype_\" can be added: the dbid _value_, which a record has, is the "
     u"highest that there is.",
     "A new record gets a number above those of all others. Another program has written a record "
     "with the last number; remove that record, or make a new database and load it again."},
    {message_id::kFieldNotSearchable,
     u"The field \"_field_\" of the record type \"_datatype_\" cannot be searched or selected.",
     "Queries work on fields with a single value, not on reference lists, attachments or history. "
     "Where a record is found by its original id, that must be a field with a single value."},
    {message_id::kNoColumn,
     u"A query on the record type \"_datatype_\" has no value in column _value_.",
     "A column was asked for that the query does not have, or before a row was fetched. This is a "
     "fault of the program that makes the call."},
    {message_id::kHistoryTextTooLong,
     u"_field_ of history entry _linenum_ is longer than _limit_ characters",
     "A history entry has limited room for each of its texts, and nothing is cut silently. "
     "ztimport takes nothing of the record then. A program that calls the importer itself finds "
     "the record's other entries imported. Shorten the text in the source and import the record "
     "again."},
    {message_id::kHistoryNotText,
     u"History entry _linenum_ cannot be imported: its _field_ is not valid UTF-16 at index "
     u"_position_.",
     "The text holds half of a surrogate pair, so it was damaged on its way. ztimport takes "
     "nothing of the record then. A program that calls the importer itself finds the record's "
     "other entries imported."},
    {message_id::kHistoryNotTime,
     u"History entry _linenum_ cannot be imported: its _field_ \"_value_\" is not a date and time.",
     "Times of history entries are handed over as \"YYYY-MM-DD HH:MM:SS\", UTC. This is a fault of "
     "the program that makes the call."},
    {message_id::kHistoryOtherType,
     u"History entry _linenum_ cannot be imported: the record type \"_datatype_\" does not have "
     u"the number _value_.",
     "The name and the number of the record type contradict each other, or there is no such type. "
     "This is a fault of the program that makes the call."},
    {message_id::kHistoryNoField,
     u"History entry _linenum_ cannot be imported: the record type \"_datatype_\" has no history "
     u"field.",
     "Only record types for which the schema has a field of type history keep history. Add one to "
     "the schema and make the database again, or leave the history out."},
    {message_id::kHistoryNoRecord,
     u"History entry _linenum_ cannot be imported: there is no record of type \"_datatype_\" with "
     u"the dbid _value_.",
     "History can be imported only for records that are in the database."},
    {message_id::kAttachmentNoFolder,
     u"The file \"_value_\" cannot be attached, because no folder for attachments was given.",
     "Files of attachments are read below one folder only, so that a packet cannot reach anything "
     "else. Say which folder that is."},
    {message_id::kAttachmentBadName,
     u"The file \"_value_\" cannot be attached, because this is not the name of a file.",
     "An attachment needs the name of its file, in one line. Correct it in the source."},
    {message_id::kAttachmentOutside,
     u"The file \"_value_\" cannot be attached, because it lies outside of the folder for "
     u"attachments.",
     "The name is absolute, or it leaves the folder through \"..\" or a symbolic link. Names of "
     "attachments are relative to the folder and stay below it. Copy the file into the folder and "
     "correct the name in the source."},
    {message_id::kAttachmentNotAFile,
     u"The name \"_value_\" cannot be attached, because it is not that of a file.",
     "The name is that of a folder or a device. Correct it in the source."},
    {message_id::kAttachmentUnreadable,
     u"The file \"_value_\" cannot be attached, because it cannot be read: _coreinfo_.",
     "There is no such file below the folder for attachments, or it may not be read; the text ends "
     "with the system's reason. Provide the file and import the record's attachments again."},
    {message_id::kAttachmentChanged,
     u"The file \"_value_\" cannot be attached, because it changed while it was read.",
     "Another program writes to the file. Wait for it to end and import the record's attachments "
     "again."},
    {message_id::kAttachmentUnknown,
     u"The field \"_field_\" of a record of type \"_datatype_\" has no attachment \"_value_\".",
     "An attachment was to be removed that the record does not have. It is told by the text with "
     "which the field gives it."},
    {message_id::kFieldNotAttachments,
     u"The field \"_field_\" of a record of type \"_datatype_\" does not hold attachments: "
     u"\"_value_\" can be neither attached to it nor removed.",
     "Only fields of type attachments hold files. Correct the name of the field in the source."},
    {message_id::kAttachmentTooLarge,
     u"The file \"_value_\" cannot be attached to the field \"_field_\": it has _length_ bytes, "
     u"and attachments may have _limit_ (--max-attachment-size).",
     "A limit keeps a file that nobody meant to attach from filling the database. If it is meant, "
     "raise the limit and import the record's attachments again."},
    {message_id::kDuplicateOtherType,
     u"The record \"_value_\" of type \"_datatype_\" cannot be marked as a duplicate of a record "
     u"of type \"_refentitydef_\".",
     "A record and its duplicates are of one type. Correct the reference to the original in the "
     "source."},
    {message_id::kDuplicateNotSaved,
     u"A record of type \"_datatype_\" cannot be marked as a duplicate of one that has not been "
     u"written.",
     "The original must be in the database first. This is a fault of the program that makes the "
     "call."},
    {message_id::kDuplicateOfItself,
     u"The record \"_value_\" of type \"_datatype_\" cannot be marked as a duplicate of itself.",
     "The source names a record as its own original. Remove the reference there."},
    {message_id::kDuplicateCircle,
     u"The record \"_value_\" of type \"_datatype_\" cannot be marked as a duplicate of \"_id_\", "
     u"which is a duplicate of it in turn.",
     "Originals would go round in a circle, directly or through other records. Decide in the "
     "source which of them is the original."},
});

#endif
