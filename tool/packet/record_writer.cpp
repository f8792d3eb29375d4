#include "tool/packet/record_writer.h"

#include "tool/packet/xml_text.h"

namespace tool {

namespace {

void AppendEscaped(std::string_view text, std::string& out) {
    std::size_t done = 0;
    for (std::size_t at = text.find_first_of("&<>\r"); at != text.npos;
         at = text.find_first_of("&<>\r", at + 1)) {
        out += text.substr(done, at - done);
        switch (text[at]) {
            case '&':
                out += "&amp;";
                break;
            case '<':
                out += "&lt;";
                break;
            case '>':
                out += "&gt;";
                break;
            default:
                out += "&#xD;";
        }
        done = at + 1;
    }
    out += text.substr(done);
}

}  // namespace

RecordWriter::RecordWriter(std::string& out) : m_out(out) {
    m_out += "<record>\n";
}

void RecordWriter::OpenField(std::string_view field) {
    m_out += "  <field name=\"";
    m_out += EscapedAttribute(field);
    m_out += "\">";
}

void RecordWriter::Text(std::string_view value, PacketPlace place) {
    AppendEscaped(Guarded(value, place), m_out);
}

void RecordWriter::Value(std::string_view field, std::string_view value, PacketPlace place) {
    OpenField(field);
    Text(value, place);
    m_out += "</field>\n";
}

void RecordWriter::List(std::string_view field, std::span<const std::string> items) {
    OpenField(field);
    bool isFirst = true;
    for (const std::string& item : items) {
        m_out += isFirst ? "" : ",";
        isFirst = false;
        Text(item, PacketPlace::ListItem);
    }
    m_out += "</field>\n";
}

void RecordWriter::OpenLines(std::string_view field) {
    OpenField(field);
    m_isFirstLine = true;
}

void RecordWriter::HistoryLine(std::span<const std::string_view> columns) {
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
void RecordWriter::AttachmentLine(std::string_view line) {
    Text(line, PacketPlace::AttachmentLine);
    m_out += '\n';
}

void RecordWriter::CloseLines() {
    m_out += "</field>\n";
}

void RecordWriter::End() {
    m_out += "</record>";
}

}  // namespace tool
