#ifndef RECORDDB_EDITING_DEFINITIONS_H
#define RECORDDB_EDITING_DEFINITIONS_H

#include <cstdint>
#include <deque>

#include "recorddb/editing/entity_def.h"
#include "recorddb/schema.h"

namespace recorddb {

// The definitions of all record types of a schema.
class Definitions {
  public:
    // The schema outlives the definitions.
    explicit Definitions(const schema::Schema& schema);
    Definitions(const Definitions&) = delete;
    Definitions& operator=(const Definitions&) = delete;

    // The definition of the record type of that name, without regard to case. Throws a
    // PaMsgException* when there is none.
    EntityDef& Find(const Obx_String& name);

    // The definition that a caller handed back. Throws a PaMsgException* (bad value) when it is
    // null or not one of these.
    EntityDef& Own(const AdEntityDef* definition);

    // The definition of the record type with that id; null when there is none.
    EntityDef* WithId(std::int64_t id);

  private:
    const schema::Schema& m_schema;
    std::deque<EntityDef> m_types;  // handed out by address
};

}  // namespace recorddb

#endif
