#ifndef TESTS_TOOL_LOSSES_FINDING_H
#define TESTS_TOOL_LOSSES_FINDING_H

#include <string>
#include <string_view>
#include <vector>

#include "recorddb/schema.h"
#include "tool/losses/loss.h"
#include "tool/packet/import_configuration.h"

// The words in which the tests of losses speak: texts of packets go in, losses come out.
namespace finding {

// Record types of users, parts (whose key has two fields) and bugs.
const recorddb::schema::Schema& TrackerSchema();

// A configuration for bugs, which are known by source_id.
tool::ImportConfiguration Configuration(std::string_view data, std::string_view more = "");

// A record of fields, one a line; the first stands on the second line of the record.
std::string Record(std::string_view fields);

// The losses of the one record in `text`.
std::vector<tool::Loss> LossesIn(std::string_view text, const tool::ImportConfiguration& in);

// The same as "kind, line, source id, field: text", one a line.
std::string Losses(std::string_view text, const tool::ImportConfiguration& in);

// Those of a record of `fields` in a record packet that creates.
std::string LossesOfFields(std::string_view fields);

// Those of the configuration packet that Configuration(`data`, `more`) is made from.
std::string ConfigurationLosses(std::string_view data, std::string_view more);

}  // namespace finding

#endif
