#ifndef TOOL_SOURCES_KIND_RECORD_SOURCE_H
#define TOOL_SOURCES_KIND_RECORD_SOURCE_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "tool/sources/kind/source_record.h"

namespace tool {

// A source of one kind that is open for reading: either a configuration, or records, which are read
// one by one in constant memory. Whatever its format is, what it hands out for the importer are
// packets. Every text that it hands out is valid UTF-8 without NUL.
class RecordSource {
  public:
    RecordSource() = default;
    RecordSource(const RecordSource&) = delete;
    RecordSource& operator=(const RecordSource&) = delete;
    virtual ~RecordSource() = default;

    virtual bool IsConfiguration() const = 0;

    // Whether the values in its records and packets are guarded (tool/guarded/guarded_text.h).
    virtual bool IsGuarded() const { return false; }

    // The configuration as a packet. To be called once, for a source that is one. Throws
    // SourceError, since a configuration is good as a whole or not at all.
    virtual std::string ReadConfiguration() = 0;

    // Reads the next record, and reports what stands before it or, at the end, after the last one.
    // Returns false when there is none. Throws SourceError when the source cannot be read on.
    virtual bool NextRecord(SourceRecord& record) = 0;

    // All records as one packet. To be called once, before any NextRecord. Throws SourceError.
    virtual WholePacket ReadWhole() = 0;

    // The value of the field called `name` in `raw`, a record as a source of this kind has it: the
    // value as it is written there, as far as it can be made out, also where the record has a
    // defect. Nothing when there is no such field, or `name` is empty.
    virtual std::optional<std::string> ValueIn(std::string_view raw,
                                               std::string_view name) const = 0;

    // Bytes read from the source so far, for the progress.
    virtual std::uint64_t BytesRead() const = 0;
};

}  // namespace tool

#endif
