#ifndef TOOL_SOURCES_SOURCE_WALK_H
#define TOOL_SOURCES_SOURCE_WALK_H

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "recorddb/journal.h"
#include "recorddb/schema.h"
#include "tool/io/source_file.h"
#include "tool/packet/import_configuration.h"
#include "tool/sources/open_source.h"
#include "tool/sources/source_list.h"

namespace tool {

// What a walk comes to next.
enum class WalkStep {
    Configuration,  // a source that is one; it is in force from here on
    Data,           // a source of records begins
    Record,         // the next of its records
    DataEnd,        // it holds no more
    End,            // all sources have been walked through
    Stopped,        // the process was interrupted before
};

struct WalkOptions {
    RecordLimits limits;
    std::filesystem::path attachments;  // the folder of attachments; empty for none
    // As in SourceReading, with the name of the source besides; neither is empty.
    std::function<void(const UnseenRecord&, const std::string& source)> unseen;
    std::function<void(const FrameDefect&, const std::string& source)> frame;
};

// The walk through sources that all commands take: source by source and record by record, with the
// configuration in force. Memory does not grow with the sources.
class SourceWalk {
  public:
    // `sources` outlive the object.
    SourceWalk(const SourceList& sources, WalkOptions options);

    // Goes on. Throws SourceError when a source or its configuration cannot be used or read on, or
    // changes while it is read. Not to be called after End or Stopped.
    WalkStep Next();

    // Leaves out the records of the current source that have not been read: the next step is that
    // of the next source.
    void LeaveSource();

    // Whether the current source was made of other files, through a map. A source is the current
    // one from its first step to that of the next source.
    bool IsMade() const { return Listed().made != nullptr; }
    const std::string& SourceName() const { return Listed().name; }
    // Throws SourceChanged when the file is no longer what it was when it was opened.
    void RequireUnchanged() const;

    // The configuration in force, made of all that came so far.
    const ImportConfiguration& Configuration() const { return m_configuration; }
    // The latest configuration packet; valid until the next step.
    const std::string& ConfigurationPacket() const { return m_packet; }

    // Throws SourceError when the records of the current source cannot be used as they are: no
    // configuration comes before them, or they need a folder of attachments. To be called before
    // them.
    void RequireUsableData() const;

    // Whether the values in the records of the current source are guarded.
    bool IsGuarded() const { return m_source->IsGuarded(); }

    // The key of the current source in the journal: its content, and the configuration in force,
    // which is one of `type`.
    recorddb::journal::JournalKey Key(const recorddb::schema::RecordType& type) const;

    // The current record, until the next step.
    const SourceRecord& Record() const { return m_record; }
    // The original id in `raw`, a record of the current source as it stands there, restored where
    // that is guarded; empty when it has none, or it cannot be made out.
    std::string IdIn(std::string_view raw) const;

    // All records of the current source as one packet, read anew. Throws SourceError.
    WholePacket ReadWhole() const;

    // The bytes of the sources read so far; one that was left counts as read.
    std::uint64_t BytesRead() const;

  private:
    WalkStep NextSource();
    WalkStep NextRecord();
    SourceReading Reading() const;
    const Source& Listed() const { return m_sources.Sources()[m_next - 1]; }

    const SourceList& m_sources;
    WalkOptions m_options;
    std::size_t m_next = 0;            // source
    std::optional<SourceFile> m_file;  // nothing for a source without one
    std::unique_ptr<RecordSource> m_source;
    bool m_inData = false;
    std::uint64_t m_bytesBefore = 0;  // sizes of the sources dealt with
    std::string m_packet;
    ImportConfiguration m_configuration;
    SourceRecord m_record;
};

}  // namespace tool

#endif
