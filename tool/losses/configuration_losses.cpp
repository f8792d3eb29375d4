#include "tool/losses/configuration_losses.h"

#include <expat.h>
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <string_view>
#include <vector>

#include "tool/packet/expat_parser.h"
#include "tool/packet/packet_head.h"

namespace tool {

namespace {

namespace schema = recorddb::schema;

constexpr std::string_view kRecordList = "record_reference_mapping_list";
constexpr std::array<std::string_view, 3> kLists = {kRecordList, "history_reference_mapping_list",
                                                    "attachment_reference_mapping_list"};

// An element in a mapping list.
struct Mapping {
    std::string_view list;
    std::string target;
    std::string reference;
    std::uint64_t line = 0;
};

std::string Attribute(const char** attributes, std::string_view name) {
    for (const char** pair = attributes; *pair != nullptr; pair += 2) {
        if (pair[0] == name) {
            return pair[1];
        }
    }
    return {};
}

// Finds the lines of items that the importer's parser reports without a place.
class ConfigurationElements {
  public:
    // `packet` begins with kPacketDeclaration. It is read as the importer does, as a fragment: it
    // may have several roots.
    explicit ConfigurationElements(std::string_view packet) {
        XML_SetUserData(m_parser.Get(), this);
        XML_SetElementHandler(m_parser.Get(), OnStart, OnEnd);
        m_parser.Parse("<fragment>", false);
        m_parser.Parse(packet.substr(kPacketDeclaration.size()), false);
    }

    const std::vector<Mapping>& Mappings() const { return m_mappings; }
    std::uint64_t ImportDataLine() const { return m_importDataLine; }

  private:
    static void OnStart(void* elements, const char* name, const char** attributes) {
        auto& self = *static_cast<ConfigurationElements*>(elements);
        self.m_parser.Guard([&] { self.Open(name, attributes); });
    }

    static void OnEnd(void* elements, const char* /*name*/) {
        auto& self = *static_cast<ConfigurationElements*>(elements);
        if (--self.m_depth < self.m_listDepth) {
            self.m_listDepth = 0;
        }
    }

    void Open(std::string_view name, const char** attributes) {
        ++m_depth;
        if (m_listDepth > 0) {
            m_mappings.push_back({m_list, Attribute(attributes, "target_field"),
                                  Attribute(attributes, "reference_field"), m_parser.Line()});
        } else if (const auto* list = std::find(kLists.begin(), kLists.end(), name);
                   list != kLists.end()) {
            m_list = *list;
            m_listDepth = m_depth;
        } else if (name == "import_data" && m_importDataLine == 0) {
            m_importDataLine = m_parser.Line();
        }
    }

    ExpatParser m_parser;
    std::vector<Mapping> m_mappings;
    std::string_view m_list;
    std::size_t m_depth = 0;
    std::size_t m_listDepth = 0;  // 0 outside of a list
    std::uint64_t m_importDataLine = 0;
};

// The importer cannot look up a key that is made of several fields.
bool HasPlainKey(const schema::RecordType& type) {
    return type.HasStates() || type.key.size() == 1;
}

// Why a mapping of record fields is never used; empty when it is.
std::string WhyUnused(const Mapping& mapping, const ImportConfiguration& configuration,
                      const schema::RecordType& type, const schema::Schema& schema) {
    const schema::Field* const field = type.FindField(mapping.target);
    if (field == nullptr) {
        return fmt::format("the record type {} has no field \"{}\"", type.name, mapping.target);
    }
    if (field->kind != schema::FieldKind::Reference &&
        field->kind != schema::FieldKind::ReferenceList) {
        return fmt::format("the field \"{}\" points at no records", mapping.target);
    }
    const schema::RecordType& target = schema.Type(field->target);
    if (target.FindField(mapping.reference) == nullptr) {
        return fmt::format(
            "the record type {}, at which the field \"{}\" points, has no field "
            "\"{}\"",
            target.name, mapping.target, mapping.reference);
    }
    if (!HasPlainKey(target)) {
        return fmt::format(
            "the key of the record type {} has several fields, and values that "
            "refer to its records are taken as they are",
            target.name);
    }
    const auto inForce = configuration.Mapping().find(mapping.target);
    if (inForce == configuration.Mapping().end() || inForce->second != mapping.reference) {
        return fmt::format("another mapping of the field \"{}\" counts", mapping.target);
    }
    return {};
}

std::string WhyUnused(const Mapping& mapping, const ImportConfiguration& configuration,
                      const schema::Schema& schema) {
    if (mapping.list != kRecordList) {
        return fmt::format("no import asks for a {}", mapping.list);
    }
    if (mapping.target.empty() || mapping.reference.empty()) {
        return fmt::format("it has no {}",
                           mapping.target.empty() ? "target_field" : "reference_field");
    }
    const schema::RecordType* const type = schema.FindType(configuration.RecordType());
    return type == nullptr ? "" : WhyUnused(mapping, configuration, *type, schema);
}

}  // namespace

void FindConfigurationLosses(const std::string& packet, const std::string& source,
                             const ImportConfiguration& configuration,
                             const recorddb::schema::Schema& schema, const LossTaker& take) {
    const ConfigurationElements elements(packet);
    if (auto loss = FindNothingImported(source, elements.ImportDataLine(), configuration)) {
        take(*std::move(loss));
    }
    for (const Mapping& mapping : elements.Mappings()) {
        const std::string why = WhyUnused(mapping, configuration, schema);
        if (!why.empty()) {
            take({LossKind::UnusedMapping, source, 0, mapping.line, "", mapping.target,
                  "the mapping has no effect: " + why});
        }
    }
}

std::optional<Loss> FindNothingImported(const std::string& source, std::uint64_t line,
                                        const ImportConfiguration& configuration) {
    if (configuration.Data() != ImportedData::Nothing) {
        return std::nullopt;
    }
    return Loss{LossKind::NothingImported,
                source,
                0,
                line,
                "",
                "",
                fmt::format("import_data is \"{}\", so that nothing of the packets that follow is "
                            "imported; it must be record, history or attachments",
                            configuration.ImportData())};
}

}  // namespace tool
