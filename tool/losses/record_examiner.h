#ifndef TOOL_LOSSES_RECORD_EXAMINER_H
#define TOOL_LOSSES_RECORD_EXAMINER_H

#include <optional>
#include <string>
#include <utility>

#include "recorddb/schema.h"
#include "tool/losses/key_losses.h"
#include "tool/losses/record_losses.h"
#include "tool/losses/record_readings.h"
#include "tool/packet/import_configuration.h"
#include "tool/sources/kind/source_record.h"

namespace tool {

// Finds the losses of records, one by one, under the configuration in force.
class RecordExaminer {
  public:
    // `schema` stays the caller's. `existing` looks into the database.
    RecordExaminer(const recorddb::schema::Schema& schema, KeyLosses::Existing existing)
        : m_schema(schema), m_keys(schema, std::move(existing)) {}
    RecordExaminer(const RecordExaminer&) = delete;
    RecordExaminer& operator=(const RecordExaminer&) = delete;

    void Configure(const ImportConfiguration& configuration) {
        m_configuration = configuration;
        const auto* const type = m_schema.FindType(m_configuration.RecordType());
        m_losses.reset();
        if (type != nullptr) {
            m_losses.emplace(m_configuration, *type).LookAtKeys(&m_keys);
        }
    }

    // Hands over the losses of a record of the source called `source`.
    void Examine(const SourceRecord& record, const std::string& source, const LossTaker& take) {
        if (m_losses && m_readings.Read(record).empty()) {
            m_losses->Find(record, m_readings, source, take);
        }
    }

  private:
    const recorddb::schema::Schema& m_schema;
    KeyLosses m_keys;
    ImportConfiguration m_configuration;
    std::optional<RecordLosses> m_losses;
    RecordReadings m_readings;
};

}  // namespace tool

#endif
