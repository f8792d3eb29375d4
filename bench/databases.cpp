#include "databases.h"

#include <unistd.h>

#include <utility>

#include "server_time.h"

namespace bench {

namespace {

std::vector<std::string> Command(const std::string& tool, const std::vector<std::string>& rest) {
    std::vector<std::string> command = {tool};
    command.insert(command.end(), rest.begin(), rest.end());
    return command;
}

}  // namespace

DatabaseFiles::DatabaseFiles(std::string tool, std::filesystem::path folder)
    : m_tool(std::move(tool)), m_folder(std::move(folder)) {}

std::string DatabaseFiles::New(const std::string& use) {
    const std::filesystem::path database = m_folder / (use + ".db");
    for (const char* suffix : {"", "-wal", "-shm"}) {
        std::filesystem::remove(database.string() + suffix);
    }
    RunTool({"init", database, m_folder / "schema.yaml"});
    return database;
}

Run DatabaseFiles::RunTool(const std::vector<std::string>& command) {
    return RunChild(Command(m_tool, command));
}

ServerDatabases::ServerDatabases(std::string tool, std::string url, std::filesystem::path folder,
                                 pid_t server, std::optional<std::size_t> workers)
    : m_tool(std::move(tool)),
      m_url(std::move(url)),
      m_folder(std::move(folder)),
      m_server(server),
      m_workers(workers) {}

std::string ServerDatabases::New(const std::string& use) {
    static int count = 0;
    const std::string database = m_url + "&schema=bench_" + std::to_string(getpid()) + "_" +
                                 std::to_string(++count) + "_" + use;
    RunTool({"init", database, m_folder / "schema.yaml"});
    return database;
}

Run ServerDatabases::RunTool(const std::vector<std::string>& command) {
    std::vector<std::string> whole = Command(m_tool, command);
    if (command.front() == "load" && m_workers) {
        whole.insert(whole.end(), {"--workers", std::to_string(*m_workers)});
    }
    if (m_server == 0) {
        return RunChild(whole);
    }
    const double before = ServerSeconds(m_server);
    Run run = RunChild(whole);
    run.serverSeconds = ServerSeconds(m_server) - before;
    return run;
}

}  // namespace bench
