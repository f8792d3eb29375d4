#include "generated_tracker.h"

#include <fmt/format.h>

#include <fstream>
#include <string_view>

namespace bench {

namespace {

constexpr std::array<std::string_view, 24> kWords = {
    "ferry",   "ticket", "harbour", "engine",   "deck",   "gangway", "timetable", "printer",
    "captain", "fails",  "when",    "after",    "update", "cannot",  "find",      "shows",
    "wrong",   "price",  "for",     "children", "and",    "dogs",    "on",        "sundays"};

constexpr std::array<std::string_view, 5> kStates = {"NEW", "ASSIGNED", "WORKING", "RESOLVED",
                                                     "CLOSED"};

// A generator of its own, so that the data do not depend on a standard library's.
class Random {
  public:
    explicit Random(std::uint64_t seed) : m_state(seed * 0x9E3779B97F4A7C15U + 1) {}

    std::size_t Below(std::size_t bound) {
        m_state ^= m_state << 13U;
        m_state ^= m_state >> 7U;
        m_state ^= m_state << 17U;
        return static_cast<std::size_t>((m_state >> 11U) % bound);
    }

  private:
    std::uint64_t m_state;
};

std::string Text(Random& random, std::size_t length) {
    std::string text;
    while (text.size() < length) {
        text += text.empty() ? "" : " ";
        text += kWords[random.Below(kWords.size())];
    }
    text.resize(length);
    // No blank at the end, where nobody would see a difference.
    text.back() = '.';
    return text;
}

std::string Time(Random& random, std::size_t year) {
    return fmt::format("{:04}-{:02}-{:02} {:02}:{:02}:00", year, 1 + random.Below(12),
                       1 + random.Below(28), random.Below(24), random.Below(60));
}

std::string Field(std::string_view name, std::string_view value) {
    return fmt::format("  <field name=\"{}\">{}</field>\n", name, value);
}

std::string HistoryField(std::string_view name, const GeneratedRecord& record) {
    std::string lines;
    std::size_t number = 0;
    for (const HistoryLine& line : record.history) {
        lines +=
            fmt::format("{}{}-h{}\t{}\t{}\t{}\t{}\t{}", lines.empty() ? "" : "\n", record.fields[0],
                        ++number, line.time, line.user, line.action, line.oldState, line.newState);
    }
    return Field(name, lines);
}

std::string FieldsXml(const GeneratedRecord& record) {
    std::string xml;
    for (std::size_t i = 0; i < kFieldNames.size(); ++i) {
        xml += Field(kFieldNames[i], record.fields[i]);
    }
    return xml + Field("description", record.description) +
           Field("keywords",
                 KeywordName(record.keywords[0]) + "," + KeywordName(record.keywords[1]));
}

std::string CreateXml(const GeneratedRecord& record) {
    return FieldsXml(record) + HistoryField("log", record);
}

std::string UpdateXml(const GeneratedRecord& record) {
    GeneratedRecord changed = record;
    changed.fields[1] = "Changed: " + changed.fields[1];
    changed.fields[2] = "later";
    changed.description.replace(0, 7, "Changed");
    return FieldsXml(changed);
}

std::string HistoryXml(const GeneratedRecord& record) {
    return Field("source_id", record.fields[0]) + HistoryField("history", record);
}

// Writes the file as well. Its text is the record's, so that no two are the same.
std::string AttachmentXml(const std::filesystem::path& folder, const GeneratedRecord& record) {
    const std::string name = record.fields[0] + ".txt";
    std::ofstream(folder / name, std::ios::binary) << record.fields[0] << '\n'
                                                   << record.description << '\n';
    return Field("source_id", record.fields[0]) +
           Field("files", fmt::format("{}\n{}\n0\nA file", record.fields[0], name));
}

// `more` are elements besides those that each configuration has.
std::string Configuration(std::string_view data, std::string_view key, std::string_view type,
                          bool update, std::string_view more = "") {
    return fmt::format(
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<configuration>\n"
        "  <import_data name=\"{}\"/>\n  <original_id name=\"{}\"/>\n  <record_type name=\"{}\"/>\n"
        "  <updaterecord name=\"{}\"/>\n{}</configuration>\n",
        data, key, type, update ? "TRUE" : "FALSE", more);
}

template <typename RecordXml>
PacketFiles WritePackets(const std::filesystem::path& folder, const std::string& name,
                         const std::string& configuration, std::int64_t records,
                         RecordXml&& recordXml) {
    PacketFiles files;
    files.sources = {folder / (name + "-configuration.xml"), folder / (name + ".xml")};
    std::ofstream(files.sources[0], std::ios::binary) << configuration;
    std::ofstream data(files.sources[1], std::ios::binary);
    data << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<records>\n";
    for (std::int64_t i = 0; i < records; ++i) {
        data << "<record>\n" << recordXml(i) << "</record>\n";
    }
    data << "</records>\n";
    data.close();
    files.records = records;
    files.bytes = std::filesystem::file_size(files.sources[1]);
    return files;
}

}  // namespace

std::string KeywordName(std::size_t number) {
    return fmt::format("keyword{:03}", number);
}

GeneratedRecord::GeneratedRecord(std::int64_t number) {
    Random random(static_cast<std::uint64_t>(number) + 1);
    fields = {fmt::format("bench-{}", number + 1),
              Text(random, 40),
              fmt::format("{}.{}", random.Below(5), random.Below(20)),
              fmt::format("{}.{}.{}", random.Below(5), random.Below(20), random.Below(10)),
              std::string(kWords[random.Below(kWords.size())]),
              std::string(kWords[random.Below(kWords.size())]),
              Text(random, 12),
              fmt::format("user{:05}", random.Below(5000)),
              Text(random, 10),
              std::string(kWords[random.Below(kWords.size())]),
              Time(random, 2010),
              std::to_string(random.Below(100))};
    description = Text(random, 500);
    keywords[0] = random.Below(kKeywords);
    keywords[1] = (keywords[0] + 1 + random.Below(kKeywords - 1)) % kKeywords;
    for (std::size_t i = 0; i < history.size(); ++i) {
        history[i] = {Time(random, 2011 + i), fmt::format("user{:05}", random.Below(5000)),
                      i == 0 ? "assign" : "change", std::string(kStates[i]),
                      std::string(kStates[i + 1])};
    }
}

std::string SchemaText() {
    std::string schema =
        "record_types:\n"
        "  keyword:\n    key: [name]\n    fields:\n      name: {type: text, required: true}\n"
        "  bug:\n    prefix: BUG\n    states: [NEW, ASSIGNED, WORKING, RESOLVED, CLOSED]\n"
        "    fields:\n      source_id: {type: text, unique: true, required: true}\n";
    for (std::size_t i = 1; i + 2 < kFieldNames.size(); ++i) {
        schema += fmt::format("      {}: {{type: text}}\n", kFieldNames[i]);
    }
    return schema +
           "      opened: {type: datetime}\n      votes: {type: integer}\n"
           "      description: {type: multiline}\n"
           "      keywords: {type: reference_list, to: keyword}\n"
           "      log: {type: history}\n"
           "      files: {type: attachments}\n";
}

PacketFiles WriteKeywordPackets(const std::filesystem::path& folder) {
    return WritePackets(folder, "0-keywords", Configuration("record", "name", "keyword", false),
                        static_cast<std::int64_t>(kKeywords), [](std::int64_t i) {
                            return Field("name", KeywordName(static_cast<std::size_t>(i)));
                        });
}

PacketFiles WriteCreatePackets(const std::filesystem::path& folder, std::int64_t records) {
    return WritePackets(folder, "1-create", Configuration("record", "source_id", "bug", false),
                        records, [](std::int64_t i) { return CreateXml(GeneratedRecord(i)); });
}

PacketFiles WriteBarePackets(const std::filesystem::path& folder, std::int64_t records) {
    return WritePackets(folder, "1-bare", Configuration("record", "source_id", "bug", false),
                        records, [](std::int64_t i) { return FieldsXml(GeneratedRecord(i)); });
}

PacketFiles MapReferences(const std::filesystem::path& folder, PacketFiles bare) {
    bare.sources[0] = folder / "1-mapping-configuration.xml";
    std::ofstream(bare.sources[0], std::ios::binary)
        << Configuration("record", "source_id", "bug", false,
                         "  <record_reference_mapping_list>\n"
                         "    <mapping target_field=\"keywords\" reference_field=\"name\"/>\n"
                         "  </record_reference_mapping_list>\n");
    return bare;
}

PacketFiles WriteUpdatePackets(const std::filesystem::path& folder, std::int64_t records) {
    return WritePackets(folder, "2-update", Configuration("record", "source_id", "bug", true),
                        records, [](std::int64_t i) { return UpdateXml(GeneratedRecord(i)); });
}

PacketFiles WriteHistoryPackets(const std::filesystem::path& folder, std::int64_t records) {
    return WritePackets(folder, "3-history", Configuration("history", "source_id", "bug", false),
                        records, [](std::int64_t i) { return HistoryXml(GeneratedRecord(i)); });
}

PacketFiles WriteAttachmentPackets(const std::filesystem::path& folder, std::int64_t records) {
    PacketFiles files = WritePackets(
        folder, "4-attachments", Configuration("attachments", "source_id", "bug", false), records,
        [&](std::int64_t i) { return AttachmentXml(folder, GeneratedRecord(i)); });
    files.attachments = folder;
    return files;
}

}  // namespace bench
