#include "tool/sources/mapped/map_run.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <set>
#include <utility>

#include "tool/io/charset_decoder.h"
#include "tool/io/text_hash.h"
#include "tool/io/watched_file.h"
#include "tool/process/interrupt.h"
#include "tool/sources/json/json_lines_reader.h"
#include "tool/sources/json/json_reader.h"

namespace tool {

namespace {

// The steps of an address from the row on, for an item of `each`.
std::vector<std::string> FromRow(const MapAddress& address, const MapEach* each) {
    if (address.isFromRow || each == nullptr) {
        return address.steps;
    }
    std::vector<std::string> steps = each->from.steps;
    steps.insert(steps.end(), address.steps.begin(), address.steps.end());
    return steps;
}

std::unique_ptr<RowFileReader> OpenReader(const MapSource& source, ByteSource& bytes,
                                          const RowLimits& limits) {
    switch (source.format) {
        case MapFormat::Csv:
            return std::make_unique<CsvReader>(bytes, source.csv, limits);
        case MapFormat::JsonLines:
            return std::make_unique<JsonLinesReader>(bytes, limits);
        default:
            return std::make_unique<JsonReader>(bytes, source.rows, limits);
    }
}

// What packets are made of the same values by this program; to be raised when that changes.
constexpr int kPacketsVersion = 1;

// The key of the records of a step in the journal. Packets follow from values, the places of these,
// and this program.
std::string KeyOf(const RecordSpool& records, const StepPackets& packets) {
    std::string parts = fmt::format("{} {}\n", kPacketsVersion, records.Hash());
    for (const auto& [field, place] : packets.places) {
        parts += fmt::format("{} {}\n", static_cast<int>(place), field);
    }
    return HashText(parts);
}

}  // namespace

MapRun::MapRun(const MapFile& map, const recorddb::schema::Schema& schema, MapInputs inputs,
               Options options)
    : m_map(map),
      m_schema(schema),
      m_inputs(std::move(inputs)),
      m_options(std::move(options)),
      m_plan(PlanMap(map, schema)),
      m_files(std::make_shared<std::vector<ReadFile>>()),
      m_notes([this] { return CurrentPlace(); }),
      m_values(map.forbidden, m_options.limits.size, m_notes) {
    if (m_options.keepsRows) {
        m_rows = std::make_shared<KeptRows>();
        for (const MapSource& source : map.sources) {
            m_rows->sources.push_back(source.name);
        }
    }
    for (const StepPlan& plan : m_plan.steps) {
        m_outputs.push_back(std::make_unique<StepOutput>(
            plan, m_outputs.size(), m_keys, m_notes,
            [this](const RowPlace& place) { return ShowPlace(place); }));
    }
    for (std::size_t source = 0; source < map.sources.size(); ++source) {
        const MapSource& read = map.sources[source];
        m_tallies.push_back(std::make_unique<AddressTally>(read.format == MapFormat::Csv,
                                                           read.nullIf ? *read.nullIf : map.nullIf,
                                                           [this] { return CurrentPlace(); }));
        KnowAddresses(source);
    }
}

MapRun::~MapRun() = default;

void MapRun::KnowAddresses(std::size_t source) {
    AddressTally& tally = *m_tallies[source];
    for (const MapStep& step : m_map.steps) {
        if (step.source != source) {
            continue;
        }
        ForEachAddress(step, [&](const MapAddress& address) {
            if (step.each.empty() || address.isFromRow) {
                tally.Know(address, FromRow(address, nullptr), false);
                return;
            }
            for (const MapEach& each : step.each) {
                const bool isEach = &each.from == &address;
                const bool isOther =
                    std::any_of(step.each.begin(), step.each.end(),
                                [&](const MapEach& other) { return &other.from == &address; });
                if (!isOther) {
                    tally.Know(address, FromRow(address, &each), false);
                } else if (isEach) {
                    tally.Know(address, address.steps, false);
                }
            }
        });
    }
    for (const MapAddress& address : m_map.sources[source].ignore) {
        tally.Know(address, address.steps, true);
    }
}

bool MapRun::Run() {
    for (std::size_t source = 0; source < m_map.sources.size(); ++source) {
        ReadSource(source);
        if (Interrupted() != 0) {
            return false;
        }
    }
    AddSources();
    return Interrupted() == 0;
}

void MapRun::ReadSource(std::size_t source) {
    std::vector<RowMapper::Step> steps;
    for (std::size_t step = 0; step < m_plan.steps.size(); ++step) {
        if (m_plan.steps[step].step->source == source) {
            steps.push_back({&m_plan.steps[step], m_outputs[step].get()});
        }
    }
    RowMapper mapper({m_map, m_map.sources[source], std::move(steps), m_values, m_notes, m_keys,
                      *m_tallies[source], m_rows.get()});
    m_mapper = &mapper;
    for (const MapInput& input : m_inputs.inputs) {
        if (input.source == source && Interrupted() == 0) {
            ReadInput(input, mapper);
        }
    }
    m_mapper = nullptr;
}

void MapRun::ReadInput(const MapInput& input, RowMapper& mapper) {
    const MapSource& source = m_map.sources[input.source];
    m_files->push_back({input.name, source.format});
    if (m_rows != nullptr) {
        const bool isCsv = source.format == MapFormat::Csv;
        m_rows->files.push_back(
            {input.source, "", isCsv && !IsUtf8Charset(source.csv.charset), !isCsv});
    }
    mapper.BeginFile(static_cast<std::uint32_t>(m_files->size() - 1), input.name);
    std::unique_ptr<ByteSource> bytes;
    if (input.path == "-") {
        bytes = std::make_unique<FileBytes>(m_options.standardInput, input.name);
    } else {
        bytes = std::make_unique<WatchedFile>(input.path, input.name);
    }
    OpenReader(source, *bytes, m_options.limits)->Read(mapper);
}

void MapRun::AddSources() {
    const StepOutput::Exists exists = [this](std::size_t known, const std::string& value) {
        const KnownField& field = m_plan.known[known];
        return m_keys.HasValue(known, value) || m_options.exists(*field.type, *field.field, value);
    };
    std::vector<std::unique_ptr<RecordSpool>> records;
    for (const auto& output : m_outputs) {
        records.push_back(output->Finish(exists));
    }
    GatherAttachments(records);
    for (std::size_t step = 0; step < m_plan.steps.size(); ++step) {
        // A packet without a record would only be told as one without an effect.
        if (records[step] == nullptr || records[step]->Size() == 0) {
            continue;
        }
        auto packets =
            std::make_shared<const StepPackets>(PacketsOf(m_plan.steps[step], m_schema, m_files));
        std::string sha256 = KeyOf(*records[step], *packets);
        m_sources.push_back(std::make_shared<StepConfiguration>(packets));
        m_sources.push_back(
            std::make_shared<StepRecords>(packets, std::move(records[step]), std::move(sha256)));
    }
}

// The last step that makes attachments of the same field as `step`; itself when there is no other.
// All of them know the record by the same key: CheckMap sees to that.
std::size_t MapRun::LastOfAttachments(std::size_t step) const {
    const auto fieldOf = [&](std::size_t at) {
        const StepPlan& plan = m_plan.steps[at];
        return plan.step->kind == StepKind::Attachments
                   ? plan.type->FindField(plan.step->attachmentsField)
                   : nullptr;
    };
    std::size_t last = step;
    for (std::size_t other = step + 1; other < m_plan.steps.size(); ++other) {
        if (fieldOf(step) != nullptr && fieldOf(other) == fieldOf(step)) {
            last = other;
        }
    }
    return last;
}

// A later packet replaces attachments that have the same file names, so those that several steps
// make of one record go into one packet, that of the last of these steps.
void MapRun::GatherAttachments(std::vector<std::unique_ptr<RecordSpool>>& records) {
    std::vector<std::unique_ptr<StepOutput>> gathered(records.size());
    for (std::size_t step = 0; step < records.size(); ++step) {
        const std::size_t last = LastOfAttachments(step);
        if (last == step && gathered[last] == nullptr) {
            continue;
        }
        if (gathered[last] == nullptr) {
            gathered[last] = std::make_unique<StepOutput>(
                m_plan.steps[last], records.size() + last, m_keys, m_notes,
                [this](const RowPlace& place) { return ShowPlace(place); });
        }
        RecordSpool::Reader reader(*records[step]);
        MadeRecord record;
        while (reader.Next(record)) {
            gathered[last]->Take(std::move(record));
        }
        records[step] = last == step ? gathered[last]->FinishSettled() : nullptr;
    }
}

std::string MapRun::ShowPlace(const RowPlace& place) const {
    const ReadFile& file = (*m_files)[place.file];
    return fmt::format("{}, {} {} (line {})", file.name, RowWord(file.format), place.number,
                       place.line);
}

std::string MapRun::CurrentPlace() const {
    return m_mapper == nullptr ? std::string() : ShowPlace(m_mapper->Place());
}

}  // namespace tool
