#include "tool/rejects.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <utility>

#include "tool/decoding_marks.h"
#include "tool/packet_head.h"
#include "tool/replacing_file.h"
#include "tool/text_units.h"

namespace tool {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view closingTag = "</records>\n";

// With more digits the order of the names would not be the order of the numbers.
constexpr int highestNumber = 9999;

// Closes whatever a broken record leaves open, so that the records behind it can still be found. A
// comment is the place where neither mark means anything if nothing is open.
constexpr std::string_view closeOpenSection =
    "<!-- a section of the record above is not closed: ]]> ?> -->\n";

[[noreturn]] void Refuse(const fs::path& path, int error, std::string_view what) {
    throw std::system_error(error, std::generic_category(),
                            fmt::format("{}: {}", path.string(), what));
}

// Finds out before hours of loading, not after, that the place for rejects is of no use.
void CheckWritable(const fs::path& directory) {
    fs::path place = fs::absolute(directory);
    while (!fs::exists(place) && place.has_relative_path()) {
        place = place.parent_path();
    }
    if (!fs::is_directory(place)) {
        Refuse(place, ENOTDIR, "rejected records need a directory");
    }
    if (::access(place.c_str(), W_OK | X_OK) != 0) {
        Refuse(place, errno, "rejected records cannot be written here");
    }
}

int HighestNumber(const fs::path& directory) {
    int highest = 0;
    for (const fs::directory_entry& entry : fs::directory_iterator(directory)) {
        highest = std::max(highest, RejectFileNumber(entry.path()));
    }
    return highest;
}

std::string Comment(const RejectedRecord& record) {
    std::string text = fmt::format("{}, record {}, line {}: {}", record.source, record.number,
                                   record.line, CommentText(record.reason));
    if (record.defect == RecordDefect::Undecodable) {
        text += " (U+FFFD stands where the source holds what is no text)";
    } else if (record.defect == RecordDefect::TooLong) {
        text += " (the record is not repeated here: take it from the source)";
    }
    return fmt::format("<!-- {} -->\n", CommentText(text));
}

// What stands in the file for a record, in whole lines.
std::string Entry(const RejectedRecord& record) {
    std::string text = Comment(record);
    text += record.raw;
    if (!record.raw.empty()) {
        text += '\n';
    }
    if (record.openSection) {
        text += closeOpenSection;
    }
    return text;
}

void ReplaceAll(std::string& text, std::string_view from, std::string_view to) {
    for (std::size_t at = text.find(from); at != std::string::npos;
         at = text.find(from, at + to.size())) {
        text.replace(at, from.size(), to);
    }
}

}  // namespace

std::string CommentText(std::string_view text) {
    std::string line(text);
    bool marked = false;
    MarkInvalidUtf8(line.data(), line.size(), true, marked);
    line = ReplaceDecodingMarks(line);
    std::replace_if(
        line.begin(), line.end(),
        [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; }, ' ');
    std::size_t first = std::min(line.find_first_not_of(' '), line.size());
    line.erase(0, first);
    line.erase(line.find_last_not_of(' ') + 1);
    // Once is not enough for three dashes in a row.
    ReplaceAll(line, "--", "- -");
    ReplaceAll(line, "--", "- -");
    ReplaceAll(line, "<record>", "<record >");
    return line;
}

RejectWriter::RejectWriter(fs::path directory) : m_directory(std::move(directory)) {
    CheckWritable(m_directory);
}

void RejectWriter::SetConfiguration(std::string packet) {
    if (!packet.empty()) {
        packet = WithPacketDeclaration(packet);
    }
    if (packet == m_configuration) {
        return;
    }
    m_configuration = std::move(packet);
    m_records.reset();
}

void RejectWriter::Write(const RejectedRecord& record) {
    ++m_count;
    std::string text = Entry(record);
    if (Known().Contain(m_configuration, text)) {
        return;
    }
    if (!m_records) {
        OpenPair();
    }
    std::size_t size = text.size();
    text += closingTag;
    try {
        m_records->WriteAt(m_end, text);
    } catch (const std::system_error&) {
        LeaveClosed();
        throw;
    }
    m_end += size;
}

// A disk that has no room for a record has room for what stood in its place.
void RejectWriter::LeaveClosed() noexcept {
    try {
        m_records->Truncate(m_end);
        m_records->Append(closingTag);
    } catch (const std::system_error&) {
        // The next run closes the file.
    }
}

// Looked for when the first record is rejected, since most loads reject none.
const KnownRejects& RejectWriter::Known() {
    if (!m_known) {
        m_known = fs::exists(m_directory) ? KnownRejects(m_directory) : KnownRejects();
    }
    return *m_known;
}

void RejectWriter::OpenPair() {
    fs::create_directories(m_directory);
    int number = HighestNumber(m_directory) + 1;
    if (number > highestNumber) {
        Refuse(m_directory, EEXIST,
               "the numbers for files of rejected records are used up, use an empty directory");
    }
    if (!m_configuration.empty()) {
        Create(number, rejectConfigurationKind, m_configuration);
    }
    const std::string head = fmt::format("{}\n<records>\n", packetDeclaration);
    m_records =
        OutputFile::OpenExisting(Create(number, rejectRecordsKind, head + std::string(closingTag)));
    m_end = head.size();
}

// Makes a file that appears complete: one that a process has left empty would keep the folder from
// being loaded.
fs::path RejectWriter::Create(int number, std::string_view kind, std::string_view content) {
    fs::path path = m_directory / RejectFileName(number, kind);
    ReplacingFile file(path);
    file.Append(content);
    file.Finish();
    m_files.push_back(path);
    return path;
}

}  // namespace tool
