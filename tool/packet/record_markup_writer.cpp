#include "tool/packet/record_markup_writer.h"

#include "platform/foundation/markup_escapes.h"
#include "tool/io/byte_set.h"
#include "tool/packet/xml_text.h"

namespace tool {

namespace {

constexpr ByteSet kEscaped([](char c) { return c == '&' || c == '<' || c == '>' || c == '\r'; });

void AppendEscaped(std::string_view text, std::string& out) {
    std::size_t done = 0;
    for (std::size_t at = kEscaped.Find(text); at < text.size(); at = kEscaped.Find(text, done)) {
        out.append(text, done, at - done).append(MarkupEscapeOf(text[at]));
        done = at + 1;
    }
    out.append(text, done);
}

}  // namespace

RecordMarkupWriter::RecordMarkupWriter(std::string& out) : m_out(out) {
    m_out += "<record>\n";
}

void RecordMarkupWriter::OpenField(std::string_view field) {
    m_out += "  <field name=\"";
    m_out += EscapedAttribute(field);
    m_out += "\">";
}

void RecordMarkupWriter::Text(std::string_view value, PacketPlace place) {
    if (StandsAsItIs(value, place)) {
        AppendEscaped(value, m_out);
    } else {
        AppendEscaped(Guarded(value, place), m_out);
    }
}

void RecordMarkupWriter::Value(std::string_view field, std::string_view value, PacketPlace place) {
    OpenField(field);
    Text(value, place);
    m_out += "</field>\n";
}

void RecordMarkupWriter::List(std::string_view field, std::span<const std::string> items) {
    OpenField(field);
    bool isFirst = true;
    for (const std::string& item : items) {
        m_out += isFirst ? "" : ",";
        isFirst = false;
        Text(item, PacketPlace::ListItem);
    }
    m_out += "</field>\n";
}

void RecordMarkupWriter::OpenLines(std::string_view field) {
    OpenField(field);
    m_isFirstLine = true;
}

void RecordMarkupWriter::HistoryLine(std::span<const std::string_view> columns) {
    m_out += m_isFirstLine ? "" : "\n";
    m_isFirstLine = false;
    bool isFirst = true;
    for (const std::string_view column : columns) {
        m_out += isFirst ? "" : "\t";
        isFirst = false;
        Text(column, PacketPlace::HistoryColumn);
    }
}

// Every line ends, also the last one: an empty line at the end would be none otherwise.
void RecordMarkupWriter::AttachmentLine(std::string_view line) {
    Text(line, PacketPlace::AttachmentLine);
    m_out += '\n';
}

void RecordMarkupWriter::CloseLines() {
    m_out += "</field>\n";
}

void RecordMarkupWriter::End() {
    m_out += "</record>";
}

}  // namespace tool
