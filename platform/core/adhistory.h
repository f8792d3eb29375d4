#ifndef PLATFORM_CORE_ADHISTORY_H
#define PLATFORM_CORE_ADHISTORY_H

#include "platform/foundation/obx_string.h"

// One history entry, as handed to ImportHistoryData. Texts are zero-terminated; a text field
// without a terminator means that its text was too long, and the entry is refused.
struct AdHistory {
    // The core's own; callers leave it 0.
    long reserved;
    // The database identifier of the record that the entry belongs to.
    long recordId;
    // The name of the field that holds the record's identity in the source.
    char16_t sourceIdField[102];
    long recordTypeId;
    char16_t recordTypeName[31];
    // "YYYY-MM-DD HH:MM:SS", UTC. An empty expiry time means that the core works it out.
    char16_t actionTime[20];
    char16_t expiryTime[20];
    char16_t userName[31];
    char16_t actionName[31];
    char16_t oldState[31];
    char16_t newState[31];
    char16_t comments[51];
};

// Told of the progress of a history import: entries done, entries in all, and the caller's context.
using AdHistoryCallback = void (*)(long done, long total, void* context);

#endif
