#ifndef TOOL_MAP_MAP_FILE_H
#define TOOL_MAP_MAP_FILE_H

#include <cstddef>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tool/map/map_error.h"
#include "tool/sources/csv/csv_reader.h"

namespace tool {

// A map file: what becomes of the rows of which files. docs/maps.md tells what the parts mean.

// Where a value stands in a row.
struct MapAddress {
    std::string text;                   // as the map writes it
    MapPlace place;                     // in the map
    bool isItem = false;                // ".": the item of `each`, or the row, itself
    bool isFromRow = false;             // starts at the row, not at the item of `each`
    std::optional<std::size_t> column;  // a column by its place, from 0
    std::vector<std::string> steps;  // names of members, "*", digits; of CSV one: a column's name
    bool isOptional = false;         // need not be in any row

    bool IsList() const;  // holds a "*"
};

enum class MapFormat { Csv, JsonLines, Json };

struct MapSource {
    std::string name;
    MapPlace place;
    std::vector<std::string> files;  // patterns
    MapFormat format = MapFormat::Csv;
    CsvFormat csv;
    std::optional<std::vector<std::string>> rows;  // the way to the array of the rows, of JSON
    std::vector<MapAddress> ignore;
    std::optional<std::vector<std::string>> nullIf;
    std::optional<std::string> zone;
};

struct MapTable {
    std::string name;  // empty: it stands where it is used
    MapPlace place;
    std::map<std::string, std::string, std::less<>> entries;
};

enum class LetterCase { AsIs, Lower, Upper };
enum class UnknownValue { Reject, Keep, LeaveOut, Replace };
enum class Pick { None, First, Last };

// A piece of a template: a text, or the value at an address.
struct TemplatePart {
    std::string text;
    std::optional<MapAddress> address;
};

// What becomes of values on their way from the row to the record, in the order of the members.
struct MapValue {
    MapPlace place;
    std::vector<MapAddress> from;       // the first one that has a value counts
    std::vector<TemplatePart> pattern;  // a template
    std::optional<std::string> constant;

    std::optional<std::string> split;
    std::optional<std::vector<std::string>> nullIf;
    bool trim = false;
    std::vector<std::pair<std::string, std::string>> replace;
    LetterCase letterCase = LetterCase::AsIs;
    std::shared_ptr<const MapTable> table;
    UnknownValue unknown = UnknownValue::Reject;
    std::string unknownText;
    std::vector<std::string> date;  // formats
    std::optional<std::string> zone;
    std::optional<std::size_t> cut;  // characters

    bool knownOnly = false;
    std::optional<std::string> join;
    Pick pick = Pick::None;
    std::optional<std::string> defaultText;
    bool required = false;
    std::optional<std::string> by;

    // Where a key of the value stands; the value's place for one that it does not have.
    MapPlace PlaceOf(std::string_view key) const;
    std::map<std::string, MapPlace, std::less<>> keys;
};

struct MapField {
    std::string name;
    MapPlace place;
    MapValue value;
};

struct MapTest {
    enum class Kind { OneOf, NoneOf, HasValue, HasNoValue };

    MapAddress from;
    Kind kind = Kind::OneOf;
    std::vector<std::string> texts;
};

struct MapEach {
    MapAddress from;
    std::optional<std::string> split;
};

enum class StepKind { Records, History, Attachments, Duplicates };
enum class StepMode { Create, Update, UpdateOrCreate };
enum class SameKey { Reject, First, Merge };

struct MapStep {
    StepKind kind = StepKind::Records;
    std::string type;
    MapPlace place;
    MapPlace typePlace;
    std::size_t source = 0;  // by position in MapFile::sources
    std::vector<MapEach> each;
    std::vector<MapTest> when;
    std::string key;
    MapPlace keyPlace;
    StepMode mode = StepMode::Create;
    SameKey sameKey = SameKey::Reject;
    std::string attachmentsField;
    MapPlace attachmentsPlace;
    std::vector<MapField> fields;

    const MapField* FindField(std::string_view name) const;
};

enum class ForbiddenCharacters { Keep, Replace, Reject };

struct MapFile {
    std::string name;  // of the file, for messages
    ForbiddenCharacters forbidden = ForbiddenCharacters::Keep;
    std::vector<std::string> nullIf;
    std::string zone = "UTC";
    std::vector<MapSource> sources;
    std::vector<MapStep> steps;
};

// The word for a kind of step, as a map writes it.
std::string_view StepKindName(StepKind kind);

}  // namespace tool

#endif
