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

}  // namespace message_id

#endif
