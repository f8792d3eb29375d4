#include "tool/report/record_printer.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <string_view>
#include <vector>

#include "tool/text/visible_text.h"

namespace tool {

namespace {

using recorddb::Attachment;
using recorddb::HistoryEntry;
using recorddb::LinkedRecord;
using recorddb::RecordReader;
using recorddb::RecordView;
using recorddb::schema::Field;
using recorddb::schema::FieldKind;

constexpr std::size_t kTextsInLine = 2;
constexpr std::size_t kWidthInLine = 60;

bool IsInKey(const RecordView& record, const Field& field) {
    const auto& key = record.type->key;
    return std::find(key.begin(), key.end(), field.index) != key.end();
}

// The first line of the text, cut between characters when it is too long for a list.
std::string Shortened(const std::string& text) {
    std::string line = text.substr(0, text.find_first_of("\r\n"));
    if (line.size() == text.size() && line.size() <= kWidthInLine) {
        return line;
    }
    std::size_t end = std::min(line.size(), kWidthInLine);
    while (end > 0 && end < line.size() &&
           (static_cast<unsigned char>(line[end]) & 0xC0U) == 0x80) {
        --end;
    }
    return line.substr(0, end) + "...";
}

// A text of several lines stands below its name, indented.
void PrintValue(std::string_view name, std::size_t width, std::string_view text,
                std::ostream& out) {
    if (text.find('\n') == std::string_view::npos) {
        out << fmt::format("  {:<{}}  {}\n", name, width, VisibleText(text));
        return;
    }
    out << fmt::format("  {}\n", name);
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        out << fmt::format("    {}\n", VisibleText(text.substr(0, end)));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
}

std::size_t WidestName(const RecordView& record) {
    std::size_t width = 0;
    for (const Field& field : record.type->fields) {
        width = std::max(width, field.name.size());
    }
    return width;
}

std::string Keys(const std::vector<LinkedRecord>& records) {
    std::string keys;
    for (const LinkedRecord& record : records) {
        keys += (keys.empty() ? "" : ", ") + record.key;
    }
    return keys;
}

void PrintDuplicates(const RecordView& record, RecordReader& reader, std::ostream& out) {
    if (const auto original = reader.Original(record)) {
        out << fmt::format("duplicate of {}\n", VisibleText(original->key));
    }
    const auto duplicates = reader.Duplicates(record);
    if (!duplicates.empty()) {
        out << fmt::format("duplicates: {}\n", VisibleText(Keys(duplicates)));
    }
}

void PrintHistory(const RecordView& record, RecordReader& reader, std::ostream& out) {
    const auto entries = reader.History(record);
    if (entries.empty()) {
        return;
    }
    out << fmt::format("history ({})\n", entries.size());
    for (const HistoryEntry& entry : entries) {
        const std::string text = fmt::format(
            "{}  {}  {}  {} -> {}{}{}", entry.actionTime, entry.userName, entry.actionName,
            entry.oldState, entry.newState, entry.comments.empty() ? "" : "  ", entry.comments);
        out << fmt::format("  {}\n", VisibleLines(text));
    }
}

void PrintAttachments(const RecordView& record, RecordReader& reader, std::ostream& out) {
    const auto attachments = reader.Attachments(record);
    if (attachments.empty()) {
        return;
    }
    out << fmt::format("attachments ({})\n", attachments.size());
    for (const Attachment& attachment : attachments) {
        const std::string text = fmt::format(
            "{}: {}, {} bytes{}{}", attachment.field, attachment.fileName, attachment.fileSize,
            attachment.description.empty() ? "" : ", ", attachment.description);
        out << fmt::format("  {}\n", VisibleLines(text));
    }
}

}  // namespace

void PrintLine(const RecordView& record, const std::string& key, std::ostream& out) {
    out << VisibleText(key);
    std::size_t texts = 0;
    for (const Field& field : record.type->fields) {
        const bool isState = field.kind == FieldKind::State;
        const bool isText = field.kind == FieldKind::Text && !IsInKey(record, field);
        if (isState || (isText && texts < kTextsInLine)) {
            out << "  " << VisibleText(Shortened(record.Text(field)));
            texts += isText ? 1 : 0;
        }
    }
    out << '\n';
}

void PrintRecord(const RecordView& record, RecordReader& reader, std::ostream& out) {
    out << fmt::format("{} {}\n", record.type->name,
                       VisibleText(reader.Key(*record.type, record.dbid)));
    const std::size_t width = WidestName(record);
    for (const Field& field : record.type->fields) {
        const auto& texts = record.values[field.index];
        if (!texts.empty()) {
            PrintValue(field.name, width, fmt::format("{}", fmt::join(texts, ", ")), out);
        }
    }
    PrintDuplicates(record, reader, out);
    PrintHistory(record, reader, out);
    PrintAttachments(record, reader, out);
}

}  // namespace tool
