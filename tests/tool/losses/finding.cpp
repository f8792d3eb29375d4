#include "finding.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "reading.h"
#include "recorddb/schema.h"
#include "tool/losses/configuration_losses.h"
#include "tool/losses/record_losses.h"

namespace finding {

namespace {

constexpr const char* kSchemaText = R"(record_types:
  user:
    key: [login]
    fields:
      login: {type: text, required: true}
      email: {type: text}
  part:
    key: [name, kind]
    fields:
      name: {type: text, required: true}
      kind: {type: text, required: true}
  bug:
    prefix: BUG
    states: [NEW, OPEN]
    fields:
      source_id: {type: text, unique: true}
      title: {type: text}
      description: {type: multiline}
      votes: {type: integer}
      owner: {type: reference, to: user}
      part: {type: reference, to: part}
      watchers: {type: reference_list, to: user}
      files: {type: attachments}
      more_files: {type: attachments}
      log: {type: history}
      older_log: {type: history}
)";

constexpr const char* kPacketStart = R"(<?xml version="1.0" encoding="UTF-8"?>)";

std::string ConfigurationPacket(std::string_view data, std::string_view more) {
    return fmt::format(
        "{}\n<configuration>\n<import_data name=\"{}\"/>\n<record_type name=\"bug\"/>\n"
        "<original_id name=\"source_id\"/>\n{}\n</configuration>\n",
        kPacketStart, data, more);
}

std::string Show(const tool::Loss& loss) {
    return fmt::format("{}, {}, {}, {}: {}", tool::LossKindName(loss.kind), loss.line,
                       loss.sourceId, loss.field, loss.text);
}

std::string Show(const std::vector<tool::Loss>& losses) {
    std::string text;
    for (const tool::Loss& loss : losses) {
        text += (text.empty() ? "" : "\n") + Show(loss);
    }
    return text;
}

}  // namespace

const recorddb::schema::Schema& TrackerSchema() {
    static const recorddb::schema::Schema kSchema =
        recorddb::schema::ReadSchema(kSchemaText, "schema.yaml");
    return kSchema;
}

tool::ImportConfiguration Configuration(std::string_view data, std::string_view more) {
    tool::ImportConfiguration configuration;
    configuration.Apply(ConfigurationPacket(data, more), "configuration.xml");
    return configuration;
}

std::string Record(std::string_view fields) {
    return fmt::format("<record>\n{}</record>", fields);
}

std::vector<tool::Loss> LossesIn(std::string_view text, const tool::ImportConfiguration& in) {
    tool::RecordLosses finder(in, *TrackerSchema().FindType("bug"));
    tool::PacketReader reader = reading::ReaderOf(text);
    tool::SourceRecord record;
    tool::RecordReadings readings;
    std::vector<tool::Loss> losses;
    EXPECT_TRUE(reader.NextRecord(record)) << text;
    // A second time, since what is kept from record to record must make no difference.
    for (int round = 0; round < 2; ++round) {
        losses.clear();
        if (readings.Read(record).empty()) {
            finder.Find(record, readings, "bugs.xml",
                        [&](tool::Loss loss) { losses.push_back(std::move(loss)); });
        }
    }
    EXPECT_FALSE(reader.NextRecord(record)) << text;
    return losses;
}

std::string Losses(std::string_view text, const tool::ImportConfiguration& in) {
    return Show(LossesIn(text, in));
}

std::string LossesOfFields(std::string_view fields) {
    return Losses(Record(fields), Configuration("record"));
}

std::string ConfigurationLosses(std::string_view data, std::string_view more) {
    std::vector<tool::Loss> losses;
    tool::FindConfigurationLosses(ConfigurationPacket(data, more), "configuration.xml",
                                  Configuration(data, more), TrackerSchema(),
                                  [&](tool::Loss loss) { losses.push_back(std::move(loss)); });
    return Show(losses);
}

}  // namespace finding
