#include "mapped_sources.h"

#include <fstream>
#include <stdexcept>
#include <string_view>

#include "generated_tracker.h"

namespace bench {

namespace {

namespace fs = std::filesystem;

constexpr const char* kLimit = "at most 1.25";

std::string Quoted(std::string_view text, std::string_view escapedQuote) {
    std::string quoted = "\"";
    for (const char c : text) {
        if (c == '"') {
            quoted += escapedQuote;
        } else if (c == '\\' && escapedQuote == "\\\"") {
            quoted += "\\\\";
        } else if (c == '\n' && escapedQuote == "\\\"") {
            quoted += "\\n";
        } else {
            quoted += c;
        }
    }
    return quoted + '"';
}

std::string AsJson(const GeneratedRecord& record) {
    std::string text = "{";
    for (std::size_t i = 0; i < record.fields.size(); ++i) {
        text += Quoted(kFieldNames.at(i), "\\\"") + ':' + Quoted(record.fields.at(i), "\\\"") + ',';
    }
    text += "\"description\":" + Quoted(record.description, "\\\"");
    text += ",\"keywords\":[" + Quoted(KeywordName(record.keywords[0]), "\\\"") + ',' +
            Quoted(KeywordName(record.keywords[1]), "\\\"") + "]}";
    return text;
}

std::string AsCsv(const GeneratedRecord& record) {
    std::string text;
    for (const std::string& field : record.fields) {
        text += Quoted(field, "\"\"") + ',';
    }
    return text + Quoted(record.description, "\"\"") + ',' +
           Quoted(KeywordName(record.keywords[0]) + ',' + KeywordName(record.keywords[1]), "\"\"");
}

// `list` is the value of the field with several items.
fs::path WriteMap(const fs::path& folder, const std::string& file, const std::string& list) {
    std::string map = "map: 1\nsources: {bugs: {files: " + file +
                      "}}\nsteps:\n- records: bug\n  source: bugs\n  key: source_id\n  fields:\n";
    for (const char* const name : kFieldNames) {
        map += "    " + std::string(name) + ": " + name + '\n';
    }
    map += "    description: description\n    keywords: " + list + '\n';
    const fs::path path = folder / (file + ".map.yaml");
    std::ofstream(path) << map;
    return path;
}

// Writes `before`, each record, `between` them, and `after`.
template <typename Show>
fs::path WriteRecords(const fs::path& path, std::int64_t records, Show show,
                      const std::string& before, const std::string& between,
                      const std::string& after) {
    std::ofstream out(path);
    out << before;
    for (std::int64_t i = 0; i < records; ++i) {
        out << (i == 0 ? "" : between) << show(GeneratedRecord(i));
    }
    out << after;
    if (!out.flush()) {
        throw std::runtime_error(path.string() + " cannot be written");
    }
    return path;
}

}  // namespace

std::vector<MappedSource> WriteMappedSources(const fs::path& folder, std::int64_t records) {
    std::string header;
    for (const char* const name : kFieldNames) {
        header += std::string(name) + ',';
    }
    header += "description,keywords\n";
    return {{"jsonl", WriteRecords(folder / "bugs.jsonl", records, AsJson, "", "\n", "\n"),
             WriteMap(folder, "bugs.jsonl", "keywords/*"), kLimit},
            {"csv", WriteRecords(folder / "bugs.csv", records, AsCsv, header, "\n", "\n"),
             WriteMap(folder, "bugs.csv", "{from: keywords, split: ','}"), kLimit},
            {"array", WriteRecords(folder / "bugs.json", records, AsJson, "[", ",\n", "]\n"),
             WriteMap(folder, "bugs.json", "keywords/*"), ""}};
}

}  // namespace bench
