#ifndef RECORDDB_EDITING_VALUE_RULES_H
#define RECORDDB_EDITING_VALUE_RULES_H

#include <cstdint>
#include <string_view>

#include "platform/messages/pamessage.h"
#include "recorddb/editing/reference_keys.h"
#include "recorddb/model/field_value.h"
#include "recorddb/schema.h"

namespace recorddb {

// The rules that a value can be judged by alone, without the rest of its record: is it text, a
// number, a date, not too long, one of the choices or states, the key of a record.
class ValueRules {
  public:
    // Schema and keys outlive the object.
    ValueRules(const schema::Schema& schema, ReferenceKeys& keys)
        : m_schema(schema), m_keys(keys) {}

    // Reads the text given for a field that has a column. The empty text is no value. Returns a
    // message with id 0 and the value, or the message that refuses it. Throws sql::Error.
    PaMessage Read(const schema::RecordType& type, const schema::Field& field,
                   std::u16string_view text, FieldValue& value);

    // Reads the text given for one item of a reference list, in the same manner. The empty text is
    // refused.
    PaMessage ReadItem(const schema::RecordType& type, const schema::Field& field,
                       std::u16string_view text, std::int64_t& target);

  private:
    PaMessage FindTarget(const schema::RecordType& type, const schema::Field& field,
                         const std::string& key, std::int64_t& target);

    const schema::Schema& m_schema;
    ReferenceKeys& m_keys;
};

}  // namespace recorddb

#endif
