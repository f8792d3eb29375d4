#ifndef BENCH_DATABASES_H
#define BENCH_DATABASES_H

#include <sys/types.h>

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>

#include "run.h"

namespace bench {

// The databases that loads are timed on: files, or schemas of a server.
class Databases {
  public:
    Databases() = default;
    Databases(const Databases&) = delete;
    Databases& operator=(const Databases&) = delete;
    virtual ~Databases() = default;

    // The name of a new one for the tool; `use` tells those that are there at the same time apart.
    virtual std::string New(const std::string& use) = 0;
    // Runs the tool, which uses none but these. Throws std::runtime_error.
    virtual Run RunTool(const std::vector<std::string>& command) = 0;
};

// Files in `folder`, where the schema file stands as well; a new one takes the place of the last
// one for the same use.
class DatabaseFiles : public Databases {
  public:
    DatabaseFiles(std::string tool, std::filesystem::path folder);
    std::string New(const std::string& use) override;
    Run RunTool(const std::vector<std::string>& command) override;

  private:
    std::string m_tool;
    std::filesystem::path m_folder;
};

// Schemas of a server, which stay; the schema file is in `folder`. `server` is the first process of
// the server, which has nothing else to do; 0 when its time does not matter.
class ServerDatabases : public Databases {
  public:
    // Loads have so many workers; without a number as many as the tool takes by itself.
    ServerDatabases(std::string tool, std::string url, std::filesystem::path folder, pid_t server,
                    std::optional<std::size_t> workers = 1);
    std::string New(const std::string& use) override;
    // Counts the time of the server's processes, too.
    Run RunTool(const std::vector<std::string>& command) override;

  private:
    std::string m_tool;
    std::string m_url;
    std::filesystem::path m_folder;
    pid_t m_server;
    std::optional<std::size_t> m_workers;
};

}  // namespace bench

#endif
