#include "tool/sources/source_checks.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <vector>

#include "tool/io/source_error.h"
#include "tool/process/usage_error.h"

namespace tool {

void RequireFolder(const std::filesystem::path& attachments) {
    std::error_code ignored;
    if (!attachments.empty() && !std::filesystem::is_directory(attachments, ignored)) {
        throw UsageError("the attachments folder " + attachments.string() +
                         " does not exist; name the folder that the file names in the packets "
                         "start from");
    }
}

std::string NamesOfTypes(const recorddb::schema::Schema& schema) {
    std::vector<std::string> names;
    for (const auto& type : schema.Types()) {
        names.push_back(type.name);
    }
    return fmt::format("{}", fmt::join(names, ", "));
}

const recorddb::schema::RecordType& RequireType(const recorddb::schema::Schema& schema,
                                                const ImportConfiguration& configuration,
                                                const std::string& name) {
    const auto* const type = schema.FindType(configuration.RecordType());
    if (type == nullptr) {
        throw SourceError(
            fmt::format("{}: the database has no record type \"{}\". Its record "
                        "types are: {}.",
                        name, configuration.RecordType(), NamesOfTypes(schema)));
    }
    return *type;
}

void RequireConfiguration(const ImportConfiguration& configuration, const std::string& name) {
    if (!configuration.Received()) {
        throw SourceError(name +
                          ": no configuration packet comes before these records; "
                          "name it before them on the command line");
    }
}

void RequireAttachments(const std::filesystem::path& attachments, const std::string& name) {
    if (attachments.empty()) {
        throw SourceError(name +
                          ": attachments are imported only from a folder that "
                          "--attachments names");
    }
}

}  // namespace tool
