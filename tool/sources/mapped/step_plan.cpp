#include "tool/sources/mapped/step_plan.h"

#include <fmt/format.h>

#include <algorithm>

#include "tool/map/map_check.h"
#include "tool/packet/packet_head.h"
#include "tool/packet/xml_text.h"

namespace tool {

namespace {

namespace schema = recorddb::schema;

class Planner {
  public:
    Planner(const MapFile& map, const schema::Schema& schema) : m_map(map), m_schema(schema) {}

    MapPlan Plan() {
        for (const MapStep& step : m_map.steps) {
            AddStep(step);
        }
        for (StepPlan& plan : m_plan.steps) {
            NoteKnown(plan);
        }
        return std::move(m_plan);
    }

  private:
    void AddStep(const MapStep& step) {
        const MapSource& source = m_map.sources[step.source];
        StepPlan plan;
        plan.step = &step;
        plan.type = m_schema.FindType(step.type);
        plan.nullIf = source.nullIf ? &*source.nullIf : &m_map.nullIf;
        plan.name = NameOf(step, source);
        for (const MapField& field : step.fields) {
            plan.fields.push_back(PlanField(plan, field, source));
        }
        m_plan.steps.push_back(std::move(plan));
    }

    // The name stays the same when other steps are added, so that a load which was interrupted
    // knows the step again.
    std::string NameOf(const MapStep& step, const MapSource& source) const {
        const std::string name = fmt::format("{}, {}: {} from {}", m_map.name,
                                             StepKindName(step.kind), step.type, source.name);
        std::string unique = name;
        for (int number = 2; IsTaken(unique); ++number) {
            unique = fmt::format("{} ({})", name, number);
        }
        return unique;
    }

    bool IsTaken(const std::string& name) const {
        return std::any_of(m_plan.steps.begin(), m_plan.steps.end(),
                           [&](const StepPlan& plan) { return plan.name == name; });
    }

    StepField PlanField(const StepPlan& plan, const MapField& field, const MapSource& source) {
        StepField planned;
        planned.plan.field = &field;
        planned.plan.subject = fmt::format("{}: {}, field {}", StepKindName(plan.step->kind),
                                           plan.type->name, field.name);
        planned.plan.nullIf = field.value.nullIf ? &*field.value.nullIf : plan.nullIf;
        const bool isTypes = plan.step->kind == StepKind::Records || field.name == plan.step->key;
        const schema::Field* const found = isTypes ? plan.type->FindField(field.name) : nullptr;
        planned.kind = found != nullptr ? found->kind : schema::FieldKind::Text;
        planned.plan.isList = planned.kind == schema::FieldKind::ReferenceList;
        planned.plan.isTime = planned.kind == schema::FieldKind::DateTime ||
                              (plan.step->kind == StepKind::History && field.name == "when");
        if (planned.plan.isTime) {
            planned.plan.zone =
                Zone(field.value.zone ? *field.value.zone : source.zone.value_or(m_map.zone));
        }
        if (field.value.knownOnly) {
            planned.knownOnly = KnownOnly(plan, field, found);
        }
        return planned;
    }

    std::shared_ptr<const LocalZone> Zone(const std::string& name) {
        auto& zone = m_zones[name];
        if (zone == nullptr) {
            zone = std::make_shared<LocalZone>(name);
        }
        return zone;
    }

    std::size_t KnownOnly(const StepPlan& plan, const MapField& field, const schema::Field* found) {
        const bool refers = found != nullptr && (found->kind == schema::FieldKind::Reference ||
                                                 found->kind == schema::FieldKind::ReferenceList);
        KnownField known{plan.type, plan.type->FindField(plan.step->key)};
        if (refers) {
            known = {&m_schema.Type(found->target), LookUpField(field.value, *found, m_schema)};
        }
        const auto there =
            std::find_if(m_plan.known.begin(), m_plan.known.end(),
                         [&](const KnownField& other) { return other.field == known.field; });
        if (there != m_plan.known.end()) {
            return static_cast<std::size_t>(there - m_plan.known.begin());
        }
        m_plan.known.push_back(known);
        return m_plan.known.size() - 1;
    }

