#ifndef TOOL_LOSSES_KEY_LOSSES_H
#define TOOL_LOSSES_KEY_LOSSES_H

#include <cstdint>
#include <functional>
#include <string>
#include <utility>

#include "recorddb/schema.h"
#include "tool/packet/import_configuration.h"

namespace tool {

// Finds keys that no reference can express, and references that therefore name another record.
// References are trimmed and lists are split at commas; the keys that they are compared with are
// stored as they stand. All texts are UTF-8.
class KeyLosses {
  public:
    // What is in the database.
    struct Existing {
        // The dbid of a record of the type with exactly this value in the field; 0 for none.
        std::function<std::int64_t(const recorddb::schema::RecordType&,
                                   const recorddb::schema::Field&, const std::string&)>
            withValue;
        // Whether this text, as it stands, is the unique key of a record of the type.
        std::function<bool(const recorddb::schema::RecordType&, const std::string&)> withKey;
    };

    // `schema` stays the caller's.
    KeyLosses(const recorddb::schema::Schema& schema, Existing existing)
        : m_schema(schema), m_existing(std::move(existing)) {}

    // Why no reference can name a record of `type` by `value`, which the field `name` gives it;
    // empty when one can, or nothing refers to such records by that field.
    std::string OfKey(const std::string& name, const std::string& value,
                      const ImportConfiguration& configuration,
                      const recorddb::schema::RecordType& type) const;

    // Which other record the reference, or list of references, `value` in the field `name` could
    // mean; empty when there is none. Of a list of more than ten items only some runs are tried:
    // the whole, and short ones from its beginning on.
    std::string OfReference(const std::string& name, const std::string& value,
                            const ImportConfiguration& configuration,
                            const recorddb::schema::RecordType& type) const;

  private:
    const recorddb::schema::Schema& m_schema;
    Existing m_existing;
};

}  // namespace tool

#endif
