#ifndef TESTS_TOOL_LOAD_FIXTURE_H
#define TESTS_TOOL_LOAD_FIXTURE_H

#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "made_database.h"
#include "temporary_folder.h"
#include "tool/load/policy/load_options.h"

namespace tool {

using Fields = std::vector<std::pair<std::string, std::string>>;

// A small tracker in a temporary folder, and the words in which tests of loads speak of it.
class LoadFixture : public testing::Test {
  protected:
    // Makes an empty database of users, keywords and bugs.
    explicit LoadFixture(Engine engine = Engine::Sqlite);
    // Makes one of the record types in `schema`, a schema file's text.
    LoadFixture(Engine engine, const char* schema);

    // Write a packet file and return its path.
    std::string Configuration(const std::string& file, std::string_view data, std::string_view type,
                              std::string_view key, std::string_view more = "");
    std::string Records(const std::string& file, const std::vector<Fields>& records);

    // Loads the sources, with the options in m_options; returns the exit code. What the load says
    // is in Said().
    int Load(std::vector<std::string> sources);
    std::string Said() const { return m_said; }
    // The report of the latest load, which m_options ask for.
    std::string Report() const { return ContentOf(m_options.report); }
    static std::string ContentOf(const std::filesystem::path& file);

    // The first column of the rows that `sql` selects, one row a line.
    std::string Query(const std::string& sql);

    // Changes the database.
    void Execute(const std::string& sql);

    // All that the database holds, the definitions of a file's tables and a server's indexes among
    // it, but for the times at which duplicates were marked, the numbers of the loads' runs, and
    // how many transactions there were.
    std::string Dump();

    bool IsFile() const { return m_place.IsFile(); }

    const TemporaryFolder m_folder;
    const MadeDatabase m_place;
    std::string m_database;
    LoadOptions m_options;

  private:
    std::string m_said;
};

std::string RecordXml(const Fields& fields);

}  // namespace tool

#endif
