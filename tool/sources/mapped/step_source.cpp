#include "tool/sources/mapped/step_source.h"

#include <array>
#include <stdexcept>
#include <utility>

#include "tool/io/text_hash.h"
#include "tool/packet/field_search.h"
#include "tool/packet/packet_head.h"
#include "tool/packet/record_markup_writer.h"

namespace tool {

namespace {

using recorddb::schema::FieldKind;

PacketPlace PlaceOf(FieldKind kind) {
    return kind == FieldKind::Reference ? PacketPlace::Reference : PacketPlace::Text;
}

[[noreturn]] void ThrowNoPacket() {
    throw std::logic_error("the steps of a map are read record by record");
}

// The reading of a configuration.
class ConfigurationReading final : public RecordSource {
  public:
    explicit ConfigurationReading(const std::string& packet) : m_packet(packet) {}

    bool IsConfiguration() const override { return true; }
    std::string ReadConfiguration() override { return m_packet; }
    bool NextRecord(SourceRecord& /*record*/) override { return false; }
    WholePacket ReadWhole() override { ThrowNoPacket(); }
    std::optional<std::string> ValueIn(std::string_view /*raw*/,
                                       std::string_view /*name*/) const override {
        return std::nullopt;
    }
    std::uint64_t BytesRead() const override { return 0; }

  private:
    const std::string& m_packet;
};

// The reading of the records of a step.
class StepReading final : public RecordSource {
  public:
    StepReading(const StepPackets& packets, const RecordSpool& spool)
        : m_packets(packets), m_reader(spool) {}

    bool IsConfiguration() const override { return false; }
    bool IsGuarded() const override { return true; }
    std::string ReadConfiguration() override { ThrowNoPacket(); }
    WholePacket ReadWhole() override { ThrowNoPacket(); }

    bool NextRecord(SourceRecord& record) override {
        if (!m_reader.Next(m_made)) {
            return false;
        }
        const ReadFile& file = (*m_packets.files)[m_made.place.file];
        record = SourceRecord();
        record.source = file.name;
        record.unit = RowWord(file.format);
        record.number = m_made.place.number;
        record.line = m_made.place.line;
        record.ordinal = m_ordinal++;
        record.error = m_made.error;
        record.values = &m_made.values;
        record.rows = &m_made.rows;
        m_raw.clear();
        const bool holdsNothing = m_made.values == SourceValues();
        if (!holdsNothing) {
            AppendPacketRecord(m_made.values, m_packets, m_raw);
        }
        record.raw = m_raw;
        if (m_made.error.empty()) {
            record.packet.assign(kPacketDeclaration).append(m_raw);
        } else {
            record.defect = holdsNothing ? RecordDefect::BadRow : RecordDefect::BadValue;
            record.packet.clear();
        }
        return true;
    }

    std::optional<std::string> ValueIn(std::string_view raw, std::string_view name) const override {
        return FindFieldValue(raw, name);
    }
    std::uint64_t BytesRead() const override { return m_reader.BytesRead(); }

  private:
    const StepPackets& m_packets;
    RecordSpool::Reader m_reader;
    MadeRecord m_made;
    std::string m_raw;
    std::uint64_t m_ordinal = 0;
};

}  // namespace

std::string_view RowWord(MapFormat format) {
    return format == MapFormat::Json ? "element" : "row";
}

StepPackets PacketsOf(const StepPlan& plan, const recorddb::schema::Schema& schema,
                      std::shared_ptr<const std::vector<ReadFile>> files) {
    StepPackets packets;
    packets.name = plan.name;
    packets.configuration = ConfigurationPacket(plan, schema);
    packets.files = std::move(files);
    for (const StepField& field : plan.fields) {
        packets.places[field.plan.field->name] = PlaceOf(field.kind);
    }
    // Records are looked up by their key as it stands there.
    packets.places[plan.step->key] = PacketPlace::Text;
    return packets;
}

void AppendPacketRecord(const SourceValues& values, const StepPackets& packets, std::string& out) {
    RecordMarkupWriter writer(out);
    for (const SourceField& field : values.fields) {
        if (field.isList) {
            writer.List(field.name, field.values);
        } else {
            const auto place = packets.places.find(field.name);
            writer.Value(field.name, field.values.front(),
                         place == packets.places.end() ? PacketPlace::Text : place->second);
        }
    }
    if (!values.history.empty()) {
        writer.OpenLines("history");
        for (const SourceHistoryEntry& entry : values.history) {
            const std::array<std::string_view, 6> columns = {
                entry.id, entry.when, entry.who, entry.action, entry.before, entry.after};
            writer.HistoryLine(columns);
        }
        writer.CloseLines();
    }
    if (!values.attachments.empty()) {
        writer.OpenLines(values.attachmentsField);
        for (const SourceAttachment& attachment : values.attachments) {
            for (const std::string* const line :
                 {&attachment.id, &attachment.path, &attachment.size, &attachment.description}) {
                writer.AttachmentLine(*line);
            }
        }
        writer.CloseLines();
    }
    writer.End();
}

StepConfiguration::StepConfiguration(std::shared_ptr<const StepPackets> packets)
    : m_packets(std::move(packets)), m_sha256(HashText(m_packets->configuration)) {}

std::unique_ptr<RecordSource> StepConfiguration::Open() const {
    return std::make_unique<ConfigurationReading>(m_packets->configuration);
}

StepRecords::StepRecords(std::shared_ptr<const StepPackets> packets,
                         std::unique_ptr<RecordSpool> spool, std::string sha256)
    : m_packets(std::move(packets)), m_spool(std::move(spool)), m_sha256(std::move(sha256)) {}

std::unique_ptr<RecordSource> StepRecords::Open() const {
    return std::make_unique<StepReading>(*m_packets, *m_spool);
}

}  // namespace tool
