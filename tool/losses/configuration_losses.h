#ifndef TOOL_LOSSES_CONFIGURATION_LOSSES_H
#define TOOL_LOSSES_CONFIGURATION_LOSSES_H

#include <string>

#include "recorddb/schema/schema.h"
#include "tool/import_configuration.h"
#include "tool/losses/record_losses.h"

namespace tool {

// Hands over what is without effect in a configuration packet, the one called SOURCE, for records
// of the type that CONFIGURATION, in which it has been applied, names: an import_data that asks for
// nothing, and mappings that no import makes use of. SCHEMA has that type.
void FindConfigurationLosses(const std::string& packet, const std::string& source,
                             const ImportConfiguration& configuration,
                             const recorddb::schema::Schema& schema, const LossTaker& take);

}  // namespace tool

#endif
