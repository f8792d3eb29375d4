#ifndef RECORDDB_SQL_OPEN_H
#define RECORDDB_SQL_OPEN_H

#include <memory>
#include <string>

#include "recorddb/sql/connection.h"

namespace recorddb::sql {

enum class OpenMode {
    ReadOnly,
    Immutable,  // reading a file that certainly nobody writes to, without its side files
    ReadWrite,  // an existing database
    CreateNew   // a database that does not exist yet
};

// True for postgresql://... and postgres://..., false for what is taken as the path of a file.
bool IsServerUrl(const std::string& location);

// Opens the database at a location: the path of an SQLite file. Throws Error: Unsupported for a
// server URL; CannotOpen when there is no such file (or, for CreateNew, already one), or it cannot
// be read completely in this mode; NotADatabase when the file is something else, or a database that
// another program has marked as its own.
//
// The database may come from anybody: its triggers do not run and its views cannot be read.
std::unique_ptr<Connection> Open(const std::string& location, OpenMode mode);

// Opens an empty database for intermediate results of any size: a file without a name among the
// system's temporary files, which goes with the connection. It takes a few MiB of memory. Nothing
// in it survives a failure, so a transaction rolled back leaves it useless.
std::unique_ptr<Connection> OpenScratch();

}  // namespace recorddb::sql

#endif
