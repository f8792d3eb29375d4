#ifndef RECORDDB_STORE_BATCH_LOOK_AHEAD_H
#define RECORDDB_STORE_BATCH_LOOK_AHEAD_H

#include <cstdint>
#include <map>
#include <set>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "recorddb/expected_search.h"
#include "recorddb/layout.h"
#include "recorddb/model/field_value.h"
#include "recorddb/schema.h"
#include "recorddb/sql.h"
#include "recorddb/store/batch/known_answers.h"

namespace recorddb {

class QuestionRound;

// Reads what the work on coming records will ask the database for, in a few questions for all of
// them. An object is used once.
class LookAhead {
  public:
    // Connection, schema and answers outlive the object.
    LookAhead(sql::Connection& connection, const schema::Schema& schema, Layout layout,
              KnownAnswers& answers)
        : m_connection(connection), m_schema(schema), m_layout(layout), m_answers(answers) {}

    // Asks for all that the searches need, and adds it to the answers. What cannot be asked ahead
    // is left out, for instance a search by a reference. Throws sql::Error, after which there are
    // no answers.
    void Read(std::span<const ExpectedSearch> searches);

  private:
    struct Wanted {
        std::vector<FieldValue> values;
        bool fields = false;
        bool listKeys = false;
        bool references = false;  // with the fields: the records that they refer to
        bool history = false;
        bool entries = false;
        bool attachments = false;
        bool original = false;
    };
    // Searches by the same fields, by the text that KeyText makes of the values.
    using Searches = std::map<std::string, Wanted>;

    void Add(const ExpectedSearch& search);
    bool FindsOnOneMachine(const schema::RecordType& type, const FieldSet& fields) const;
    void Search();
    void SearchTable(QuestionRound& round, const schema::RecordType& type, const FieldSet& fields,
                     const Searches& searches);
    void SearchKeys(QuestionRound& round, const schema::RecordType& type, const FieldSet& fields,
                    const Searches& searches);
    void ReadFound();
    void ReadTargets();
    void FollowChains();

    sql::Connection& m_connection;
    const schema::Schema& m_schema;
    Layout m_layout;
    KnownAnswers& m_answers;
    std::map<std::pair<std::int64_t, FieldSet>, Searches> m_searches;  // by type and fields
    std::set<RecordKey> m_lists;       // the records whose lists' records are asked for
    std::set<RecordKey> m_references;  // the records that refer to records that are asked for
    std::set<RecordKey> m_links;       // the duplicates whose originals are asked for
};

}  // namespace recorddb

#endif
