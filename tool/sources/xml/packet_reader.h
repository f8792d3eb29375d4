#ifndef TOOL_SOURCES_XML_PACKET_READER_H
#define TOOL_SOURCES_XML_PACKET_READER_H

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
#include "tool/sources/kind/record_source.h"

namespace tool {

struct ReaderOptions {
    std::size_t chunk = TextDecoder::kDefaultChunk;  // bytes read at a time
    std::size_t recordLimit = RecordLimits().size;
    std::size_t configurationLimit = std::size_t{16} * 1024 * 1024;
    std::size_t wholeLimit = std::size_t{1024} * 1024 * 1024;  // for record data handed out whole
    std::size_t maxDepth = RecordLimits().depth;
    UnseenHandler unseen;  // told of what looks like a record and is not read; may be empty
    FrameHandler frame;    // told of what is wrong around the records; may be empty
};

// Reads a packet file: a configuration packet as a whole, record data record by record in constant
// memory.
class PacketReader final : public RecordSource {
  public:
    // Opens the file at `path`, called `name` in errors. Throws SourceError.
    PacketReader(const std::filesystem::path& path, std::string name, ReaderOptions options = {});
    // Reads `bytes`.
    explicit PacketReader(std::unique_ptr<ByteSource> bytes, ReaderOptions options = {});

    // Whether the importer takes the source, as one packet, as configuration. Reads only as far as
    // that takes. Throws SourceError.
    bool IsConfiguration() const override { return m_isConfiguration; }

    bool IsGuarded() const override { return m_isGuarded; }

    // False for a text, an archive, an empty file: the source does not begin with markup, white
    // space aside, and no record begins in its first 64 KiB.
    bool IsPacket() const { return m_isPacket; }

    // Throws SourceError when it holds what is not text, or is too large.
    std::string ReadConfiguration() override;

    // Throws SourceError when it is too large.
    WholePacket ReadWhole() override;

    bool NextRecord(SourceRecord& record) override;

    std::optional<std::string> ValueIn(std::string_view raw, std::string_view name) const override;

    std::uint64_t BytesRead() const override { return m_decoder.BytesRead(); }

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
    bool m_isGuarded = false;
    std::uint64_t m_nextOrdinal = 0;
    CutRecord m_cut;
    std::string m_mended;  // holds the raw text of a record that needed marks replaced
};

}  // namespace tool

#endif
