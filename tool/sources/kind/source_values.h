#ifndef TOOL_SOURCES_KIND_SOURCE_VALUES_H
#define TOOL_SOURCES_KIND_SOURCE_VALUES_H

#include <string>
#include <vector>

namespace tool {

// What a record says, as the source has it: the values themselves, whatever the packet that carries
// them has to write for them. Texts in UTF-8 without NUL.

// A field of the record type, or one of the names that stand for the state and the duplicate
// reference. A field that is no reference list has one value; a field without a value is left out.
struct SourceField {
    std::string name;
    std::vector<std::string> values;
    bool isList = false;

    bool operator==(const SourceField&) const = default;
};

struct SourceHistoryEntry {
    std::string id;
    std::string when;
    std::string who;
    std::string action;
    std::string before;
    std::string after;

    bool operator==(const SourceHistoryEntry&) const = default;
};

struct SourceAttachment {
    std::string id;
    std::string path;
    std::string size;
    std::string description;

    bool operator==(const SourceAttachment&) const = default;
};

struct SourceValues {
    std::vector<SourceField> fields;
    std::vector<SourceHistoryEntry> history;
    std::string attachmentsField;  // that the attachments belong to; empty without any
    std::vector<SourceAttachment> attachments;

    bool operator==(const SourceValues&) const = default;
};

}  // namespace tool

#endif
