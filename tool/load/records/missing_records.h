#ifndef TOOL_LOAD_RECORDS_MISSING_RECORDS_H
#define TOOL_LOAD_RECORDS_MISSING_RECORDS_H

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "recorddb/database.h"
#include "recorddb/reader.h"
#include "tool/packet/import_configuration.h"
#include "tool/packet/importer_fields.h"
#include "tool/sources/kind/source_record.h"

namespace tool {

// A record that another one needs.
struct WantedRecord {
    const recorddb::schema::RecordType* type = nullptr;
    // That it is searched by, and its name as the configuration writes it; null: its unique key.
    const recorddb::schema::Field* field = nullptr;
    std::string fieldName;
    std::string value;
    std::string role;  // why the other one needs it, for people

    // A text for type, field and value: the same for the same record.
    std::string Key() const;
};

// Whether the import of a record under `configuration` may create one.
bool MayCreate(const ImportConfiguration& configuration);

// The same text for a value that records of a type can be found by; null: by their unique key.
std::string KeyOfValue(const recorddb::schema::RecordType& type,
                       const recorddb::schema::Field* field, std::string_view value);

// Finds out which other records a refused record waits for: those that it refers to, is a
// duplicate of, or adds history or attachments to, and that are not in the database.
class MissingRecords {
  public:
    // The database outlives the object.
    explicit MissingRecords(recorddb::Database& database);

    // What `record` needs under `configuration` and is not there. Throws sql::Error.
    std::vector<WantedRecord> Find(const SourceRecord& record,
                                   const ImportConfiguration& configuration);

    // The same as sentences for people, such as "It waits for the user \"ann\" (field owner), which
    // was rejected too: users.xml, record 3."; empty when nothing is missing.
    std::string Describe(const std::vector<WantedRecord>& missing) const;

    // Remembers a rejected record, so that those that wait for it can say where it stands. `place`
    // is for people. Only the first hundred thousand are remembered.
    void NoteRejected(const ImportConfiguration& configuration, const std::string& sourceId,
                      const std::string& place);

    // Forgets the records that were noted since Keep: their rejection has been undone.
    void Undo();
    void Keep() { m_latest.clear(); }

  private:
    using Wanted = WantedRecord;

    std::vector<Wanted> WantedBy(const SourceRecord& record,
                                 const ImportConfiguration& configuration,
                                 const recorddb::schema::RecordType& type);
    void AddReferences(const ImporterField& given, const ImportConfiguration& configuration,
                       const recorddb::schema::RecordType& type, std::vector<Wanted>& wanted) const;
    bool IsThere(const Wanted& wanted);

    recorddb::Database& m_database;
    recorddb::RecordReader m_reader;
    ImporterFieldReader m_fieldReader;
    ImporterFields m_fields;  // of the record that is looked at
    // By record type and original id.
    using RecordId = std::pair<std::int64_t, std::string>;
    std::map<RecordId, std::string> m_rejected;
    std::vector<RecordId> m_latest;  // since Keep
};

}  // namespace tool

#endif
