#ifndef TESTS_TOOL_PROXIED_LOAD_H
#define TESTS_TOOL_PROXIED_LOAD_H

#include <fmt/format.h>

#include <filesystem>
#include <string>
#include <vector>

#include "load_fixture.h"
#include "server_proxy.h"

namespace tool {

// A load through a proxy, of records of which some are rejected.
class ProxiedLoad : public LoadFixture {
  public:
    // Where the users are read last, the bugs that they own have to wait for them.
    enum class Users { First, Last };

    // So many bugs; by default they are two groups, and some more.
    explicit ProxiedLoad(Users users = Users::First, int bugs = 230)
        : LoadFixture(Engine::Postgres), m_users(users), m_bugs(bugs) {}

    // Loads; `watch` says what becomes of each message. Returns the exit code.
    int Run(const ServerProxy::Watch& watch) {
        m_options.rejects = m_folder.Path() / "rejects";
        m_options.report = m_folder.Path() / "report.json";
        const std::string direct = m_database;
        const ServerProxy proxy(SocketFolderOf(direct), m_folder.Path(), watch);
        m_database = UrlWithSocketIn(direct, m_folder.Path());
        const std::vector<std::string> users = {
            Configuration("c1.xml", "record", "user", "login"),
            Records("users.xml", {{{"login", "ann"}}, {{"login", "bob"}}})};
        std::vector<std::string> sources = {Configuration("c2.xml", "record", "bug", "source_id"),
                                            Records("2.xml", Bugs())};
        sources.insert(m_users == Users::First ? sources.begin() : sources.end(), users.begin(),
                       users.end());
        const int code = Load(sources);
        m_database = direct;
        return code;
    }

    // What the load has told and made, but for what differs from one load to another.
    std::string Result() {
        std::string all = Dump() + Report();
        for (std::size_t at = 0; (at = all.find(m_place.Schema())) != std::string::npos;) {
            all.erase(at, m_place.Schema().size());
        }
        for (std::size_t at = 0; (at = all.find(m_folder.Path().string())) != std::string::npos;) {
            all.erase(at, m_folder.Path().string().size());
        }
        return all;
    }

    std::string Report() const {
        std::string report = ContentOf(m_options.report);
        report.erase(report.find("\"seconds\""),
                     report.find("\"rejects\"") - report.find("\"seconds\""));
        return report;
    }

    // How often a text stands in the files of rejected records.
    int RejectsNaming(const std::string& id) const {
        int count = 0;
        for (const auto& file : std::filesystem::directory_iterator(m_options.rejects)) {
            count += ContentOf(file.path()).find(">" + id + "<") == std::string::npos ? 0 : 1;
        }
        return count;
    }

    using LoadFixture::ContentOf;
    using LoadFixture::m_database;
    using LoadFixture::m_options;
    using LoadFixture::Said;

    void TestBody() override {}

  private:
    const Users m_users;
    const int m_bugs;

    // Some are rejected, one of the last thirteen too.
    std::vector<Fields> Bugs() const {
        std::vector<Fields> bugs;
        for (int i = 0; i < m_bugs; ++i) {
            bugs.push_back(
                {{"source_id", fmt::format("s{}", i)},
                 {"title", fmt::format("Bug {}", i)},
                 {"votes", i % 60 == 37 || i == m_bugs - 13 ? "many" : std::to_string(i)},
                 {"owner", i % 2 == 0 ? "ann" : "bob"},
                 {"log", "1\t2020-01-01 00:00:00\tu1\tsubmit\tnone\tNEW"}});
        }
        return bugs;
    }
};

}  // namespace tool

#endif
