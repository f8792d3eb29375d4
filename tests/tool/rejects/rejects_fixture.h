#ifndef TESTS_TOOL_REJECTS_FIXTURE_H
#define TESTS_TOOL_REJECTS_FIXTURE_H

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "temporary_folder.h"
#include "tool/rejects/rejects.h"
#include "tool/sources/source_list.h"
#include "tool/sources/xml/packet_reader.h"

namespace rejects {

namespace fs = std::filesystem;
using tool::RejectedRecord;
using tool::RejectWriter;

inline const std::string kDeclaration = R"(<?xml version="1.0" encoding="UTF-8"?>)";
inline const std::string kBugs = "<configuration><record_type name=\"bug\"/></configuration>";
inline const std::string kUsers = "<configuration><record_type name=\"user\"/></configuration>";

inline RejectedRecord Rejected(std::string_view raw, const std::string& reason = "no good") {
    RejectedRecord record;
    record.source = "bugs.xml";
    record.number = 12;
    record.line = 340;
    record.reason = reason;
    record.raw = raw;
    return record;
}

class RejectsTest : public testing::Test {
  protected:
    fs::path Directory() const { return m_folder.Path() / "rejects"; }

    std::string Content(const std::string& name) const {
        std::ostringstream content;
        content << std::ifstream(Directory() / name).rdbuf();
        return content.str();
    }

    // The directory's files, read as the sources of a load: configurations as they are, records as
    // their raw text.
    std::vector<std::string> ReadBack() const {
        tool::SourceList list({Directory().string()});
        std::vector<std::string> texts;
        for (const tool::Source& source : list.Sources()) {
            tool::PacketReader reader(source.path, source.name);
            if (reader.IsConfiguration()) {
                texts.push_back(reader.ReadConfiguration());
            }
            tool::SourceRecord record;
            while (!reader.IsConfiguration() && reader.NextRecord(record)) {
                texts.emplace_back(record.raw);
            }
        }
        return texts;
    }

    std::vector<std::string> Names() const {
        tool::SourceList list({Directory().string()});
        std::vector<std::string> names;
        for (const tool::Source& source : list.Sources()) {
            names.push_back(source.path.filename().string());
        }
        return names;
    }

    TemporaryFolder m_folder;
};

}  // namespace rejects

#endif
