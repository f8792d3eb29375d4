#include "tool/map/map_reader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "recorddb/schema.h"
#include "tool/map/map_check.h"

namespace tool {
namespace {

using testing::ElementsAre;
using testing::StartsWith;

constexpr const char* kSchema = R"(
record_types:
  user: {key: [login], fields: {login: {type: text}}}
  pair: {key: [a, b], fields: {a: {type: text}, b: {type: text}}}
  bug:
    prefix: BUG
    states: [NEW, CLOSED]
    fields:
      source_id: {type: text, unique: true}
      title: {type: text}
      opened: {type: datetime}
      owner: {type: reference, to: user}
      other: {type: reference, to: pair}
      cc: {type: reference_list, to: user}
      files: {type: attachments}
      log: {type: history}
)";

// A map that is right up to `fields`.
std::string WithFields(const std::string& fields, const std::string& step = "") {
    return "map: 1\n"
           "sources: {bugs: {files: bugs.csv}}\n"
           "steps:\n"
           "- records: bug\n"
           "  source: bugs\n"
           "  key: source_id\n" +
           step +
           "  fields:\n"
           "    source_id: Nr\n" +
           fields;
}

std::string ErrorOf(const std::string& text) {
    try {
        CheckMap(ReadMap(text, "map.yaml"), recorddb::schema::ReadSchema(kSchema, "schema.yaml"));
    } catch (const MapError& error) {
        return error.what();
    }
    return "no error";
}

TEST(MapReader, ReadsAMap) {
    const MapFile map =
        ReadMap(WithFields("    title: {from: [A, B], null_if: [\"\", NULL, no]}\n"), "map.yaml");
    EXPECT_EQ(map.sources[0].files, std::vector<std::string>{"bugs.csv"});
    const MapValue& title = map.steps[0].fields[1].value;
    EXPECT_EQ(title.from[1].text, "B");
    EXPECT_THAT(title.nullIf.value(), ElementsAre("", "NULL", "no"));
    EXPECT_EQ(ErrorOf(WithFields("")), "no error");
}

TEST(MapReader, KeepsWordsThatYamlTakesForNothing) {
    const MapFile map = ReadMap(
        "map: 1\nnull_if: [~, null, Null, nullify, \"\"]\n"
        "sources: {s: {files: s.csv}}\n"
        "steps: [{records: user, source: s, key: login, "
        "fields: {login: NULL}}]\n",
        "map.yaml");
    EXPECT_THAT(map.nullIf, ElementsAre("~", "null", "Null", "nullify", ""));
    EXPECT_EQ(map.steps[0].fields[0].value.from[0].text, "NULL");
}

TEST(MapReader, NeverCutsTheNameOfAColumn) {
    const MapFile map = ReadMap(WithFields("    title: a/b.c\n"), "map.yaml");
    EXPECT_THAT(map.steps[0].fields[1].value.from[0].steps, ElementsAre("a/b.c"));
}

TEST(MapReader, CutsJsonAddressesAtSlashes) {
    const MapFile map = ReadMap(
        "map: 1\nsources: {s: {files: s.json}}\n"
        "steps: [{records: user, source: s, each: 'x/*', key: login, "
        "fields: {login: {text: '{/a~1b/0}-{c.d}{{'}}}]\n",
        "map.yaml");
    const auto& pattern = map.steps[0].fields[0].value.pattern;
    EXPECT_THAT(pattern[0].address->steps, ElementsAre("a/b", "0"));
    EXPECT_TRUE(pattern[0].address->isFromRow);
    EXPECT_EQ(pattern[1].text, "-");
    EXPECT_THAT(pattern[2].address->steps, ElementsAre("c.d"));
    EXPECT_FALSE(pattern[2].address->isFromRow);
    EXPECT_EQ(pattern[3].text, "{");
}

struct Refusal {
    const char* name;
    std::string text;
    const char* error;
};

class MapRefusal : public testing::TestWithParam<Refusal> {};

TEST_P(MapRefusal, NamesThePlaceAndTheCause) {
    EXPECT_THAT(ErrorOf(GetParam().text), StartsWith(GetParam().error));
}

INSTANTIATE_TEST_SUITE_P(
    Map, MapRefusal,
    testing::Values(
        Refusal{"ANulByte", std::string("map: 1\nsteps: [a]\n\0\n", 20),
                "map.yaml:3:1: this is not valid YAML: a NUL byte"},
        Refusal{"NoYaml", "map: [1\n", "map.yaml:2:1: this is not valid YAML: "},
        Refusal{"Empty", "", "map.yaml:1:1: the map is empty"},
        Refusal{"OtherVersion", "map: 2\n", "map.yaml:1:6: this is version '2' of the map format"},
        Refusal{"NoVersion", "sources: {}\n", "map.yaml:1:1: the file lacks 'map'"},
        Refusal{"UnknownKey", "map: 1\nsteps: []\nsorces: {}\n",
                "map.yaml:3:1: unknown key 'sorces' in the map; known keys are map, "},
        Refusal{"KeyTwice", WithFields("    title: A\n    title: B\n"),
                "map.yaml:10:5: the key 'title' stands here twice, first in line 9"},
        Refusal{"Alias", "map: 1\nnull_if: &a [x]\nzone: *a\n",
                "map.yaml:3:7: a map has no aliases"},
        Refusal{"TwoDocuments", "map: 1\n---\nmap: 1\n",
                "map.yaml:2:1: a map is one YAML document"},
        Refusal{"UnknownSource",
                "map: 1\nsources: {a: {files: a.csv}}\nsteps:\n- records: user\n  source: b\n",
                "map.yaml:5:11: there is no source 'b' in 'sources'"},
        Refusal{"NameOfSourceWithSlash", "map: 1\nsources: {../s: {files: s.csv}}\n",
                "map.yaml:2:11: the name of a source becomes a part of names of files"},
        Refusal{"NameOfSourceWithControlCharacter",
                "map: 1\nsources: {\"a\\nb\": {files: s.csv}}\n",
                "map.yaml:2:11: the name of a source becomes a part of names of files"},
        Refusal{"EmptyNameOfSource", "map: 1\nsources: {\"\": {files: s.csv}}\n",
                "map.yaml:2:11: the name of a source becomes a part of names of files"},
        Refusal{"LongNameOfSource",
                "map: 1\nsources: {" + std::string(101, 'a') + ": {files: s.csv}}\n",
                "map.yaml:2:11: the name of a source becomes a part of names of files"},
        Refusal{"TwoKeysForAttachmentsOfOneField",
                "map: 1\nsources: {s: {files: s.csv}}\nsteps:\n"
                "- {attachments: bug, field: files, source: s, key: source_id, "
                "fields: {source_id: A, path: B}}\n"
                "- {attachments: bug, field: Files, source: s, key: title, "
                "fields: {title: A, path: C}}\n",
                "map.yaml:5:52: a step in line 4 knows the records whose 'Files' it fills by "
                "'source_id'; know them by that in this step"},
        Refusal{"UnusedTable",
                "map: 1\ntables: {t: {a: b}}\nsources: {s: {files: s.csv}}\n"
                "steps: [{records: user, source: s, key: login, "
                "fields: {login: x}}]\n",
                "map.yaml:2:13: no step uses the table 't'"},
        Refusal{"UnusedSource",
                "map: 1\nsources: {s: {files: s.csv}, t: {files: t.csv}}\n"
                "steps: [{records: user, source: s, key: login, "
                "fields: {login: x}}]\n",
                "map.yaml:2:30: no step reads the source 't'"},
        Refusal{"NoFormat", "map: 1\nsources: {s: {files: s.dat}}\n",
                "map.yaml:2:22: the ending of 's.dat' does not tell its format"},
        Refusal{"OutsideFiles", "map: 1\nsources: {s: {files: ../s.csv}}\n",
                "map.yaml:2:22: '../s.csv' must be the path of files below"},
        Refusal{"SeparatorOfJson", "map: 1\nsources: {s: {files: s.json, separator: ;}}\n",
                "map.yaml:2:41: 'separator' is for CSV files only"},
        Refusal{"LongSeparator", "map: 1\nsources: {s: {files: s.csv, separator: ;;}}\n",
                "map.yaml:2:40: 'separator' must be one ASCII character"},
        Refusal{"Encoding", "map: 1\nsources: {s: {files: s.csv, encoding: utf-9}}\n",
                "map.yaml:2:39: there is no encoding 'utf-9'"},
        Refusal{"Zone", "map: 1\nzone: Europe/Bielefeld\n",
                "map.yaml:2:7: there is no time zone 'Europe/Bielefeld'"},
        Refusal{"ItemWithoutEach", WithFields("    title: .\n"),
                "map.yaml:9:12: '.' is the cell that 'each' names"},
        Refusal{"Address",
                "map: 1\nsources: {s: {files: s.json}}\nsteps:\n- records: user\n"
                "  source: s\n  key: login\n  fields: {login: a//b}\n",
                "map.yaml:7:19: 'a//b' cannot be an address: a name in it is empty"},
        Refusal{"AddressEscape",
                "map: 1\nsources: {s: {files: s.json}}\nsteps:\n- records: user\n"
                "  source: s\n  key: login\n  fields: {login: a~2}\n",
                "map.yaml:7:19: 'a~2' cannot be a part of an address"},
        Refusal{"TwoOrigins", WithFields("    title: {from: A, value: B}\n"),
                "map.yaml:9:12: the value of 'title' must have exactly one of"},
        Refusal{"EmptySplit", WithFields("    title: {from: A, split: ''}\n"),
                "map.yaml:9:29: 'split' is empty"},
        Refusal{"EmptyReplace", WithFields("    title: {from: A, replace: {'': x}}\n"),
                "map.yaml:9:32: 'replace' cannot replace the empty text"},
        Refusal{"OpenBrace", WithFields("    title: {text: 'a{b'}\n"),
                "map.yaml:9:19: a brace opens in 'text' and does not close"},
        Refusal{"UnknownTable", WithFields("    title: {from: A, table: t}\n"),
                "map.yaml:9:29: there is no table 't'"},
        Refusal{"UnknownWithoutTable", WithFields("    title: {from: A, unknown: keep}\n"),
                "map.yaml:9:22: 'unknown' says what becomes of values that a table lacks"},
        Refusal{"DateFormat", WithFields("    opened: {from: A, date: '%Y-%m-%q'}\n"),
                "map.yaml:9:29: '%Y-%m-%q' is no format of a date"},
        Refusal{"DateWithoutYear", WithFields("    opened: {from: A, date: '%d.%m.'}\n"),
                "map.yaml:9:29: the format '%d.%m.' must name year, month and day"},
        Refusal{"KeyNotAmongFields",
                WithFields("    title: A\n", "  mode: update\n") +
                    "- records: bug\n"
                    "  source: bugs\n  key: title\n  fields: {source_id: A}\n",
                "map.yaml:13:8: the key 'title' is not among the fields"},
        Refusal{
            "UnknownType",
            "map: 1\nsources: {s: {files: s.csv}}\nsteps:\n- records: bag\n"
            "  source: s\n  key: a\n  fields: {a: a}\n",
            "map.yaml:4:12: the database has no record type 'bag'; its record types are user, "},
        Refusal{"UnknownField", WithFields("    titel: A\n"),
                "map.yaml:9:5: record type 'bug' has no field 'titel'; its fields are state, "},
        Refusal{"DateOfText", WithFields("    title: {from: A, date: '%d.%m.%Y'}\n"),
                "map.yaml:9:22: 'date' is for dates, and 'title' is none"},
        Refusal{"ByOfText", WithFields("    title: {from: A, by: login}\n"),
                "map.yaml:9:22: 'by' is for references"},
        Refusal{"KnownOnlyOfText", WithFields("    title: {from: A, known_only: true}\n"),
                "map.yaml:9:22: 'known_only' is for references"},
        Refusal{"KnownOnlyOfSeveralFields", WithFields("    other: {from: A, known_only: true}\n"),
                "map.yaml:9:22: the key of record type 'pair' has several fields"},
        Refusal{"JoinOfList", WithFields("    cc: {from: A, join: ', '}\n"),
                "map.yaml:9:19: 'join' is for values that are no list"},
        Refusal{"By", WithFields("    owner: {from: A, by: name}\n"),
                "map.yaml:9:22: record type 'user', which 'owner' refers to, has no field 'name'"},
        Refusal{"HistoryAsField", WithFields("    log: A\n"),
                "map.yaml:9:5: 'log' is the history; a step of its own makes it"},
        Refusal{"AttachmentsAsField", WithFields("    files: A\n"),
                "map.yaml:9:5: 'files' holds attachments; a step of its own"},
        Refusal{"DisplayId", WithFields("    id: A\n"),
                "map.yaml:9:5: 'id' gets its values from the database"},
        Refusal{"ModeOfHistory",
                "map: 1\nsources: {s: {files: s.csv}}\nsteps:\n- history: bug\n  source: s\n"
                "  mode: update\n  key: source_id\n  fields: {source_id: a, when: b}\n",
                "map.yaml:6:9: 'mode' does not go with a step that makes history"},
        Refusal{"FieldOfHistory",
                "map: 1\nsources: {s: {files: s.csv}}\nsteps:\n- history: bug\n  source: s\n"
                "  key: source_id\n  fields: {source_id: a, when: b, title: c}\n",
                "map.yaml:7:35: a step that makes history has no field 'title'; besides the key it "
                "has id, when, who, action, before, after"},
        Refusal{"AttachmentsWithoutField",
                "map: 1\nsources: {s: {files: s.csv}}\nsteps:\n- attachments: bug\n  source: s\n"
                "  key: source_id\n  fields: {source_id: a, path: b}\n",
                "map.yaml:4:3: the step 'attachments: bug' lacks 'field'"},
        Refusal{"TestOfNothing", WithFields("", "  when: [{from: A}]\n"),
                "map.yaml:7:10: a test of 'when' must have exactly one of"},
        Refusal{"Mode", WithFields("", "  mode: replace\n"),
                "map.yaml:7:9: 'mode' must be create, update or update_or_create"}),
    [](const auto& refusal) { return refusal.param.name; });

}  // namespace
}  // namespace tool
