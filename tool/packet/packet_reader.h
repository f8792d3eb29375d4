#ifndef TOOL_PACKET_PACKET_READER_H
#define TOOL_PACKET_PACKET_READER_H

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "tool/io/byte_source.h"
#include "tool/io/text_decoder.h"
#include "tool/io/text_window.h"
#include "tool/packet/packet_frame.h"
#include "tool/packet/record_cutter.h"
#include "tool/packet/record_limits.h"

namespace tool {

struct ReaderOptions {
    std::size_t chunk = TextDecoder::defaultChunk;  // bytes read at a time
    std::size_t recordLimit = RecordLimits().size;
    std::size_t configurationLimit = std::size_t{16} * 1024 * 1024;
    std::size_t wholeLimit = std::size_t{1024} * 1024 * 1024;  // for record data handed out whole
    std::size_t maxDepth = RecordLimits().depth;
    UnseenHandler unseen;  // told of what looks like a record and is not read; may be empty
    FrameHandler frame;    // told of what is wrong around the records; may be empty
};

// One record, ready for the importer.
struct SourceRecord {
    // The record as a packet of its own; empty when it has a defect.
    std::string packet;
    // The record as it stands in the source, as UTF-8, with U+FFFD for what is no text; empty when
    // it is TooLong. Valid until the next record is read.
    std::string_view raw;
    std::uint64_t ordinal = 0;  // its number in the source, from 0
    std::uint64_t line = 0;     // line of its first byte, from 1
    std::uint64_t offset = 0;   // place of its first byte in the source
    RecordDefect defect = RecordDefect::None;
    std::string error;         // what the defect is and where, for people; empty without one
    bool openSection = false;  // a comment, CDATA section or instruction in it does not close
};

// A packet handed out whole.
struct WholePacket {
    std::string text;   // UTF-8 without byte order mark, beginning with the usual declaration
    std::string error;  // set when the source holds what is no text; text then has U+FFFD there
};

// Reads one source: a configuration packet as a whole, record data record by record in constant
// memory. Every text that it hands out is valid UTF-8 without NUL.
class PacketReader {
  public:
    // Opens the file at PATH, called NAME in errors. Throws SourceError.
    PacketReader(const std::filesystem::path& path, std::string name, ReaderOptions options = {});
    // Reads BYTES.
    explicit PacketReader(std::unique_ptr<ByteSource> bytes, ReaderOptions options = {});

    // Whether the importer takes the source, as one packet, as configuration. Reads only as far as
    // that takes. Throws SourceError.
    bool IsConfiguration() const { return m_isConfiguration; }

    // False for a text, an archive, an empty file: the source does not begin with markup, white
    // space aside, and no record begins in its first 64 KiB.
    bool IsPacket() const { return m_isPacket; }

    // The configuration packet. To be called once, for a source that is one. Throws SourceError
    // (Undecodable, TooLarge) since a configuration is good as a whole or not at all.
    std::string ReadConfiguration();

    // The whole source as one packet. To be called once, before any NextRecord. Throws SourceError
    // (TooLarge).
    WholePacket ReadWhole();

    // Reads the next record, telling of what stands before it, and at the end of the source.
    // Returns false when there is none. Throws SourceError when the source cannot be read on.
    bool NextRecord(SourceRecord& record);

    // Bytes read from the source so far, for the progress.
    std::uint64_t BytesRead() const { return m_decoder.BytesRead(); }

  private:
    void Classify();
    bool BeginsWithMarkup() const;
    bool HoldsRecordNearby();
    WholePacket ReadAll(std::size_t limit, std::string_view limitName);
    void ReportRecordsInConfiguration(std::string_view text) const;
    void NoteDecodingError(const CutRecord& cut, SourceRecord& record);
    std::string DecodingError(std::string_view text, std::size_t mark, std::uint64_t line,
                              std::uint64_t offset) const;

    ReaderOptions m_options;
    std::unique_ptr<ByteSource> m_bytes;
    TextDecoder m_decoder;
    TextWindow m_window;
    std::optional<PacketFrame> m_frame;
    RecordCutter m_cutter;
    bool m_isConfiguration = false;
    bool m_isPacket = false;
    std::uint64_t m_nextOrdinal = 0;
    CutRecord m_cut;
    std::string m_mended;  // holds the raw text of a record that needed marks replaced
};

}  // namespace tool

#endif
