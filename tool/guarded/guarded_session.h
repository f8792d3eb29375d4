#ifndef TOOL_GUARDED_GUARDED_SESSION_H
#define TOOL_GUARDED_GUARDED_SESSION_H

#include "platform/core/adsession.h"

namespace tool {

// A session for the import of guarded packets: everything that is handed to it as a value is
// restored before `session` gets it, and what it hands back is guarded, so that the importer can
// compare the two and hand it in again. The same holds for the records, queries and results that it
// opens, and for the texts of messages. Otherwise it is `session`, which it keeps alive.
AdSessionPtr OpenGuarded(AdSessionPtr session);

}  // namespace tool

#endif
