#include "tool/verify/source_scan.h"

#include <fmt/format.h>

#include <algorithm>

#include "tool/losses/loss_finder.h"
#include "tool/sources/source_checks.h"
#include "tool/verify/records/kept_fields.h"

namespace tool {

using recorddb::schema::Field;
using recorddb::schema::FieldKind;

namespace {

// Losses that need not be reported here: the comparison of records finds the first three missing
// from the database, and compares "BLANK" as the empty value that it stands for.
bool IsComparedAnyway(LossKind kind) {
    return kind == LossKind::LongHistoryLine || kind == LossKind::HistoryBeyondLimit ||
           kind == LossKind::IncompleteAttachment || kind == LossKind::ClearedValue;
}

}  // namespace

SourceScan::SourceScan(RecordLookup& lookup, RecordShelf& shelf,
                       const std::filesystem::path& attachments, VerifyTally& tally,
                       VerifySink& sink, const RecordLimits& limits)
    : m_schema(lookup.GetSchema()),
      m_locator(lookup),
      m_shelf(shelf),
      m_attachments(attachments),
      m_tally(tally),
      m_sink(sink),
      m_limits(limits),
      m_configurations(1) {}

void SourceScan::Read(const SourceList& sources) {
    m_walk.emplace(sources, Options());
    WalkStep step = WalkStep::End;
    while ((step = m_walk->Next()) != WalkStep::End && step != WalkStep::Stopped) {
        if (step == WalkStep::Configuration) {
            TakeConfiguration();
        } else if (step == WalkStep::Data) {
            BeginData();
        } else if (step == WalkStep::Record) {
            m_tally.AddRead();
            ++m_read;
            ReadRecord(m_walk->Record());
        }
        m_sink.Advances(m_read, m_walk->BytesRead());
    }
}

WalkOptions SourceScan::Options() {
    WalkOptions options;
    options.limits = m_limits;
    options.attachments = m_attachments;
    options.unseen = [this](const UnseenRecord& unseen, const std::string& /*source*/) {
        ReportUnseen(unseen);
    };
    options.frame = [this](const FrameDefect& defect, const std::string& /*source*/) {
        ReportFrame(defect);
    };
    return options;
}

void SourceScan::TakeConfiguration() {
    m_type = &RequireType(m_schema, m_walk->Configuration(), Name());
    m_configurations.push_back(m_walk->Configuration());
    m_losses.emplace(Current(), *m_type);
}

void SourceScan::BeginData() {
    m_walk->RequireUsableData();
    if (IsRepeated()) {
        m_sink.Warns(fmt::format("{}: read already, and passed over as in a load", Name()));
        m_walk->LeaveSource();
    }
}

bool SourceScan::IsRepeated() {
    const recorddb::journal::JournalKey key = m_walk->Key(*m_type);
    if (!m_contents.insert(key.sourceSha256 + key.configurationSha256).second) {
        return true;
    }
    m_sink.Reads({m_type->name, Current().Data(), key});
    return false;
}

void SourceScan::ReadRecord(const SourceRecord& record) {
    if (const std::string problem = WhyNotImported(record); !problem.empty()) {
        ReportMissing(record, "not imported: " + problem);
        return;
    }
    CheckAttachments();
    const bool counts = SaysSomething();
    if (counts) {
        const LocatedRecord located = m_locator.Locate(m_record, Current(), *m_type);
        if (!located.problem.empty()) {
            ReportMissing(record, located.problem);
            return;
        }
        m_record.dbid = located.dbid;
    }
    m_record.differs = FindLosses(record);
    if (counts) {
        m_record.type = m_type->id;
        m_record.place = {PlaceOf(record), record.Number(), record.line};
        m_record.configuration = m_configurations.size() - 1;
        m_shelf.Add(m_record);
    }
}

// Reads the fields of a record; returns what keeps any import from taking it, or nothing.
std::string SourceScan::WhyNotImported(const SourceRecord& record) {
    if (record.defect != RecordDefect::None) {
        return record.error;
    }
    if (Current().Data() == ImportedData::Nothing) {
        return fmt::format("import_data is \"{}\"; it must be record, history or attachments",
                           Current().ImportData());
    }
    if (std::string problem = m_readings.Read(record); !problem.empty()) {
        return problem;
    }
    // What a source says that is no packet is compared with the database, not with the packet that
    // was made of it.
    if (record.values != nullptr) {
        KeepSourceValues(*record.values, Current(), *m_type, m_record);
    } else {
        KeepPacketFields(m_readings.Fields(), record.guarded, Current(), *m_type, m_record);
    }
    return {};
}

// Records of history and attachments packets that hold none are passed over by the import, too.
bool SourceScan::SaysSomething() const {
    return Current().Data() == ImportedData::Records ||
           std::any_of(m_record.fields.begin(), m_record.fields.end(), [](const KeptField& field) {
               return field.use == FieldUse::History || field.use == FieldUse::Attachments;
           });
}

void SourceScan::CheckAttachments() const {
    if (!m_attachments.empty()) {
        return;
    }
    for (const KeptField& given : m_record.fields) {
        const Field* const field = m_type->FindField(given.name);
        if (field != nullptr && field->kind == FieldKind::Attachments) {
            RequireAttachments(m_attachments, Name());
        }
    }
}

// Tells what an import drops of a record that it takes; true when there is something.
bool SourceScan::FindLosses(const SourceRecord& record) {
    bool found = false;
    m_losses->Find(record, m_readings, Name(), [&](const Loss& loss) {
        if (IsComparedAnyway(loss.kind)) {
            return;
        }
        Difference difference = DifferenceIn(record);
        difference.line = loss.line;
        difference.sourceId = loss.sourceId;
        difference.field = loss.field;
        difference.problem = loss.text;
        m_sink.Differs(difference);
        found = true;
    });
    return found;
}

Difference SourceScan::DifferenceAt(std::uint64_t record, std::uint64_t line) const {
    Difference difference;
    difference.source = Name();
    difference.record = record;
    difference.line = line;
    difference.type = m_type != nullptr ? m_type->name : "";
    return difference;
}

Difference SourceScan::DifferenceIn(const SourceRecord& record) const {
    Difference difference = DifferenceAt(record.Number(), record.line);
    difference.source = record.source;
    difference.unit = record.unit;
    return difference;
}

// The number of the place of a record; new places get the next one.
std::size_t SourceScan::PlaceOf(const SourceRecord& record) {
    if (m_places.empty() || m_places.back().name != record.source) {
        const auto [found, isNew] =
            m_placeOf.try_emplace(std::string(record.source), m_places.size());
        if (!isNew) {
            return found->second;
        }
        m_places.push_back({std::string(record.source), std::string(record.unit)});
    }
    return m_places.size() - 1;
}

void SourceScan::ReportMissing(const SourceRecord& record, const std::string& problem) {
    Difference difference = DifferenceIn(record);
    difference.sourceId = m_walk->IdIn(record.raw);
    difference.problem = problem;
    ++m_tally.Of(m_type).missing;
    m_sink.Differs(difference);
}

void SourceScan::ReportFrame(const FrameDefect& defect) {
    Difference difference = DifferenceAt(0, defect.line);
    difference.problem = LossOf(defect, Name()).text;
    m_sink.Differs(difference);
}

void SourceScan::ReportUnseen(const UnseenRecord& unseen) {
    // A comment is no content of the source, whatever stands in it.
    if (unseen.kind == UnseenKind::InsideSection) {
        m_sink.Warns(fmt::format("warning: {}, line {}: not read as a record: {}", Name(),
                                 unseen.line, unseen.text));
        return;
    }
    Difference difference = DifferenceAt(0, unseen.line);
    difference.problem = "not imported, since it is not read as a record: " + unseen.text;
    ++m_tally.Of(m_type).missing;
    m_sink.Differs(difference);
}

}  // namespace tool
