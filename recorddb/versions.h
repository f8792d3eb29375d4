#ifndef RECORDDB_VERSIONS_H
#define RECORDDB_VERSIONS_H

#include <cstdint>
#include <string>

#include "recorddb/export.h"

namespace recorddb {

// What a person is asked for who reports a problem.
struct Versions {
    std::int64_t format = 0;        // of the databases that are made
    std::int64_t oldestFormat = 0;  // that can be used as well
    std::string sqlite;             // of the libraries that are loaded
    std::string libpq;
};

RECORDDB_API Versions GetVersions();

}  // namespace recorddb

#endif
