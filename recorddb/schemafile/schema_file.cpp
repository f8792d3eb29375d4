#include <fmt/format.h>
#include <yaml-cpp/eventhandler.h>

#include <array>
#include <cerrno>
#include <fstream>
#include <sstream>
#include <system_error>
#include <utility>
#include <vector>

#include "platform/foundation/text_place.h"
#include "recorddb/errors.h"
#include "recorddb/model/names.h"
#include "recorddb/schema.h"
#include "recorddb/schemafile/spread_rule.h"
#include "recorddb/schemafile/type_reader.h"

namespace recorddb::schema {

namespace {

constexpr std::array<std::string_view, 1> kSchemaKeys = {"record_types"};

// Far above what any schema needs, so that a device or a wrong file does not fill the memory.
constexpr std::size_t kLargestFile = std::size_t{16} << 20U;

// Notes where the last document that was read begins, and whether it holds anything.
class DocumentWatcher : public YAML::EventHandler {
  public:
    const YAML::Mark& Begin() const { return m_begin; }
    bool HoldsSomething() const { return m_holdsSomething; }

    void OnDocumentStart(const YAML::Mark& mark) override {
        m_begin = mark;
        m_holdsSomething = false;
    }
    void OnDocumentEnd() override {}
    void OnNull(const YAML::Mark&, YAML::anchor_t) override {}
    void OnAlias(const YAML::Mark& mark, YAML::anchor_t) override { Note(mark); }
    void OnScalar(const YAML::Mark& mark, const std::string&, YAML::anchor_t,
                  const std::string&) override {
        Note(mark);
    }
    void OnSequenceStart(const YAML::Mark& mark, const std::string&, YAML::anchor_t,
                         YAML::EmitterStyle::value) override {
        Note(mark);
    }
    void OnSequenceEnd() override {}
    void OnMapStart(const YAML::Mark& mark, const std::string&, YAML::anchor_t,
                    YAML::EmitterStyle::value) override {
        Note(mark);
    }
    void OnMapEnd() override {}

  private:
    // A document begins with its "---"; what it holds is a better place to name.
    void Note(const YAML::Mark& mark) {
        if (!m_holdsSomething) {
            m_begin = mark;
        }
        m_holdsSomething = true;
    }

