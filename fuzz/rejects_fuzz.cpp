#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "input.h"
#include "temporary_folder.h"
#include "tool/io/source_error.h"
#include "tool/rejects/known_rejects.h"
#include "tool/rejects/rejects.h"
#include "tool/sources/xml/packet_reader.h"

namespace {

using fuzz::Expect;

constexpr const char* kConfiguration = "<configuration/>";

// The records of a text, each rejected for a reason that holds a part of the text itself.
class Rejections {
  public:
    explicit Rejections(std::string_view text) {
        tool::PacketReader reader(std::make_unique<tool::TextBytes>(text));
        tool::SourceRecord record;
        while (reader.NextRecord(record)) {
            m_raws.emplace_back(record.raw);
            m_records.push_back({.source = "source.xml",
                                 .number = record.ordinal + 1,
                                 .line = record.line,
                                 .sourceId = "",
                                 .reason = std::string(text.substr(record.offset / 2, 100)),
                                 .raw = {},
                                 .defect = record.defect,
                                 .rows = {},
                                 .openSection = record.openSection});
        }
        for (std::size_t i = 0; i < m_raws.size(); ++i) {
            m_records[i].raw = m_raws[i];
        }
    }

    const std::vector<std::string>& Raws() const { return m_raws; }

    // Sets them aside in `folder`; returns the files that were made.
    std::vector<std::filesystem::path> Write(const std::filesystem::path& folder) const {
        tool::RejectWriter writer(folder);
        writer.SetConfiguration(kConfiguration);
        for (const tool::RejectedRecord& record : m_records) {
            writer.Write(record);
        }
        return writer.Files();
    }

  private:
    std::vector<std::string> m_raws;
    std::vector<tool::RejectedRecord> m_records;
};

std::vector<std::string> RecordsIn(const std::filesystem::path& file) {
    std::vector<std::string> raws;
    tool::PacketReader reader(file, file.string());
    tool::SourceRecord record;
    while (reader.NextRecord(record)) {
        raws.emplace_back(record.raw);
    }
    return raws;
}

// What was set aside is a source of the same records. The text of a record that does not end goes
// on with the comment after it, up to the next record.
void ExpectReadable(const std::filesystem::path& file, const std::vector<std::string>& raws) {
    const std::vector<std::string> read = RecordsIn(file);
    Expect(read.size() == raws.size(), "every record is found where it was set aside");
    for (std::size_t i = 0; i < read.size(); ++i) {
        Expect(read[i].starts_with(raws[i]), "a record stands there as in its source");
    }
}

}  // namespace

// A records file may hold anything, since people mend it: the folder still takes new records, which
// can be loaded from there, and knows them when they come again.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text = fuzz::Input(data, size).Text();
    const TemporaryFolder folder;
    try {
        const Rejections rejections(text);
        folder.Write(tool::RejectFileName(1, tool::kRejectConfigurationKind), kConfiguration);
        folder.Write(tool::RejectFileName(1, tool::kRejectRecordsKind), text);
        const auto files = rejections.Write(folder.Path());
        if (!files.empty()) {
            ExpectReadable(files.back(), rejections.Raws());
        }
        Expect(rejections.Write(folder.Path()).empty(), "what stands there is not written again");
    } catch (const tool::SourceError& error) {
        Expect(std::string_view(error.what()).find("packets are read in UTF-8 or UTF-16 only") !=
                   std::string_view::npos,
               "only another encoding is refused");
    }
    return 0;
}
