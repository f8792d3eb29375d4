#include "reading.h"

#include <gtest/gtest.h>
#include <unicode/unistr.h>

#include <memory>

namespace reading {

namespace {

// Owns its text, unlike TextBytes, so that a reader can be returned.
class OwnedText : public tool::ByteSource {
  public:
    explicit OwnedText(std::string_view text) : m_text(text), m_bytes(m_text) {}
    std::size_t Read(char* buffer, std::size_t size) override { return m_bytes.Read(buffer, size); }
    const std::string& Name() const override { return m_bytes.Name(); }

  private:
    std::string m_text;
    tool::TextBytes m_bytes;
};

}  // namespace

std::vector<std::size_t> ChunkSizes() {
    return {tool::TextDecoder::kDefaultChunk, 1, 2, 3, 7, 64};
}

tool::PacketReader ReaderOf(std::string_view text, tool::ReaderOptions options) {
    return tool::PacketReader(std::make_unique<OwnedText>(text), std::move(options));
}

std::vector<Read> ReadRecords(std::string_view text, tool::ReaderOptions options,
                              std::vector<tool::UnseenRecord>* unseen) {
    if (unseen != nullptr) {
        options.unseen = [unseen](const tool::UnseenRecord& seen) { unseen->push_back(seen); };
    }
    tool::PacketReader reader = ReaderOf(text, std::move(options));
    std::vector<Read> records;
    tool::SourceRecord record;
    while (reader.NextRecord(record)) {
        records.push_back({record.packet, std::string(record.raw), record.ordinal, record.line,
                           record.offset, record.defect, record.error, record.openSection});
    }
    return records;
}

std::vector<Read> ReadAtEveryChunkSize(std::string_view text, tool::ReaderOptions options) {
    std::vector<Read> first;
    for (std::size_t chunk : ChunkSizes()) {
        options.chunk = chunk;
        std::vector<Read> records = ReadRecords(text, options);
        if (chunk == ChunkSizes().front()) {
            first = records;
        }
        EXPECT_TRUE(records == first) << "chunks of " << chunk << " read otherwise: " << text;
    }
    return first;
}

std::vector<std::string> Raws(std::string_view text) {
    std::vector<std::string> raws;
    for (const Read& record : ReadAtEveryChunkSize(text)) {
        raws.push_back(record.raw);
    }
    return raws;
}

std::vector<std::string> Unseen(std::string_view text) {
    std::vector<std::string> first;
    for (std::size_t chunk : ChunkSizes()) {
        tool::ReaderOptions options;
        options.chunk = chunk;
        std::vector<tool::UnseenRecord> unseen;
        ReadRecords(text, options, &unseen);
        std::vector<std::string> lines;
        for (const tool::UnseenRecord& seen : unseen) {
            lines.push_back(std::to_string(seen.line) + ": " + seen.text);
        }
        if (chunk == ChunkSizes().front()) {
            first = lines;
        }
        EXPECT_EQ(lines, first) << "chunks of " << chunk;
    }
    return first;
}

std::string ToUtf16(std::string_view text, bool bigEndian) {
    icu::UnicodeString units = icu::UnicodeString::fromUTF8(
        icu::StringPiece(text.data(), static_cast<std::int32_t>(text.size())));
    std::string bytes;
    for (std::int32_t i = 0; i < units.length(); ++i) {
        auto high = static_cast<char>(units[i] >> 8);
        auto low = static_cast<char>(units[i] & 0xFF);
        bytes += bigEndian ? high : low;
        bytes += bigEndian ? low : high;
    }
    return bytes;
}

std::string PacketOf(std::string_view record) {
    return R"(<?xml version="1.0" encoding="UTF-8"?>)" + std::string(record);
}

}  // namespace reading
