#ifndef TESTS_TOOL_SOURCES_MAPPED_MAP_RUN_FIXTURE_H
#define TESTS_TOOL_SOURCES_MAPPED_MAP_RUN_FIXTURE_H

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "temporary_folder.h"
#include "tool/map/map_check.h"
#include "tool/map/map_reader.h"
#include "tool/sources/mapped/map_run.h"

namespace tool {

inline constexpr const char* kMappedTracker = R"(
record_types:
  user: {key: [login], fields: {login: {type: text}, name: {type: text}}}
  bug:
    prefix: BUG
    states: [NEW, CLOSED]
    fields:
      source_id: {type: text, unique: true}
      title: {type: text}
      opened: {type: datetime}
      owner: {type: reference, to: user}
      cc: {type: reference_list, to: user}
      files: {type: attachments}
      log: {type: history}
)";

// Runs a map over files in a temporary folder.
class MapRunTest : public testing::Test {
  protected:
    // What each step makes: the records as name=value, lists in brackets, "!" before an error.
    std::vector<std::vector<std::string>> Run(const std::string& map) {
        m_map = ReadMap("map: 1\n" + map, "map.yaml");
        CheckMap(m_map, m_schema);
        MapRun::Options options;
        options.standardInput = m_standardInput;
        options.keepsRows = true;
        options.exists = [this](const auto& /*type*/, const auto& /*field*/,
                                const std::string& value) { return value == m_existing; };
        MapRun run(m_map, m_schema, FindMapInputs(m_map, {m_argument}), std::move(options));
        EXPECT_TRUE(run.Run());
        m_findings.clear();
        m_losses = 0;
        for (const MapFinding& finding : run.Findings().all) {
            m_findings.push_back(finding.kind + ": " + Shortened(finding.text));
            m_losses += finding.weight == FindingWeight::Loss ? 1 : 0;
        }
        m_hashes.clear();
        m_rowsOf.clear();
        std::vector<std::vector<std::string>> steps;
        for (const auto& source : run.Sources()) {
            const auto reading = source->Open();
            m_hashes.push_back(source->Sha256());
            if (reading->IsConfiguration()) {
                m_configurations.push_back(reading->ReadConfiguration());
                continue;
            }
            steps.emplace_back();
            SourceRecord record;
            while (reading->NextRecord(record)) {
                steps.back().push_back(Shown(record));
                m_rowsOf.push_back(record.rows->size());
            }
        }
        return steps;
    }

    // One step that makes bugs of bugs.csv.
    std::vector<std::string> Bugs(const std::string& fields, const std::string& more = "") {
        return Run("sources: {bugs: {files: bugs.csv}}\n"
                   "steps:\n- records: bug\n  source: bugs\n  key: source_id\n" +
                   more + "  fields: {source_id: Nr" + fields + "}\n")
            .front();
    }

    std::string Shortened(std::string text) const {
        const std::string folder = m_folder.Path().string() + "/";
        for (std::size_t at = text.find(folder); at != text.npos; at = text.find(folder)) {
            text.erase(at, folder.size());
        }
        return text;
    }

    std::string Shown(const SourceRecord& record) const {
        std::string text = record.error.empty() ? "" : "! " + Shortened(record.error) + ":";
        for (const SourceField& field : record.values->fields) {
            std::string value;
            for (const std::string& item : field.values) {
                value += (value.empty() ? "" : "|") + item;
            }
            text += (text.empty() ? "" : " ") + field.name + "=" +
                    (field.isList ? "[" + value + "]" : value);
        }
        for (const SourceHistoryEntry& entry : record.values->history) {
            text += " <" + entry.id + "," + entry.when + "," + entry.who + ">";
        }
        for (const SourceAttachment& file : record.values->attachments) {
            text += " <" + file.id + "," + file.path + "," + file.description + ">";
        }
        return text;
    }

    const TemporaryFolder m_folder;
    const recorddb::schema::Schema m_schema =
        recorddb::schema::ReadSchema(kMappedTracker, "schema.yaml");
    MapFile m_map;
    std::string m_argument = m_folder.Path().string();  // the SOURCE
    int m_standardInput = -1;
    std::string m_existing;  // a value that the database has
    std::vector<std::string> m_findings;
    int m_losses = 0;  // among these
    std::vector<std::string> m_hashes;
    std::vector<std::size_t> m_rowsOf;  // the number of rows of each record
    std::vector<std::string> m_configurations;
};

}  // namespace tool

#endif
