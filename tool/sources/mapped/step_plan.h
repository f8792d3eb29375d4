#ifndef TOOL_SOURCES_MAPPED_STEP_PLAN_H
#define TOOL_SOURCES_MAPPED_STEP_PLAN_H

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "recorddb/schema.h"
#include "tool/map/map_file.h"
#include "tool/sources/mapped/value_maker.h"

namespace tool {

// A field of records that the sources have, by which references are looked up.
struct KnownField {
    const recorddb::schema::RecordType* type = nullptr;
    const recorddb::schema::Field* field = nullptr;
};

// A field of a step, and what else there is to know of it.
struct StepField {
    FieldPlan plan;
    recorddb::schema::FieldKind kind = recorddb::schema::FieldKind::Text;
    // Positions in MapPlan::known: of the field among whose values its own must be, and of the one
    // to whose values its own are added.
    std::optional<std::size_t> knownOnly;
    std::optional<std::size_t> isKnown;
};

// A step of a map, put together with the record type that it makes records of.
struct StepPlan {
    const MapStep* step = nullptr;
    const recorddb::schema::RecordType* type = nullptr;
    std::string name;  // "map.yaml, records: bug from bugs"
    std::vector<StepField> fields;
    const std::vector<std::string>* nullIf = nullptr;

    const StepField* FindField(std::string_view name) const;
    // Whether records wait until all sources have been read.
    bool HasKnownOnly() const;
};

// All steps of a map.
struct MapPlan {
    std::vector<StepPlan> steps;
    std::vector<KnownField> known;
};

// Puts a map, which has been checked, together with a schema. Both outlive the plan.
MapPlan PlanMap(const MapFile& map, const recorddb::schema::Schema& schema);

// The configuration packet of a step.
std::string ConfigurationPacket(const StepPlan& plan, const recorddb::schema::Schema& schema);

}  // namespace tool

#endif
