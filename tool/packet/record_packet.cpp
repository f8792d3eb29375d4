#include "tool/packet/record_packet.h"

#include "tool/packet/packet_head.h"

namespace tool {

namespace {

constexpr std::string_view kRecordTag = "<record>";

// What stands in a section for "<record>". Comments and instructions are not content, so a bracket
// less does no harm; a CDATA section is split, and its two halves are read as one text.
std::string_view Disguise(SectionKind kind) {
    return kind == SectionKind::CData ? "<rec]]><![CDATA[ord>" : "<record ";
}

void AppendDisguised(std::string_view text, SectionKind kind, std::string& out) {
    while (true) {
        std::size_t found = text.find(kRecordTag);
        out += text.substr(0, found);
        if (found == std::string_view::npos) {
            return;
        }
        out += Disguise(kind);
        text.remove_prefix(found + kRecordTag.size());
    }
}

}  // namespace

void BuildRecordPacket(std::string_view record, const std::vector<Section>& disguised,
                       std::string& packet) {
    packet = kPacketDeclaration;
    if (ClassifyHead(record, true) == HeadAnswer::Configuration) {
        // An end tag before the record makes it a data packet for the importer.
        packet += "<records/>";
    }
    std::size_t done = 0;
    for (const Section& section : disguised) {
        packet += record.substr(done, section.begin - done);
        AppendDisguised(record.substr(section.begin, section.end - section.begin), section.kind,
                        packet);
        done = section.end;
    }
    packet += record.substr(done);
}

}  // namespace tool
