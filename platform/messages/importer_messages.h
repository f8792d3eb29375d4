#ifndef PLATFORM_MESSAGES_IMPORTER_MESSAGES_H
#define PLATFORM_MESSAGES_IMPORTER_MESSAGES_H

#include <array>

#include "platform/messages/catalogue.h"
#include "platform/messages/message_ids.h"

// The importer's part of the catalogue, by ascending id.
inline constexpr auto kImporterMessages = std::to_array<CatalogueMessage>({
    {message_id::kInvalidActionTimestamp,
     u"The action time \"_value_\" in line _linenum_ of the history of the record whose \"_id_\" "
     u"is \"_idvalue_\" is not a valid date and time.",
     "The second column of a history line, the time of the action, is missing, is no date and time "
     "such as \"2011-02-03 04:05:06\", or names a date that does not exist. ztimport takes nothing "
     "of the record then. A program that calls the importer itself finds the other lines of a "
     "packet of history imported. Correct the time in the source and import the record again."},
    {message_id::kInvalidExpiredTimestamp,
     u"The expiry time \"_value_\" in line _linenum_ of the history of the record whose \"_id_\" "
     u"is \"_idvalue_\" is not a valid date and time.",
     "A history line gives an expiry time that is no date and time such as \"2011-02-03 04:05:06\" "
     "or names a date that does not exist. ztimport takes nothing of the record then. A program "
     "that calls the importer itself finds the other lines of a packet of history imported. "
     "Correct the time in the source, or leave it empty: the database then works it out from the "
     "next entry of the same record."},
    {message_id::kMarkDuplicateFailed,
     u"The record whose \"_entityid_\" is \"_entityidvalue_\" could not be marked as a duplicate "
     u"of the record whose \"_parentid_\" is \"_parentidvalue_\".",
     "The record that it duplicates was found, but the database refused to link the two. Record "
     "types without states have no duplicate action; otherwise the trace names the database's "
     "reason. ztimport takes nothing of the record then. A program that calls the importer itself "
     "finds it imported, without the mark. Mend the cause and import the record again."},
    {message_id::kReferenceNotFound,
     u"The field \"_fieldname_\" of a record of type \"_entitydef_\" refers to a record of type "
     u"\"_refentitydef_\" that does not exist.",
     "A reference field's value names no record. ztimport lets the record wait for one that the "
     "same load may still bring, except with --whole-packets; a program that calls the importer "
     "itself imports the records that are referred to first. Correct the value in the source, or "
     "bring the record that is missing. Until then it is not imported."},
    {message_id::kAttachmentFailed,
     u"The attachment with the identifier \"_attachmentid_\" could not be added.",
     "The database refused the file, most often because it does not exist below the folder for "
     "attachments or cannot be read; the trace names the reason. The other attachments of the "
     "record are still tried, but the record is left as it was. Provide the file and import the "
     "record or its attachments again."},
    {message_id::kNoConfiguration,
     u"Record data arrived before any configuration packet, so nothing was imported.",
     "Record data means nothing until a configuration packet has said which record type it belongs "
     "to. Hand the configuration packet to the importer first."},
    {message_id::kReferenceAmbiguous,
     u"The field \"_fieldname_\" of a record of type \"_entitydef_\" refers to more than one "
     u"record of type \"_refentitydef_\".",
     "Several records hold the value by which the reference is looked up, and the importer never "
     "chooses between them. Make the value unique in the database, or map the reference to a field "
     "that is. The record was not imported."},
    {message_id::kValidationFailed, u"The record is not valid and was not written: _coreinfo_",
     "The record breaks a rule of its type; the text ends with the database's own message, which "
     "names the field and the rule. Correct the value in the source, or the rule in the schema, "
     "and import the record again. Where a record breaks the rule only when it is marked as a "
     "duplicate, ztimport takes nothing of it; a program that calls the importer itself finds it "
     "imported, without the mark."},
    {message_id::kCommitFailed, u"The record could not be written: _coreinfo_",
     "The database refused the record when its changes were to be made permanent; the text ends "
     "with its own message. If another program changed the record at the same time, import it "
     "again. Where a record is refused only when it is marked as a duplicate, ztimport takes "
     "nothing of it; a program that calls the importer itself finds it imported, without the "
     "mark."},
    {message_id::kRecordNotFound,
     u"No record of type \"_datatype_\" has \"_value_\" in its field \"_field_\".",
     "The packet concerns a record that should be in the database already: one to be updated, one "
     "to receive history or attachments, or the original of a duplicate (ztimport then takes "
     "nothing of the duplicate; a program that calls the importer itself finds it imported, "
     "without the mark). Import that record first, or correct its identity in the source."},
    {message_id::kHistoryEntryInvalid,
     u"The history entry with the identifier \"_historyid_\" was left out: _coreinfo_",
     "One line of a record's history could not be imported; the text ends with the reason, whose "
     "own explanation says more. ztimport takes nothing of the record then, other lines included."},
    {message_id::kUnknownRecordType, u"The database has no record type \"_datatype_\".",
     "A configuration packet names a record type that the database's schema does not have. The "
     "packet was ignored and the earlier configuration stays in force. Correct the name, or add "
     "the record type to the schema."},
    {message_id::kRecordAmbiguous,
     u"More than one record of type \"_datatype_\" has \"_value_\" in its field \"_field_\".",
     "The field that holds the records' identity in the source must tell them apart, but several "
     "records hold the same value; none of them was changed. Find the records with this value and "
     "remove or correct all but one."},
    {message_id::kHistoryFieldEmpty,
     u"The column \"_field_name_\" is empty in line _linenum_ of the history of the record whose "
     u"\"_id_\" is \"_idvalue_\".",
     "The columns for the user, the action, the old and the new state need a value. ztimport takes "
     "nothing of the record then. A program that calls the importer itself finds the other lines "
     "of a packet of history imported. Fill in the column in the source and import the record "
     "again."},
});

#endif
