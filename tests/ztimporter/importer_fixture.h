#ifndef TESTS_ZTIMPORTER_IMPORTER_FIXTURE_H
#define TESTS_ZTIMPORTER_IMPORTER_FIXTURE_H

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tests/scripted/scripted_core.h"
#include "tests/scripted/scripted_session.h"
#include "tests/scripted/trace_lines.h"
#include "tests/ztimporter/open_importer.h"
#include "tests/ztimporter/packets.h"

using Lines = std::vector<std::string>;

// The lines of several lists, one after the other.
template <typename... Lists>
Lines Joined(const Lists&... lists) {
    Lines all;
    (all.insert(all.end(), lists.begin(), lists.end()), ...);
    return all;
}

// How many of the lines are this one.
long Count(const Lines& lines, const std::string& line);

// The text of a catalogue message with these parameters.
Obx_String Message(int id, const std::vector<std::pair<Obx_String, Obx_String>>& parameters = {});

// The calls that search the bugs whose field equals the value, up to the first row.
Lines Search(const std::string& field, const std::string& value);

// An importer on a scripted core with traces on, and the language in which its tests are written.
//
// The core knows the record types
//   bug: with states, in the field "state"; texts "source_id", "title" and "notes"; "owner"
//     refers to a user, "parent" to a bug, "place" to a place; lists "keywords" of keywords and
//     "parents" of bugs; attachments "files" and "pictures"; history "log" and "log2"; "id";
//   user (key "login") and keyword (key "name"): without states;
//   place: without states; its key has the parts "dbid", "street" and "town".
class ImporterTest : public testing::Test {
  protected:
    ImporterTest();
    ~ImporterTest() override;
    void TearDown() override;

    // Given. What these do is forgotten before the test goes on.
    void GivenConfiguration(const Configuration& configuration = {});
    // The bugs that a search of source_id for the value finds.
    void GivenRecords(const Obx_String& sourceId, const std::vector<Obx_String>& dbIds);
    // A search of source_id for the value finds a first row, but says that there are `count`.
    void GivenRowCount(const Obx_String& sourceId, long count);
    // The packet that the record parser stands at the beginning of.
    void GivenPacket(const std::string& packet);
    // The current record of the packet, for operations that are driven by themselves. Its fields
    // are not in the record map before SetupRecordMap.
    void GivenCurrentRecord(const Pairs& fields);
    // The record map, as SetupRecordMap would leave it.
    void GivenRecordMap(const Pairs& fields);
    // A bug open for writing, with the dbid 101.
    AdEntityPtr GivenOpenBug();

    // When.
    void Import(const std::string& packet);
    void ImportRecords(const std::vector<Pairs>& records);

    // Then. Each looks at what happened since the configuration.
    void ExpectErrorText(const Obx_String& text);
    // The error text of an exception that says that this condition does not hold.
    void ExpectBadValue(const Obx_String& condition);
    // That of XML which cannot be read, from "line" on.
    void ExpectXmlError(const Obx_String& text);
    // The calls to the core, without questions about definitions.
    void ExpectCalls(const Lines& lines);
    void ExpectNoCalls() { ExpectCalls({}); }
    // Also the questions.
    void ExpectCallsAndQuestions(const Lines& lines);
    // The importer's traces, and the traces among the calls ("trace: ...").
    void ExpectTrace(const Lines& texts);
    void ExpectStory(const Lines& lines);
    // The last traces and calls.
    void ExpectStoryEnds(const Lines& lines);
    void ExpectRecordMap(const Pairs& fields);
    // Whether the record map and the values taken out of it were emptied.
    void ExpectCleanRecordMap();
    // Whether they still hold the record, which has this source id.
    void ExpectRecordMapLeft(const Obx_String& sourceId);
    void ExpectNoPendingHistory();

    Lines Calls();
    Lines Trace();

    ScriptedCore m_core;
    ScriptedEntityDef& m_bug;
    ScriptedEntityDef& m_user;
    ScriptedEntityDef& m_keyword;
    ScriptedEntityDef& m_place;
    std::optional<TraceLines> m_traces;
    std::unique_ptr<OpenImporter> m_importer;
    Obx_String m_error;

  private:
    std::string m_packet;
};

#endif
