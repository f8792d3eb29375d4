#ifndef TOOL_SURVEY_DRAFT_H
#define TOOL_SURVEY_DRAFT_H

#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tool/survey/survey.h"

namespace tool {

// What the first schema and the first map for some data say: the record types, and which values
// they get. It is made so that all rows load as they are; where that cannot be known, or where a
// person may know better, notes say what to decide.

// A note in a draft.
struct DraftNote {
    std::string text;
    bool mustDecide = false;  // else it is for information
};

// A field that refers to the records of a type by one of the fields of that.
struct DraftReference {
    std::size_t type = 0;  // by position in Draft::types
    std::string field;
    bool isList = false;
    bool isLate = false;  // set when the records of all types are there
};

struct DraftField {
    std::string name;
    std::string kind = "text";  // as a schema file writes it
    bool isKey = false;
    bool isUnique = false;
    bool isState = false;
    std::vector<std::string> choices;
    std::optional<DraftReference> reference;
    std::string address;              // YAML: where the value stands
    std::string pattern;              // YAML: a template of several addresses, instead of one
    std::optional<std::string> date;  // its format
    std::optional<std::string> join;
    bool isList = false;     // takes all values at its address
    std::string suggestion;  // YAML: another type that would do
    std::vector<DraftNote> notes;

    // Whether the step that makes the records has a value for it: history has steps of its own.
    bool IsMapped() const { return !address.empty() || !pattern.empty(); }
};

struct DraftType {
    std::string name;
    std::size_t source = 0;          // by position in Survey::sources
    std::optional<AddressRef> each;  // the items that records are made of; none: the rows
    bool isRepeated = false;         // the same items come again and again
    std::string prefix;              // of display ids; empty for a type without states
    std::vector<std::string> states;
    std::vector<DraftField> fields;
    std::vector<DraftNote> notes;

    bool HasStates() const { return !states.empty(); }
    const DraftField* Key() const;
};

// A step that adds history to the records of a type, one entry for each item of a list.
struct DraftStep {
    std::size_t type = 0;  // whose records, by position in Draft::types
    AddressRef each;
    std::vector<std::pair<std::string, std::string>> values;  // YAML, by the names of their fields
    std::vector<DraftNote> notes;
};

// What is left out of a source.
struct DraftIgnored {
    std::string address;  // YAML
    DraftNote note;
};

struct DraftSource {
    std::string name;
    std::vector<DraftIgnored> ignored;
    std::vector<DraftNote> notes;
};

struct Draft {
    std::vector<DraftSource> sources;  // one for each of the survey
    std::vector<DraftType> types;
    std::vector<DraftStep> history;
    std::vector<std::size_t> order;  // of types, so that what is referred to comes first
    bool needsZone = false;
};

// Makes the draft for what has been found out.
Draft MakeDraft(const Survey& survey);

}  // namespace tool

#endif
