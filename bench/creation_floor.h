#ifndef BENCH_CREATION_FLOOR_H
#define BENCH_CREATION_FLOOR_H

#include <cstdint>
#include <filesystem>

namespace bench {

// Writes the rows that a load of `records` generated records creates into a new database made for
// the schema, by SQLite's own interface: prepared statements, one transaction, the same settings,
// indexes and foreign keys. Returns the seconds of the writing alone; the records are made before.
double WriteFloor(const std::filesystem::path& database, std::int64_t records);

}  // namespace bench

#endif
