#include "verify/verify_fixture.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <sstream>

#include "recorddb/sql.h"
#include "tool/commands/verify_command.h"

namespace tool {

namespace {

constexpr const char* kOwnersByMail =
    "<record_reference_mapping_list><m target_field=\"owner\" reference_field=\"email\"/>"
    "</record_reference_mapping_list>";

std::string Text(const nlohmann::json& difference, const char* name) {
    return difference.at(name).get<std::string>();
}

}  // namespace

std::vector<std::string> Together(std::vector<std::string> sources,
                                  const std::vector<std::string>& more) {
    sources.insert(sources.end(), more.begin(), more.end());
    return sources;
}

VerifyFixture::VerifyFixture(Engine engine) : LoadFixture(engine) {
    const std::string folder = m_folder.File("files");
    std::filesystem::create_directories(folder + "/sub");
    std::ofstream(folder + "/sub/a.txt") << "hello";
    std::ofstream(folder + "/b.txt") << "other";
    m_options.attachments = folder;
    m_verifyOptions.attachments = folder;
    m_verifyOptions.report = m_folder.File("verify.json");
}

std::vector<std::string> VerifyFixture::Basics() {
    return {
        Configuration("users-configuration.xml", "record", "user", "login"),
        Records("users.xml",
                {{{"login", "ann"}, {"email", "ann@x"}}, {{"login", "bob"}, {"email", "bob@x"}}}),
        Configuration("keywords-configuration.xml", "record", "keyword", "name"),
        Records("keywords.xml", {{{"name", "red"}}, {{"name", "green"}}, {{"name", "blue"}}}),
    };
}

std::vector<std::string> VerifyFixture::Bugs(const std::string& name,
                                             const std::vector<Fields>& records,
                                             std::string_view more, std::string_view data) {
    return {Configuration(name + "-configuration.xml", data, "bug", "source_id", more),
            Records(name + ".xml", records)};
}

std::vector<std::string> VerifyFixture::Tracker() {
    std::vector<std::string> sources = Basics();
    sources = Together(sources, Bugs("bugs",
                                     {{{"source_id", "C-1"},
                                       {"title", "One"},
                                       {"votes", " 007"},
                                       {"owner", "ann@x"},
                                       {"keywords", "red, blue"},
                                       {"state", "OPEN"}},
                                      {{"source_id", "C-2"}, {"title", "Two"}}},
                                     std::string("<importstate name=\"TRUE\"/>") + kOwnersByMail));
    sources = Together(sources, Bugs("marks", {{{"source_id", "C-2"}, {"twin", "C-1"}}},
                                     "<updaterecord name=\"TRUE\"/><duplicate_id name=\"twin\"/>"));
    sources = Together(sources, Bugs("history",
                                     {{{"source_id", "C-1"},
                                       {"history",
                                        "h3\t2020-01-02\tann\tclose\tOPEN\tCLOSED\n"
                                        "h1\t2020-01-01T10:00Z\tann\tsubmit\tnone\tNEW\n"
                                        "h2\t2020-01-01 10:00:00\tbob\topen\tNEW\tOPEN"}}},
                                     "", "history"));
    return Together(sources, Bugs("attachments",
                                  {{{"source_id", "C-1"},
                                    {"files",
                                     "a1\nsub/a.txt\n5\nthe first\n"
                                     "a2\nb.txt\nunknown\n\n"}}},
                                  "", "attachments"));
}

int VerifyFixture::Verify(const std::vector<std::string>& sources) {
    m_verifyOptions.database = m_database;
    m_verifyOptions.sources = sources;
    std::ostringstream out;
    std::ostringstream err;
    const int code = RunVerify(m_verifyOptions, out, err);
    m_shown = err.str() + out.str();
    return code;
}

int VerifyFixture::LoadAndVerify(const std::vector<std::string>& sources) {
    EXPECT_EQ(Load(sources), 0) << Said();
    return Verify(sources);
}

int VerifyFixture::LoadAndVerifyBugs(const std::vector<Fields>& bugs, std::string_view more) {
    return LoadAndVerify(m_sources = Together(Basics(), Bugs("bugs", bugs, more)));
}

int VerifyFixture::LoadAndVerifyMore(const std::vector<std::string>& more) {
    return LoadAndVerify(m_sources = Together(m_sources, more));
}

std::string VerifyFixture::Report() const {
    std::ifstream file(m_verifyOptions.report, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::string VerifyFixture::Differences() const {
    std::string lines;
    const auto report = nlohmann::json::parse(Report());
    for (const auto& difference : report.at("differences")) {
        lines += (lines.empty() ? "" : "\n") + Text(difference, "id") + "|" +
                 Text(difference, "field") + "|" + Text(difference, "source") + "|" +
                 Text(difference, "database") + "|" + Text(difference, "problem");
    }
    return lines;
}

std::string VerifyFixture::Faults() const {
    std::string lines;
    const auto report = nlohmann::json::parse(Report());
    for (const auto& fault : report.at("faults")) {
        lines += (lines.empty() ? "" : "\n") + Text(fault, "type") + "|" + Text(fault, "id") + "|" +
                 Text(fault, "field") + "|" + Text(fault, "database") + "|" +
                 Text(fault, "problem");
    }
    return lines;
}

void VerifyFixture::Damage(const std::string& sql) {
    const auto connection = recorddb::sql::Open(m_database, recorddb::sql::OpenMode::ReadWrite);
    connection->ExecuteScript(IsFile() ? "PRAGMA foreign_keys = OFF"
                                       : "SET session_replication_role = replica");
    connection->ExecuteScript(sql);
}

}  // namespace tool
