#include "tool/packet/source_formats.h"

#include <algorithm>

#include "platform/core/adtext.h"
#include "tool/packet/importer_text.h"
#include "tool/packet/quiet_parser.h"
#include "ztimporter/entrylabels.h"

namespace tool {

namespace {

std::vector<std::string> Texts(const CStringArray& array) {
    std::vector<std::string> texts;
    for (const Obx_String& text : array) {
        texts.push_back(text.ToUtf8());
    }
    return texts;
}

std::vector<std::string> Lines(std::string_view value) {
    CStringArray lines;
    AdSplitTextIntoLines(Obx_String::FromUtf8(value), lines);
    return Texts(lines);
}

std::vector<std::string_view> Columns(std::string_view line) {
    std::vector<std::string_view> columns;
    for (std::size_t tab = line.find('\t'); tab != std::string_view::npos; tab = line.find('\t')) {
        columns.push_back(line.substr(0, tab));
        line.remove_prefix(tab + 1);
    }
    columns.push_back(line);
    return columns;
}

HistoryLine ReadHistoryLine(std::string_view text) {
    HistoryLine line;
    const std::vector<std::string_view> columns = Columns(text);
    line.id = columns.front();
    line.count = columns.size();
    for (std::size_t i = 0; i < line.columns.size() && i + 1 < columns.size(); ++i) {
        line.columns[i] = columns[i + 1];
    }
    return line;
}

}  // namespace

std::string HistoryColumnName(std::size_t column) {
    // The importer's first column is the entry's id.
    static_assert(history_label.size() == kHistoryColumns + 1);
    return history_label.at(column + 1).ToUtf8();
}

std::vector<HistoryLine> ReadHistoryLines(std::string_view value) {
    std::vector<HistoryLine> lines;
    for (const std::string& line : Lines(value)) {
        lines.push_back(ReadHistoryLine(line));
    }
    return lines;
}

std::vector<AttachmentLines> ReadAttachmentLines(std::string_view value) {
    std::vector<AttachmentLines> attachments;
    const std::vector<std::string> lines = Lines(value);
    for (std::size_t first = 0; first < lines.size(); first += AttachmentLines::kWhole) {
        const auto line = [&](std::size_t number) {
            return first + number < lines.size() ? lines[first + number] : std::string();
        };
        attachments.push_back({.id = line(0),
                               .fileName = line(1),
                               .fileSize = line(2),
                               .description = line(3),
                               .count = std::min(AttachmentLines::kWhole, lines.size() - first)});
    }
    return attachments;
}

std::vector<std::string> ReadListItems(std::string_view value) {
    CStringArray parts;
    QuietParser()->SplitReferenceListValue(Obx_String::FromUtf8(value), parts);
    std::vector<std::string> items;
    for (const std::string& part : Texts(parts)) {
        if (const std::string_view item = Trimmed(part); !item.empty()) {
            items.emplace_back(item);
        }
    }
    return items;
}

}  // namespace tool
