#ifndef BENCH_CREATION_FLOOR_H
#define BENCH_CREATION_FLOOR_H

#include <cstdint>
#include <filesystem>

#include "run.h"

namespace bench {

// Writes the rows that a load of `records` generated records creates into a new database made for
// the schema, by SQLite's own interface: prepared statements, one transaction, the same settings,
// indexes and foreign keys. Returns what the writing alone takes; the records are made before.
Run WriteFloor(const std::filesystem::path& database, std::int64_t records);

}  // namespace bench

#endif
