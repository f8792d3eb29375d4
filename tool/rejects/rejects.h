#ifndef TOOL_REJECTS_REJECTS_H
#define TOOL_REJECTS_REJECTS_H

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tool/io/output_file.h"
#include "tool/load/sinks/rejected_record.h"
#include "tool/rejects/known_rejects.h"
#include "tool/rejects/rejects_folder.h"

namespace tool {

// Sets rejected records aside in a directory that is a source itself: mended, it can be loaded.
//
// For every configuration under which records are rejected there is a pair of files,
// NNNN-configuration.xml and NNNN-records.xml, numbered so that the order of the names is the order
// of loading. Guarded records and others have pairs of their own, and are known again as such. Each
// record stands under an XML comment that names its place and reason. After every Write the files
// are complete and closed XML documents, as far as the records in them are well-formed. Nothing is
// made before the first record is rejected. Files of earlier runs stay as they are: numbering goes
// on after them, and a record that stands in one of them with the same configuration, place and
// text is not written again. Several loads may use one directory at once.
//
// All operations throw std::system_error that names the file when something cannot be written.
class RejectWriter {
  public:
    // Throws when `directory` is no directory, or is seen now to be one that cannot be written.
    explicit RejectWriter(std::filesystem::path directory);

    // Sets the configuration packet under which the following records are rejected: everything that
    // is in force, as one packet. Empty when there is none; then no configuration file is written.
    void SetConfiguration(std::string packet);

    // Writes `record` after those rejected before.
    void Write(const RejectedRecord& record);

    // Syncs what was written to the disk; to be called before the end of the transaction that says
    // that these records were rejected. Throws also when somebody else has changed the file since
    // the last call, in which case what was written meanwhile may be lost.
    void Sync();

    // Number of records rejected, those that stood there already among them.
    std::uint64_t Count() const { return m_count; }

    const std::filesystem::path& Directory() const { return m_folder.Path(); }

    // The files made, in order.
    const std::vector<std::filesystem::path>& Files() const { return m_files; }

  private:
    KnownRejects& Known();
    void OpenPair();
    void WriteEntry(std::string& text);
    bool IsOurs() const;
    void LeaveClosed() noexcept;

    RejectsFolder m_folder;
    std::string m_wantedConfiguration;  // of the next record
    std::string m_configuration;        // of the open pair
    bool m_guarded = false;             // the records of the open pair are
    std::optional<KnownRejects> m_known;
    std::optional<OutputFile> m_records;
    bool m_unsynced = false;
    std::uint64_t m_end = 0;  // where the next record goes, in front of the closing tag
    std::uint64_t m_count = 0;
    std::vector<std::filesystem::path> m_files;
};

// `text` made fit to stand in an XML comment: one line of characters that XML allows, without "--"
// and without the bytes "<record>", by which records are found; valid UTF-8.
std::string CommentText(std::string_view text);

}  // namespace tool

#endif