    YAML::Mark m_begin;
    bool m_holdsSomething = false;
};

// An empty document after the first one (a last "---") does no harm. At most three documents are
// read: at a character that is out of place, such as a bracket that closes nothing, the library
// finds one document after the other, without end.
void RefuseFurtherDocuments(const YamlSource& source, const std::string& text) {
    std::istringstream stream(text);
    YAML::Parser parser(stream);
    DocumentWatcher watcher;
    parser.HandleNextDocument(watcher);
    if (!parser.HandleNextDocument(watcher)) {
        return;
    }
    const YAML::Mark second = watcher.Begin();
    if (watcher.HoldsSomething() || parser.HandleNextDocument(watcher)) {
        source.Fail(second, "a schema is one YAML document, not several");
    }
}

// The library reads on behind such a byte as if it were not there.
void RefuseNul(const YamlSource& source, std::string_view text) {
    const std::size_t at = text.find('\0');
    if (at == std::string_view::npos) {
        return;
    }
    const TextPlace place = PlaceInText(text, at);
    YAML::Mark mark;
    mark.line = place.line;
    mark.column = place.column;
    source.Fail(mark, "not valid YAML: a NUL byte");
}

YAML::Node LoadDocument(const YamlSource& source, const std::string& text) {
    RefuseNul(source, text);
    try {
        RefuseFurtherDocuments(source, text);
        YAML::Node document = YAML::Load(text);
        if (document.IsNull()) {
            source.Fail(YAML::Mark::null_mark(), "the schema is empty; it needs 'record_types'");
        }
        return document;
    } catch (const YAML::Exception& error) {
        source.Fail(error.mark, "not valid YAML: " + error.msg);
    }
}

// The id of the type that a field refers to.
std::int64_t TargetId(const YamlSource& source, const std::vector<ReadType>& types,
                      const ReadType& from, const PendingReference& reference) {
    std::vector<std::string_view> names;
    names.reserve(types.size());
    for (const ReadType& candidate : types) {
        if (SameName(candidate.type.name, reference.target.text)) {
            return candidate.type.id;
        }
        names.push_back(candidate.type.name);
    }
    source.Fail(reference.target.place,
                fmt::format("field '{}' of record type '{}' refers to the unknown record type "
                            "'{}'; record types are {}",
                            from.type.fields[reference.field].name, from.type.name,
                            reference.target.text, Joined(names)));
}

void ResolveReferences(const YamlSource& source, std::vector<ReadType>& types) {
    for (ReadType& read : types) {
        for (const PendingReference& reference : read.references) {
            read.type.fields[reference.field].target = TargetId(source, types, read, reference);
        }
    }
}

void CheckPrefixes(const YamlSource& source, const std::vector<ReadType>& types) {
    for (std::size_t later = 0; later < types.size(); ++later) {
        for (std::size_t earlier = 0; earlier < later; ++earlier) {
            const RecordType& type = types[later].type;
            const RecordType& other = types[earlier].type;
            if (type.HasStates() && other.HasStates() && SameName(type.prefix, other.prefix)) {
                source.Fail(types[later].prefixPlace,
                            fmt::format("record type '{}' has the prefix '{}' already", other.name,
                                        other.prefix));
            }
        }
    }
}

void CheckListTableName(const YamlSource& source, const YamlText& target, const std::string& table,
                        const std::vector<std::string>& others) {
    const std::string start =
        fmt::format("the table of this reference list would be named '{}', ", table);
    if (table.size() > kMaxIdentifierLength) {
        source.Fail(target.place, fmt::format("{}which is longer than {} characters", start,
                                              kMaxIdentifierLength));
    }
    for (const std::string& other : others) {
        if (SameName(other, table)) {
            source.Fail(target.place, start + "and so is another one");
        }
    }
}

// Tables of reference lists are named after type and field, so their names can be those of a type
// or of another list, and can become too long.
void CheckTableNames(const YamlSource& source, const std::vector<ReadType>& types) {
    std::vector<std::string> names;
    names.reserve(types.size());
    for (const ReadType& read : types) {
        names.push_back(read.type.name);
    }
    for (const ReadType& read : types) {
        for (const PendingReference& reference : read.references) {
            const Field& field = read.type.fields[reference.field];
            if (field.kind == FieldKind::ReferenceList) {
                const std::string table = ListTableName(read.type, field);
                CheckListTableName(source, reference.target, table, names);
                names.push_back(table);
            }
        }
    }
}

}  // namespace

Schema ReadSchema(const std::string& text, const std::string& file) {
    const YamlSource source(file);
    const YAML::Node document = LoadDocument(source, text);
    const YamlMap map(source, {"", document, document, "the schema"});
    map.AllowOnly(kSchemaKeys);
    const YamlMap typeMap(source, map.Require("record_types", "it lists the record types"));

    std::vector<ReadType> reads;
    for (YamlEntry entry : typeMap.Entries()) {
        entry.what = fmt::format("record type '{}'", entry.key);
        ReadType read = ReadTypeEntry(source, entry);
        read.type.id = static_cast<std::int64_t>(reads.size() + 1);
        reads.push_back(std::move(read));
    }
    ResolveReferences(source, reads);
    CheckPrefixes(source, reads);
    CheckTableNames(source, reads);
    DecideSpread(source, reads);

    std::vector<RecordType> types;
    types.reserve(reads.size());
    for (ReadType& read : reads) {
        types.push_back(std::move(read.type));
    }
    return {std::move(types), text};
}

Schema ReadSchemaFile(const std::string& path) {
    std::ifstream stream(path, std::ios::binary);
    std::string text;
    std::array<char, 4096> part{};
    while (stream.read(part.data(), part.size()) || stream.gcount() > 0) {
        text.append(part.data(), static_cast<std::size_t>(stream.gcount()));
        if (text.size() > kLargestFile) {
            throw SchemaError(path, 0, 0, "the file has more than 16 MiB; is it a schema file?");
        }
    }
    // Some files, such as folders, can be opened and fail at the first read.
    if (!stream.is_open() || stream.bad()) {
        throw SchemaError(path, 0, 0,
                          "the file cannot be read: " +
                              std::error_code(errno, std::generic_category()).message());
    }
    return ReadSchema(text, path);
}

}  // namespace recorddb::schema
