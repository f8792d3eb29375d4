#ifndef TOOL_PACKET_RECORD_MARKUP_WRITER_H
#define TOOL_PACKET_RECORD_MARKUP_WRITER_H

#include <span>
#include <string>
#include <string_view>

#include "tool/guarded/guarded_text.h"

namespace tool {

// Writes the record of a guarded packet, value by value.
class RecordMarkupWriter {
  public:
    // Begins a record at the end of `out`, which outlives the object.
    explicit RecordMarkupWriter(std::string& out);

    // A value that a rule of packets for such a place would change is guarded.
    void Value(std::string_view field, std::string_view value, PacketPlace place);
    void List(std::string_view field, std::span<const std::string> items);

    // A value of several lines: an entry of history in each, its columns in their order, or four
    // lines for each attachment.
    void OpenLines(std::string_view field);
    void HistoryLine(std::span<const std::string_view> columns);
    void AttachmentLine(std::string_view line);
    void CloseLines();

    void End();

  private:
    void OpenField(std::string_view field);
    void Text(std::string_view value, PacketPlace place);

    std::string& m_out;
    bool m_isFirstLine = true;
};

}  // namespace tool

#endif
