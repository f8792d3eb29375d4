#include "tool/rejects/rejects.h"

#include <fmt/format.h>
#include <sys/stat.h>

#include <algorithm>
#include <system_error>
#include <utility>

#include "tool/io/decoding_marks.h"
#include "tool/io/text_units.h"
#include "tool/packet/packet_head.h"

namespace tool {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view kClosingTag = "</records>\n";

// Closes whatever a broken record leaves open, so that the records after it can still be found. The
// two marks stand in a comment, where they mean nothing when no section is open.
constexpr std::string_view kCloseOpenSection =
    "<!-- a section of the record above is not closed: ]]> ?> -->\n";

std::string Comment(const RejectedRecord& record) {
    std::string text = fmt::format("{}, {} {}, line {}: {}", record.source, record.unit,
                                   record.number, record.line, CommentText(record.reason));
    if (record.defect == RecordDefect::Undecodable) {
        text += " (U+FFFD stands where the source holds what is no text)";
    } else if (record.defect == RecordDefect::TooLong || record.defect == RecordDefect::BadRow) {
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
        text += kCloseOpenSection;
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
    // No control characters, but not allowed either.
    ReplaceAll(line, "\uFFFE", "\uFFFD");
    ReplaceAll(line, "\uFFFF", "\uFFFD");
    return line;
}

RejectWriter::RejectWriter(fs::path directory) : m_folder(std::move(directory)) {}

void RejectWriter::SetConfiguration(std::string packet) {
    if (!packet.empty()) {
        packet = WithPacketDeclaration(packet);
    }
    m_wantedConfiguration = std::move(packet);
}

void RejectWriter::Write(const RejectedRecord& record) {
    ++m_count;
    std::string text = Entry(record);
    if (Known().Contain(m_wantedConfiguration, record.guarded, text)) {
        return;
    }
    if (m_wantedConfiguration != m_configuration || record.guarded != m_guarded) {
        Sync();
        m_configuration = m_wantedConfiguration;
        m_guarded = record.guarded;
        m_records.reset();
    }
    // All that the file holds is on the disk. So when somebody has already changed or removed it,
    // it is left to them, and a new one is begun.
    if (m_records && !m_unsynced && !IsOurs()) {
        m_records.reset();
    }
    if (!m_records) {
        OpenPair();
    }
    const std::size_t size = text.size();
    text += kClosingTag;
    m_unsynced = true;
    try {
        WriteEntry(text);
    } catch (const std::system_error&) {
        LeaveClosed();
        throw;
    }
    m_end += size;
}

// The entry becomes a record only with the last byte that is written, so a load that is killed
// before that does not leave a record that is cut short, which would be taken for a different one.
void RejectWriter::WriteEntry(std::string& text) {
    const std::size_t record = text.find('\n') + 1;
    const char first = std::exchange(text[record], ' ');
    m_records->WriteAt(m_end, text);
    m_records->WriteAt(m_end + record, {&first, 1});
}

void RejectWriter::Sync() {
    if (!m_unsynced) {
        return;
    }
    m_records->Sync();
    if (!IsOurs()) {
        throw std::system_error(
            std::make_error_code(std::errc::device_or_resource_busy),
            m_records->Path().string() +
                ": this file was changed while rejected records were being written to it; mend "
                "rejected records when the load is done, and start the same command again");
    }
    m_unsynced = false;
}

// Whether the file is still the one that was made, as it was written last. An editor that saves a
// file puts a new one in its place.
bool RejectWriter::IsOurs() const {
    struct stat ours = {};
    struct stat there = {};
    return ::fstat(m_records->Descriptor(), &ours) == 0 &&
           ::lstat(m_records->Path().c_str(), &there) == 0 && ours.st_dev == there.st_dev &&
           ours.st_ino == there.st_ino &&
           static_cast<std::uint64_t>(ours.st_size) == m_records->Size();
}

// A disk without room for the record still has room for the closing tag that stood in its place.
void RejectWriter::LeaveClosed() noexcept {
    try {
        m_records->Truncate(m_end);
        m_records->Append(kClosingTag);
    } catch (const std::system_error&) {
        // The records that are whole can be loaded all the same.
    }
}

// Looked for when the first record is rejected, since most loads reject none.
KnownRejects& RejectWriter::Known() {
    if (!m_known) {
        m_known = fs::exists(Directory()) ? KnownRejects(Directory()) : KnownRejects();
    }
    return *m_known;
}

void RejectWriter::OpenPair() {
    const std::string head = fmt::format("{}\n{}<records>\n", kPacketDeclaration,
                                         m_guarded ? fmt::format("{}\n", kGuardedInstruction) : "");
    RejectsFolder::Pair pair = m_folder.Add(m_configuration, head + std::string(kClosingTag));
    if (!pair.configuration.empty()) {
        m_files.push_back(pair.configuration);
    }
    m_files.push_back(pair.records.Path());
    m_records = std::move(pair.records);
    m_end = head.size();
}

}  // namespace tool
