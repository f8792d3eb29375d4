#ifndef TOOL_COMMANDS_INIT_COMMAND_H
#define TOOL_COMMANDS_INIT_COMMAND_H

#include <ostream>
#include <string>

#include "recorddb/layout.h"

namespace tool {

// Creates the record database of a schema file and says what it holds. Throws what main turns into
// an error.
void RunInit(const std::string& database, const std::string& schemaFile, recorddb::Layout layout,
             std::ostream& out);

}  // namespace tool

#endif
