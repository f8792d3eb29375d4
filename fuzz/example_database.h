#ifndef FUZZ_EXAMPLE_DATABASE_H
#define FUZZ_EXAMPLE_DATABASE_H

#include <memory>
#include <string>
#include <string_view>

#include "recorddb/database.h"
#include "recorddb/session.h"
#include "temporary_folder.h"

namespace fuzz {

// A record database that holds the example tracker, and a session with it. Work on it is done in a
// transaction that is rolled back, so every input finds the same records and nothing waits for the
// disk.
class ExampleDatabase {
  public:
    // The process's only one, made when it is first asked for.
    static ExampleDatabase& Instance();

    ExampleDatabase(const ExampleDatabase&) = delete;
    ExampleDatabase& operator=(const ExampleDatabase&) = delete;

    AdPtr<recorddb::Session> Session() { return m_session; }

    // All that the tables of records, history, attachments and duplicates hold.
    std::string Contents();

    bool HasKeyword(std::string_view name);

  private:
    ExampleDatabase();
    void ImportExample();

    TemporaryFolder m_folder;
    std::unique_ptr<recorddb::Database> m_database;
    AdPtr<recorddb::Session> m_session;
};

}  // namespace fuzz

#endif
