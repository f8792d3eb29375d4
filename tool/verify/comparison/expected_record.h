#ifndef TOOL_VERIFY_COMPARISON_EXPECTED_RECORD_H
#define TOOL_VERIFY_COMPARISON_EXPECTED_RECORD_H

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "recorddb/schema.h"
#include "tool/packet/import_configuration.h"
#include "tool/packet/source_formats.h"
#include "tool/verify/records/kept_record.h"
#include "tool/verify/records/reference_resolver.h"

namespace tool {

// What the sources say about one value of a record.
struct ExpectedValue {
    SourcePlace place;
    std::string text;    // as the source writes it
    std::string stored;  // as the database would store it; empty: no value
};

// What the sources say about a reference or reference list.
struct ExpectedTargets {
    SourcePlace place;
    std::vector<ExpectedTarget> targets;  // without repetitions
    bool exact = false;                   // these and no others; else these among others
    bool ordered = false;                 // in this order, as far as they are exact
    int creation = 0;
};

struct ExpectedEntry {
    SourcePlace place;
    HistoryLine line;  // its time as the database would store it
};

struct ExpectedAttachment {
    SourcePlace place;
    AttachmentLines lines;
    std::string baseName;  // what the database calls it
};

struct ExpectedAttachments {
    std::vector<ExpectedAttachment> list;  // in the order of arrival
    int creation = 0;
};

// What becomes of one record of the database when the records of sources that speak of it are
// imported one after the other, worked out without the importer.
//
// A record that is created again, as when what was rejected is loaded once more after it was
// mended, has its values replaced; its lists, history and attachments begin anew as soon as the
// sources speak of them again.
class ExpectedRecord {
  public:
    // Type and resolver outlive the object. `exact`: nothing is in the record that the sources do
    // not say, whether they create it or not.
    ExpectedRecord(const recorddb::schema::RecordType& type, ReferenceResolver& resolver,
                   bool exact);

    // Takes in what `record`, the next in the order of the sources, says under `configuration`.
    // Throws sql::Error.
    void Add(const KeptRecord& record, const ImportConfiguration& configuration);

    const recorddb::schema::RecordType& Type() const { return m_type; }
    const std::string& SourceId() const { return m_sourceId; }

    // True when the sources say all there is about the record: they create it, or are meant to.
    bool IsWhole() const { return m_creates || m_exact; }

    // Where the sources first speak of it.
    const SourcePlace& FirstPlace() const { return m_firstPlace; }

    // By the field's index; null where the sources say nothing. The state is among the values.
    const ExpectedValue* Value(std::size_t field) const;
    const ExpectedTargets* Targets(std::size_t field) const;

    // By time, those of one time in the order of arrival.
    std::vector<const ExpectedEntry*> History() const;

    const std::vector<ExpectedAttachment>& Attachments(std::size_t field) const;

    // The record that it is a duplicate of.
    const std::optional<ExpectedTarget>& Original() const { return m_original; }
    const SourcePlace& OriginalPlace() const { return m_originalPlace; }

    // Values for fields that the type does not have, under their names.
    const std::map<std::string, ExpectedValue>& UnknownFields() const { return m_unknown; }

  private:
    void AddField(const SourcePlace& place, const KeptField& given,
                  const ImportConfiguration& configuration);
    void AddPlain(const SourcePlace& place, const recorddb::schema::Field& field,
                  const KeptField& given);
    void AddReference(const SourcePlace& place, const recorddb::schema::Field& field,
                      const KeptField& given, const ImportConfiguration& configuration);
    void AddList(const SourcePlace& place, const recorddb::schema::Field& field,
                 const KeptField& given, const ImportConfiguration& configuration);
    void AddHistory(const SourcePlace& place, std::vector<HistoryLine> lines);
    void AddAttachments(const SourcePlace& place, const recorddb::schema::Field& field,
                        std::vector<AttachmentLines> added);
    void AddOriginal(const SourcePlace& place, const std::string& value,
                     const ImportConfiguration& configuration);

    const recorddb::schema::RecordType& m_type;
    ReferenceResolver& m_resolver;
    std::string m_sourceId;
    SourcePlace m_firstPlace;
    bool m_empty = true;
    bool m_exact;
    bool m_creates = false;  // the first of them creates it
    int m_creation = 0;      // how often the sources create it
    std::vector<std::optional<ExpectedValue>> m_values;
    std::vector<std::optional<ExpectedTargets>> m_targets;
    std::vector<ExpectedEntry> m_history;
    int m_historyCreation = 0;
    std::vector<ExpectedAttachments> m_attachments;
    std::optional<ExpectedTarget> m_original;
    SourcePlace m_originalPlace;
    std::map<std::string, ExpectedValue> m_unknown;
};

}  // namespace tool

#endif
