#ifndef TOOL_COMMANDS_DATABASE_FAILURE_H
#define TOOL_COMMANDS_DATABASE_FAILURE_H

#include <string>

#include "recorddb/errors.h"

namespace tool {

// Why the database failed and what to do about it, for people.
std::string ExplainFailure(const recorddb::sql::Error& error);

}  // namespace tool

#endif
