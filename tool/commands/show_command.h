#ifndef TOOL_COMMANDS_SHOW_COMMAND_H
#define TOOL_COMMANDS_SHOW_COMMAND_H

#include <ostream>
#include <string>

namespace tool {

// What `ztimport show` was asked to show; empty texts stand for what was not named.
struct ShowOptions {
    std::string database;
    std::string type;
    std::string id;
    bool immutable = false;  // nobody writes to the database, and nothing is written beside it
};

// Shows the record types with their numbers of records, the records of a type, or one record with
// its fields, history, attachments and duplicate marks. Throws what main turns into an error.
void RunShow(const ShowOptions& options, std::ostream& out);

}  // namespace tool

#endif
