#ifndef TOOL_LOSSES_RECORD_LOSSES_H
#define TOOL_LOSSES_RECORD_LOSSES_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "recorddb/schema.h"
#include "tool/losses/key_losses.h"
#include "tool/losses/loss.h"
#include "tool/losses/record_readings.h"
#include "tool/packet/field_use.h"
#include "tool/packet/import_configuration.h"
#include "tool/sources/kind/source_record.h"

namespace tool {

using LossTaker = std::function<void(Loss)>;

// Finds what an import under one configuration drops or changes of a record without an error.
//
// A record is read twice, as any XML reader would and with the importer's own parser: what stands
// in the first reading and not in the second is lost, unless it is an empty value. Apart from keys,
// nothing is known here of the database, so what is found holds for a record that is imported; one
// that is rejected is lost as a whole, and its rejection is reported.
class RecordLosses {
  public:
    // Both stay the caller's.
    RecordLosses(const ImportConfiguration& configuration, const recorddb::schema::RecordType& type)
        : m_configuration(configuration), m_type(type) {}

    // Has keys and references looked at, too. `keys`, which may be null, stays the caller's.
    void LookAtKeys(const KeyLosses* keys) { m_keys = keys; }

    // Hands over the losses of `record`, which comes from the source called `source` and was read
    // as `readings` say. A record that the importer cannot read has none.
    void Find(const SourceRecord& record, const RecordReadings& readings, const std::string& source,
              const LossTaker& take);

  private:
    void FindStructure();
    void FindUnread(const RecordPart& part);
    void FindOverwritten();
    void FindOtherSpellings();
    void FindInField(std::size_t field);
    void FindChangedText(std::size_t field);
    void FindInValue(std::size_t field, FieldUse use);
    std::size_t FindInHistory(std::size_t field);
    void FindInAttachments(std::size_t field);
    void FindInKeys(std::size_t field, FieldUse use);

    bool AddsToOthers(FieldUse use) const;
    std::string WhatIsUsed() const;
    std::uint64_t LineAt(const RecordPart& part) const { return LineAt(part.offset); }
    std::uint64_t LineAt(std::size_t offset) const;
    void Add(LossKind kind, const RecordPart& part, const std::string& field,
             std::string text) const;

    const ImportConfiguration& m_configuration;
    const recorddb::schema::RecordType& m_type;
    const KeyLosses* m_keys = nullptr;

    // The current record.
    const SourceRecord* m_record = nullptr;
    const RecordReadings* m_readings = nullptr;
    const std::string* m_source = nullptr;
    const LossTaker* m_take = nullptr;
    std::size_t m_historyEntries = 0;
    bool m_historySeen = false;
};

}  // namespace tool

#endif
