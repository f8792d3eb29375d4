#ifndef TOOL_SOURCES_OPEN_SOURCE_H
#define TOOL_SOURCES_OPEN_SOURCE_H

#include <memory>

#include "tool/io/source_file.h"
#include "tool/packet/packet_frame.h"
#include "tool/packet/record_cutter.h"
#include "tool/packet/record_limits.h"
#include "tool/sources/kind/record_source.h"

namespace tool {

// How a source is to be read.
struct SourceReading {
    RecordLimits limits;
    UnseenHandler unseen;  // told of what looks like a record and is not read; may be empty
    FrameHandler frame;    // told of what is wrong around the records; may be empty
};

// Opens the content of `file` as the kind of source that it is. Throws SourceError when it is of
// none that is known.
std::unique_ptr<RecordSource> OpenRecordSource(const SourceFile& file, SourceReading reading);

}  // namespace tool

#endif
