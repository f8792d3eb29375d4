#ifndef TESTS_TOOL_SUPPORT_CHECK_FIXTURE_H
#define TESTS_TOOL_SUPPORT_CHECK_FIXTURE_H

#include <filesystem>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "load_fixture.h"
#include "tool/commands/check_command.h"

namespace tool {

inline std::string ReadFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// Rehearsals of loads.
class CheckFixture : public LoadFixture {
  protected:
    explicit CheckFixture(Engine engine) : LoadFixture(engine) {}
    CheckFixture(Engine engine, const char* schema) : LoadFixture(engine, schema) {}

    // Rehearses the load of the sources, and sees that nothing of it stays.
    int Check(std::vector<std::string> sources) {
        const std::string dump = Dump();
        // A reader leaves an empty log behind, which a writer takes away.
        Execute("");
        const std::string bytes = IsFile() ? ReadFile(m_database) : "";
        m_options.database = m_database;
        m_options.sources = std::move(sources);
        std::ostringstream out;
        std::ostringstream err;
        int code = -1;
        try {
            code = RunCheck(m_options, out, err);
        } catch (...) {
            m_said = err.str() + out.str();
            ExpectUntouched(dump, bytes);
            throw;
        }
        m_said = err.str() + out.str();
        ExpectUntouched(dump, bytes);
        return code;
    }

    std::string Said() const { return m_said; }
    // What Load said.
    std::string LoadSaid() const { return LoadFixture::Said(); }

    // The report of the check or load that `run` is.
    template <typename Run>
    nlohmann::json ReportOf(Run run) {
        m_options.report = m_folder.File("report.json");
        run();
        m_options.report.clear();
        return nlohmann::json::parse(ReadFile(m_folder.File("report.json")));
    }

    // The kinds of the losses that a check of the sources reports.
    std::vector<std::string> LossKinds(const std::vector<std::string>& sources) {
        std::vector<std::string> kinds;
        const auto report = ReportOf([&] { Check(sources); });
        for (const auto& loss : report["losses"]) {
            kinds.push_back(loss["kind"]);
        }
        return kinds;
    }

    // A data packet of bugs behind its configuration.
    std::vector<std::string> Bugs(const std::vector<Fields>& records, std::string_view more = "",
                                  std::string_view data = "record") {
        const std::string name = std::string(data) + "-bugs";
        return {Configuration(name + "-configuration.xml", data, "bug", "source_id", more),
                Records(name + ".xml", records)};
    }
    std::vector<std::string> BugsAsText(std::string_view xml, std::string_view data = "record") {
        std::vector<std::string> sources = Bugs({}, "", data);
        m_folder.Write(std::filesystem::path(sources[1]).filename().string(), std::string(xml));
        return sources;
    }

  private:
    void ExpectUntouched(const std::string& dump, const std::string& bytes) {
        EXPECT_FALSE(std::filesystem::exists(m_database + "-wal"));
        EXPECT_FALSE(std::filesystem::exists(m_database + "-shm"));
        EXPECT_TRUE(ReadFile(m_database) == bytes) << "the database file has changed";
        EXPECT_EQ(Dump(), dump);
    }

    std::string m_said;
};

inline std::vector<std::string> operator+(std::vector<std::string> sources,
                                          const std::vector<std::string>& more) {
    sources.insert(sources.end(), more.begin(), more.end());
    return sources;
}

}  // namespace tool

#endif
