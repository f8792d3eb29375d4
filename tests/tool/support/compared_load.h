#ifndef TESTS_TOOL_COMPARED_LOAD_H
#define TESTS_TOOL_COMPARED_LOAD_H

#include <fmt/format.h>

#include <cstdint>
#include <filesystem>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "load_fixture.h"

namespace tool {

// A text without its lines of records per second.
inline std::string WithoutRates(const std::string& text) {
    std::istringstream lines(text);
    std::string kept;
    for (std::string line; std::getline(lines, line);) {
        if (line.find("per second") == std::string::npos &&
            line.find("records/s") == std::string::npos) {
            kept += line + '\n';
        }
    }
    return kept;
}

// A text without any occurrence of a piece, which may be empty.
inline std::string Without(const std::string& text, const std::string& piece) {
    std::string kept;
    std::size_t from = 0;
    for (std::size_t at = piece.empty() ? std::string::npos : text.find(piece);
         at != std::string::npos; at = text.find(piece, from)) {
        kept.append(text, from, at - from);
        from = at + piece.size();
    }
    return kept.append(text, from);
}

// A report without what chance has a say in: the time, and what workers had done ahead.
inline std::string WithoutChance(const std::string& report) {
    static const std::regex chance(R"(,"seconds":[0-9.]+|,"workers":\{[^}]*\})");
    return std::regex_replace(report, chance, "");
}

// How many groups workers had done when their turn came, by the report.
inline std::uint64_t GroupsAhead(const std::string& report) {
    static const std::regex ahead(R"("ahead":([0-9]+))");
    std::smatch number;
    return std::regex_search(report, number, ahead) ? std::stoull(number[1]) : 0;
}

// Loads whose outcome is compared with that of others, each in a database of its own.
class ComparedLoad : public LoadFixture {
  public:
    using LoadFixture::LoadFixture;

    // So many workers, which call `pause` before each record, and do all that they are given;
    // groups of so many records.
    void SetWorkers(std::size_t workers, std::size_t groupRecords, std::function<void()> pause) {
        m_options.workers = workers;
        m_options.waitsForWorkers = true;
        m_options.groupRecords = groupRecords;
        m_options.beforeWork = std::move(pause);
    }

    // Loads some sources after others; returns all that was told and all that was set aside.
    std::string LoadAll(const std::vector<std::vector<std::string>>& loads) {
        m_options.rejects = m_folder.Path() / "rejects";
        m_options.report = m_folder.Path() / "report.json";
        m_options.attachments = m_folder.Path();
        std::string told;
        for (const std::vector<std::string>& sources : loads) {
            const int code = Load(sources);
            const std::string report = Report();
            m_ahead += GroupsAhead(report);
            told += fmt::format("{}\n{}{}", code, Said(), WithoutChance(report));
        }
        return WithoutPlaces(WithoutRates(told + SetAside()));
    }

    // All that is in the database.
    std::string Tables() { return WithoutPlaces(Dump()); }

    // The rows of the tables that a server has in each layout, but for the one that tells it.
    std::string RowsOfAnyLayout() {
        std::istringstream lines(Tables());
        std::string kept;
        for (std::string line; std::getline(lines, line);) {
            if (!line.starts_with("CREATE ") && !line.starts_with("zt_schema|") &&
                !line.starts_with("zt_key|") && !line.starts_with("zt_last_dbid|")) {
                kept += line + '\n';
            }
        }
        return kept;
    }

    // How many groups workers had done when their turn came.
    std::uint64_t Ahead() const { return m_ahead; }

    void TestBody() override {}

  protected:
    // Two loads differ in where they stand.
    std::string WithoutPlaces(const std::string& text) const {
        return Without(Without(text, m_folder.Path().string()), m_place.Schema());
    }

  private:
    // What stands in the files of the rejects folder, in the order of their names.
    std::string SetAside() const {
        std::set<std::filesystem::path> files;
        if (std::filesystem::exists(m_options.rejects)) {
            for (const auto& file : std::filesystem::directory_iterator(m_options.rejects)) {
                files.insert(file.path());
            }
        }
        std::string all;
        for (const auto& file : files) {
            all += ContentOf(file);
        }
        return all;
    }

    std::uint64_t m_ahead = 0;
};

}  // namespace tool

#endif
