#include "tool/sources/xml/packet_reader.h"

#include <fmt/format.h>

#include <utility>

#include "tool/io/decoding_marks.h"
#include "tool/io/source_error.h"
#include "tool/io/text_units.h"
#include "tool/packet/field_search.h"
#include "tool/packet/packet_head.h"
#include "tool/packet/record_depth.h"
#include "tool/packet/record_packet.h"

namespace tool {

namespace {

constexpr std::size_t kNpos = std::string_view::npos;

std::string ShowSize(std::size_t bytes) {
    constexpr std::size_t mebibyte = std::size_t{1024} * 1024;
    return bytes % mebibyte == 0 ? fmt::format("{} MiB", bytes / mebibyte)
                                 : fmt::format("{} bytes", bytes);
}

std::string DescribeDefect(RecordDefect defect, const ReaderOptions& options) {
    if (defect == RecordDefect::Unterminated) {
        return "the record does not end: \"</record>\" is missing before the next \"<record>\" or "
               "the end of the file";
    }
    if (defect == RecordDefect::TooDeep) {
        return fmt::format(
            "its elements are nested deeper than {}, the most that --max-depth allows",
            options.maxDepth);
    }
    return fmt::format("the record is not shorter than {}, which --max-record-size sets",
                       ShowSize(options.recordLimit));
}

std::optional<PacketFrame> FrameOf(const ReaderOptions& options) {
    return options.frame
               ? std::optional<PacketFrame>(std::in_place, options.frame, options.maxDepth)
               : std::nullopt;
}

}  // namespace

PacketReader::PacketReader(const std::filesystem::path& path, std::string name,
                           ReaderOptions options)
    : PacketReader(std::make_unique<FileBytes>(path, std::move(name)), std::move(options)) {}

PacketReader::PacketReader(std::unique_ptr<ByteSource> bytes, ReaderOptions options)
    : m_options(std::move(options)),
      m_bytes(std::move(bytes)),
      m_decoder(*m_bytes, m_options.chunk),
      m_window(m_decoder),
      m_frame(FrameOf(m_options)),
      m_cutter(m_window, m_options.recordLimit, m_options.unseen, m_frame ? &*m_frame : nullptr) {
    Classify();
}

void PacketReader::Classify() {
    HeadAnswer answer = HeadAnswer::Undecided;
    bool more = true;
    while (answer == HeadAnswer::Undecided) {
        answer = ClassifyHead(m_window.Text(), !more);
        std::size_t size = m_window.Text().size();
        if (size >= m_options.configurationLimit) {
            break;
        }
        // Each look begins at the front again, so the text doubles to keep the sum linear.
        more = more && answer == HeadAnswer::Undecided && m_window.Ensure(2 * size + 1);
    }
    m_isConfiguration = answer == HeadAnswer::Configuration;
    m_isGuarded = HasGuardedInstruction(m_window.Text());
    m_isPacket = BeginsWithMarkup() || HoldsRecordNearby();
}

bool PacketReader::BeginsWithMarkup() const {
    const std::string_view text = m_window.Text();
    const std::size_t begin = text.find_first_not_of(" \t\r\n");
    return begin != kNpos && text[begin] == '<';
}

bool PacketReader::HoldsRecordNearby() {
    constexpr std::size_t nearby = std::size_t{64} * 1024;
    m_window.Ensure(nearby);
    return m_window.Text().find("<record>") != kNpos;
}

std::string PacketReader::ReadConfiguration() {
    WholePacket packet = ReadAll(m_options.configurationLimit, "a configuration packet");
    if (!packet.error.empty()) {
        throw SourceError(
            fmt::format("{}: {}; save the configuration packet as UTF-8 and run again",
                        m_bytes->Name(), packet.error));
    }
    return std::move(packet.text);
}

WholePacket PacketReader::ReadWhole() {
    return ReadAll(m_options.wholeLimit, "a packet that is read whole");
}

WholePacket PacketReader::ReadAll(std::size_t limit, std::string_view limitName) {
    if (m_window.Ensure(limit + 1)) {
        throw SourceError(
            fmt::format("{}: the file is larger than {}, the most that {} may have; split it",
                        m_bytes->Name(), ShowSize(limit), limitName));
    }
    std::string_view text = m_window.Text();
    if (m_isConfiguration) {
        ReportRecordsInConfiguration(text);
    }
    WholePacket packet;
    std::size_t mark = m_decoder.Marked() ? FindDecodingMark(text) : kNpos;
    if (mark == kNpos) {
        packet.text = WithPacketDeclaration(text);
    } else {
        packet.error = DecodingError(text, mark, m_window.Line(), m_window.SourceOffset());
        packet.text = WithPacketDeclaration(ReplaceDecodingMarks(text));
    }
    packet.rawBegin = kPacketDeclaration.size();
    return packet;
}

void PacketReader::ReportRecordsInConfiguration(std::string_view text) const {
    if (!m_options.unseen) {
        return;
    }
    constexpr std::string_view tag = "<record>";
    for (std::size_t at = text.find(tag); at != kNpos; at = text.find(tag, at + 1)) {
        m_options.unseen({UnseenKind::InsideConfiguration, 1 + CountLineEnds(text.substr(0, at)),
                          std::string(tag)});
    }
}

bool PacketReader::NextRecord(SourceRecord& record) {
    if (!m_cutter.Next(m_cut)) {
        return false;
    }
    record.source = m_bytes->Name();
    record.ordinal = m_nextOrdinal++;
    record.line = m_cut.line;
    record.offset = m_cut.offset;
    record.defect = m_cut.defect;
    record.openSection = m_cut.openSection;
    record.raw = m_cut.text;
    record.error.clear();
    if (record.defect != RecordDefect::None) {
        record.error = DescribeDefect(record.defect, m_options);
    }
    if (m_decoder.Marked()) {
        NoteDecodingError(m_cut, record);
    }
    if (record.defect == RecordDefect::None && IsNestedDeeperThan(m_options.maxDepth, m_cut.text)) {
        record.defect = RecordDefect::TooDeep;
        record.error = DescribeDefect(record.defect, m_options);
    }
    if (record.defect == RecordDefect::None) {
        BuildRecordPacket(m_cut.text, m_cut.disguised, record.packet);
    } else {
        record.packet.clear();
    }
    return true;
}

std::optional<std::string> PacketReader::ValueIn(std::string_view raw,
                                                 std::string_view name) const {
    return FindFieldValue(raw, name);
}

void PacketReader::NoteDecodingError(const CutRecord& cut, SourceRecord& record) {
    std::size_t mark = FindDecodingMark(cut.text);
    if (mark == kNpos) {
        return;
    }
    m_mended = ReplaceDecodingMarks(cut.text);
    record.raw = m_mended;
    if (record.defect == RecordDefect::None) {
        record.defect = RecordDefect::Undecodable;
        record.error = DecodingError(cut.text, mark, cut.line, cut.offset);
    }
}

// `text` begins at `line`, and at `offset` in the source.
std::string PacketReader::DecodingError(std::string_view text, std::size_t mark, std::uint64_t line,
                                        std::uint64_t offset) const {
    std::string_view before = text.substr(0, mark);
    return fmt::format("{} at byte {} of the file (line {})", DescribeDecodingMark(text[mark]),
                       offset + m_decoder.SourceBytes(before), line + CountLineEnds(before));
}

}  // namespace tool
