#ifndef TOOL_LOSSES_CONFIGURATION_LOSSES_H
#define TOOL_LOSSES_CONFIGURATION_LOSSES_H

#include <cstdint>
#include <optional>
#include <string>

#include "recorddb/schema.h"
#include "tool/losses/record_losses.h"
#include "tool/packet/import_configuration.h"

namespace tool {

// Hands over what is without effect in a configuration packet, the one called `source`, for records
// of the type that `configuration`, in which it has been applied, names: an import_data that asks
// for nothing, and mappings that no import makes use of. `schema` has that type.
void FindConfigurationLosses(const std::string& packet, const std::string& source,
                             const ImportConfiguration& configuration,
                             const recorddb::schema::Schema& schema, const LossTaker& take);

// Only the loss that outweighs all the others: of what follows a configuration whose import_data,
// on `line` of its packet, asks for nothing. `line` may be 0.
std::optional<Loss> FindNothingImported(const std::string& source, std::uint64_t line,
                                        const ImportConfiguration& configuration);

}  // namespace tool

#endif
