#ifndef PLATFORM_MESSAGES_MESSAGE_IDS_H
#define PLATFORM_MESSAGES_MESSAGE_IDS_H

// Ids of the catalogue's messages. Those of the importer are fixed by its contract; the core's own
// begin at 20001.
namespace message_id {

inline constexpr int kInvalidActionTimestamp = 15861;
inline constexpr int kInvalidExpiredTimestamp = 15862;
inline constexpr int kMarkDuplicateFailed = 15864;
inline constexpr int kReferenceNotFound = 15865;
inline constexpr int kAttachmentFailed = 15866;
inline constexpr int kNoConfiguration = 15867;
inline constexpr int kReferenceAmbiguous = 15868;
inline constexpr int kValidationFailed = 15869;
inline constexpr int kCommitFailed = 15870;
inline constexpr int kRecordNotFound = 15871;
inline constexpr int kHistoryEntryInvalid = 15872;
inline constexpr int kUnknownRecordType = 15873;
inline constexpr int kRecordAmbiguous = 15874;
inline constexpr int kHistoryFieldEmpty = 15875;

// An argument that an operation cannot take; parameters "_text_", "_file_", "_line_".
inline constexpr int kBadValue = 20001;
// A packet that is not valid UTF-16; parameter "_position_" (the unit's index, from 0).
inline constexpr int kInvalidUtf16 = 20002;

// Of the record database. "_datatype_" is a record type, "_field_" a field, "_value_" what was
// given for it, in UTF-16 and cut when it is long.
inline constexpr int kDatabaseFailed = 20010;
inline constexpr int kNoRecordType = 20011;
inline constexpr int kNoField = 20012;
inline constexpr int kNoRecord = 20013;
inline constexpr int kNoState = 20014;
inline constexpr int kNoAction = 20015;

// Of one value, refused when it is given.
inline constexpr int kValueNotText = 20020;
inline constexpr int kValueTooLong = 20021;
inline constexpr int kValueNotInteger = 20022;
inline constexpr int kValueNotDateTime = 20023;
inline constexpr int kValueNotChoice = 20024;
inline constexpr int kFieldOfDatabase = 20025;
inline constexpr int kFieldNotPlain = 20026;
inline constexpr int kFieldNotList = 20027;
inline constexpr int kReferenceUnknown = 20028;
inline constexpr int kReferenceUnclear = 20029;
inline constexpr int kNotInList = 20030;
inline constexpr int kReferenceUndecided = 20031;

// Of a whole record, refused by Validate and Commit.
inline constexpr int kRequiredFieldEmpty = 20040;
inline constexpr int kValueNotUnique = 20041;
inline constexpr int kKeyNotUnique = 20042;
inline constexpr int kReferencedRecordGone = 20043;
inline constexpr int kRecordChanged = 20044;
inline constexpr int kRecordGone = 20045;
inline constexpr int kDbIdTaken = 20046;
inline constexpr int kConstraintBroken = 20047;
inline constexpr int kDbIdsUsedUp = 20048;

// Of queries.
inline constexpr int kFieldNotSearchable = 20050;
inline constexpr int kNoColumn = 20051;

// Of history entries, refused by ImportHistoryData.
inline constexpr int kHistoryTextTooLong = 20060;
inline constexpr int kHistoryNotText = 20061;
inline constexpr int kHistoryNotTime = 20062;
inline constexpr int kHistoryOtherType = 20063;
inline constexpr int kHistoryNoField = 20064;
inline constexpr int kHistoryNoRecord = 20065;

// Of attachments; "_value_" is the file name as it was given.
inline constexpr int kAttachmentNoFolder = 20070;
inline constexpr int kAttachmentBadName = 20071;
inline constexpr int kAttachmentOutside = 20072;
inline constexpr int kAttachmentNotAFile = 20073;
inline constexpr int kAttachmentUnreadable = 20074;
inline constexpr int kAttachmentChanged = 20075;
inline constexpr int kAttachmentUnknown = 20076;
inline constexpr int kFieldNotAttachments = 20077;
inline constexpr int kAttachmentTooLarge = 20078;

// Of duplicates; "_value_" is the duplicate and "_id_" its original, by display id.
inline constexpr int kDuplicateOtherType = 20080;
inline constexpr int kDuplicateNotSaved = 20081;
inline constexpr int kDuplicateOfItself = 20082;
inline constexpr int kDuplicateCircle = 20083;

}  // namespace message_id

#endif
