#ifndef ZTIMPORTER_ENTRYLABELS_H
#define ZTIMPORTER_ENTRYLABELS_H

#include <array>

#include "platform/foundation/obx_string.h"

// The keys of the maps that a record parser makes of history and attachments values.

// One for each column of a history line, in the line's order.
inline const std::array<Obx_String, 7> history_label = {
    u"dbid",      u"action_timestamp", u"user_name", u"action_name",
    u"old_state", u"new_state",        u"comments"};
enum HistoryColumn {
    kHistoryDbId,
    kActionTimestamp,
    kUserName,
    kActionName,
    kOldState,
    kNewState,
    kComments,
};

// One for each line of an attachment, in their order.
inline const std::array<Obx_String, 4> attachment_label = {u"dbid", u"filename", u"filesize",
                                                           u"description"};
enum AttachmentLine {
    kAttachmentDbId,
    kFileName,
    kFileSize,
    kDescription,
};

#endif
