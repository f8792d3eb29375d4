#ifndef TOOL_SOURCES_SOURCE_CHECKS_H
#define TOOL_SOURCES_SOURCE_CHECKS_H

#include <filesystem>
#include <string>

#include "recorddb/schema.h"
#include "tool/packet/import_configuration.h"

namespace tool {

// What must be right before the records of a source are looked at, whatever is done with them.

// Throws UsageError when the attachments folder, as the command line names it, does not exist; an
// empty path is none.
void RequireFolder(const std::filesystem::path& attachments);

// The record type of the configuration that the source called `name` is. Throws SourceError when
// the database does not have it.
const recorddb::schema::RecordType& RequireType(const recorddb::schema::Schema& schema,
                                                const ImportConfiguration& configuration,
                                                const std::string& name);

// The names of all record types, for people.
std::string NamesOfTypes(const recorddb::schema::Schema& schema);

// Throw SourceError when the data of the source called `name` cannot be used: because no
// configuration came before them, because they are attachments and there is no folder for them.
void RequireConfiguration(const ImportConfiguration& configuration, const std::string& name);
void RequireAttachments(const std::filesystem::path& attachments, const std::string& name);

}  // namespace tool

#endif
