#ifndef TOOL_LOAD_RECORDS_EXPECTED_SEARCHES_H
#define TOOL_LOAD_RECORDS_EXPECTED_SEARCHES_H

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "recorddb/expected_search.h"
#include "recorddb/schema.h"
#include "tool/packet/import_configuration.h"
#include "tool/packet/importer_fields.h"
#include "tool/sources/kind/source_record.h"

namespace tool {

// What the import of records will search the database for, as far as their fields and the
// configuration say: the records that they change or repeat, those that they refer to, and those
// that may already have a value of theirs that must be unique.
class ExpectedSearches {
  public:
    // The schema outlives the object.
    explicit ExpectedSearches(const recorddb::schema::Schema& schema) : m_schema(schema) {}

    // Adds the searches of a record. Nothing is expected of one that cannot be read.
    void Add(const SourceRecord& record, const ImportConfiguration& configuration);

    const std::vector<recorddb::ExpectedSearch>& All() const { return m_searches; }
    void Clear() { m_searches.clear(); }

  private:
    using Type = recorddb::schema::RecordType;
    using Field = recorddb::schema::Field;

    recorddb::ExpectedSearch& Expect(const Type& type, const Field& field, std::string_view value);
    void ExpectOriginal(const ImportConfiguration& configuration, const Type& type);
    void ExpectTwins(const Type& type);
    void ExpectTargets(const ImportConfiguration& configuration, const Type& type);
    void ExpectTarget(const ImporterField& given, std::string_view value,
                      const ImportConfiguration& configuration, const Type& type);
    std::string Meant(std::string_view value) const;
    const std::string* ValueOf(const Field& field, const Type& type) const;

    const recorddb::schema::Schema& m_schema;
    ImporterFieldReader m_reader;
    ImporterFields m_fields;  // of the current record
    bool m_guarded = false;   // its values are
    std::vector<recorddb::ExpectedSearch> m_searches;
};

// The fields by which the records of a configuration are searched, whatever stands in them: the id
// of those that it adds to or marks as duplicates, and those that references are mapped to.
std::vector<std::pair<const recorddb::schema::RecordType*, const recorddb::schema::Field*>>
FieldsSearchedBy(const ImportConfiguration& configuration, const recorddb::schema::Schema& schema);

}  // namespace tool

#endif
