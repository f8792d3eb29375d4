#include <unicode/utf8.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "importer_view.h"
#include "input.h"
#include "tool/io/source_error.h"
#include "tool/packet/packet_head.h"
#include "tool/sources/xml/packet_reader.h"

namespace {

using fuzz::Expect;

struct Read {
    std::string packet;
    std::string raw;
    std::string error;
    std::uint64_t line;
    std::uint64_t offset;
    tool::RecordDefect defect;
    bool openSection;

    bool operator==(const Read&) const = default;
};

struct Reading {
    std::vector<Read> records;
    std::vector<std::string> unseen;
    bool isConfiguration = false;
    bool isPacket = false;
    std::string refusal;

    bool operator==(const Reading&) const = default;
};

Reading ReadAll(std::string_view text, tool::ReaderOptions options) {
    Reading reading;
    options.unseen = [&](const tool::UnseenRecord& seen) {
        reading.unseen.push_back(std::to_string(seen.line) + ": " + seen.text);
    };
    try {
        tool::PacketReader reader(std::make_unique<tool::TextBytes>(text), options);
        reading.isConfiguration = reader.IsConfiguration();
        reading.isPacket = reader.IsPacket();
        tool::SourceRecord record;
        while (reader.NextRecord(record)) {
            reading.records.push_back({record.packet, std::string(record.raw), record.error,
                                       record.line, record.offset, record.defect,
                                       record.openSection});
        }
    } catch (const tool::SourceError& error) {
        reading.refusal = error.what();
    }
    return reading;
}

bool IsTextWithoutNul(std::string_view text) {
    const auto* units = reinterpret_cast<const std::uint8_t*>(text.data());
    const auto size = static_cast<std::int32_t>(text.size());
    for (std::int32_t at = 0; at < size;) {
        UChar32 character = 0;
        U8_NEXT(units, at, size, character);
        if (character <= 0) {
            return false;
        }
    }
    return true;
}

void ExamineRecord(const Read& record) {
    Expect(IsTextWithoutNul(record.raw) && IsTextWithoutNul(record.error), "texts are text");
    Expect(record.packet.empty() == (record.defect != tool::RecordDefect::None),
           "a record without a defect has a packet");
    Expect(record.error.empty() != record.packet.empty(), "a defect is explained");
    if (!record.packet.empty()) {
        Expect(IsTextWithoutNul(record.packet), "a packet is text");
        Expect(importer_view::CountRecords(record.packet) == 1, "a packet holds one record");
        Expect(!importer_view::TakesAsConfiguration(record.packet).value_or(false),
               "a record is no configuration");
    }
}

}  // namespace

// Whatever the chunks are, the records are the same; the importer sees one record in each; and both
// agree on what is configuration.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    tool::ReaderOptions options;
    options.recordLimit = std::size_t{16} + std::size_t{16} * input.TakeChoice();
    const std::size_t chunk = std::size_t{1} + input.TakeChoice();
    const Reading reading = ReadAll(input.Text(), options);
    options.chunk = chunk;
    Expect(ReadAll(input.Text(), options) == reading, "records do not depend on chunks");
    std::uint64_t end = 0;
    for (const Read& record : reading.records) {
        Expect(record.offset >= end, "records come one after the other");
        end = record.offset + 1;
        ExamineRecord(record);
    }
    if (reading.refusal.empty() && IsTextWithoutNul(input.Text())) {
        const auto isConfiguration =
            importer_view::TakesAsConfiguration(tool::WithPacketDeclaration(input.Text()));
        Expect(!isConfiguration || *isConfiguration == reading.isConfiguration,
               "the importer and the reader agree on what is configuration");
    }
    return 0;
}