    void NoteKnown(StepPlan& plan) const {
        if (plan.step->kind != StepKind::Records || plan.step->mode == StepMode::Update) {
            return;
        }
        for (StepField& field : plan.fields) {
            const schema::Field* const own = plan.type->FindField(field.plan.field->name);
            for (std::size_t known = 0; known < m_plan.known.size(); ++known) {
                if (m_plan.known[known].field == own) {
                    field.isKnown = known;
                }
            }
        }
    }

    const MapFile& m_map;
    const schema::Schema& m_schema;
    MapPlan m_plan;
    std::map<std::string, std::shared_ptr<const LocalZone>> m_zones;
};

std::string ItemElement(std::string_view element, std::string_view value) {
    return fmt::format("  <{} name=\"{}\"/>\n", element, EscapedAttribute(value));
}

std::string Mappings(const StepPlan& plan, const schema::Schema& schema) {
    std::string text;
    for (const StepField& field : plan.fields) {
        const bool refers = field.kind == schema::FieldKind::Reference ||
                            field.kind == schema::FieldKind::ReferenceList;
        const schema::Field* const own =
            refers ? plan.type->FindField(field.plan.field->name) : nullptr;
        const schema::Field* const target =
            refers ? LookUpField(field.plan.field->value, *own, schema) : nullptr;
        if (refers) {
            text += fmt::format("    <mapping target_field=\"{}\" reference_field=\"{}\"/>\n",
                                EscapedAttribute(field.plan.field->name),
                                target == nullptr ? "" : EscapedAttribute(target->name));
        }
    }
    return text;
}

}  // namespace

const StepField* StepPlan::FindField(std::string_view fieldName) const {
    const auto found = std::find_if(fields.begin(), fields.end(), [&](const StepField& field) {
        return field.plan.field->name == fieldName;
    });
    return found == fields.end() ? nullptr : &*found;
}

bool StepPlan::HasKnownOnly() const {
    return std::any_of(fields.begin(), fields.end(),
                       [](const StepField& field) { return field.knownOnly.has_value(); });
}

MapPlan PlanMap(const MapFile& map, const schema::Schema& schema) {
    return Planner(map, schema).Plan();
}

// Mappings of earlier configurations stay in force, so each reference gets its own.
std::string ConfigurationPacket(const StepPlan& plan, const schema::Schema& schema) {
    const MapStep& step = *plan.step;
    const bool isRecord = step.kind == StepKind::Records || step.kind == StepKind::Duplicates;
    const bool updates = step.kind == StepKind::Duplicates || step.mode != StepMode::Create;
    std::string packet(kPacketDeclaration);
    packet += "\n<configuration>\n";
    packet += ItemElement("import_data", isRecord                         ? "record"
                                         : step.kind == StepKind::History ? "history"
                                                                          : "attachments");
    packet += ItemElement("original_id", step.key);
    packet += ItemElement("duplicate_id", step.kind == StepKind::Duplicates ? kDuplicateField : "");
    packet += ItemElement("record_type", plan.type->name);
    packet += ItemElement("updateinsert", step.mode == StepMode::UpdateOrCreate ? "TRUE" : "FALSE");
    packet +=
        ItemElement("replacereflist", step.kind == StepKind::Records && updates ? "TRUE" : "FALSE");
    packet += ItemElement("updaterecord", isRecord && updates ? "TRUE" : "FALSE");
    const bool setsState = step.kind == StepKind::Records && plan.type->HasStates() &&
                           plan.FindField(schema::kStateName) != nullptr;
    packet += ItemElement("importstate", setsState ? "TRUE" : "FALSE");
    const std::string mappings =
        step.kind == StepKind::Records ? Mappings(plan, schema) : std::string();
    if (!mappings.empty()) {
        packet += "  <record_reference_mapping_list>\n" + mappings +
                  "  </record_reference_mapping_list>\n";
    }
    return packet + "</configuration>\n";
}

}  // namespace tool
