#ifndef ZTIMPORTER_PLAINRECORD_H
#define ZTIMPORTER_PLAINRECORD_H

#include <optional>
#include <string_view>
#include <vector>

// What plain markup says, taken from the text itself. That costs a third of what the tokens of a
// stream do, and nearly all packets are plain. Where a text is not, these functions say so, and the
// stream decides on it: on what is odd as well as on what is wrong.

struct PlainField {
    std::string_view name;
    std::string_view text;  // as it is written, escapes in place
};

// Replaces `fields` by those of the record with which `packet` begins, views of it. False when they
// are not all plain, or the record holds anything but fields with a name that hold nothing but
// text; `fields` is then unspecified.
bool ReadPlainRecord(std::string_view packet, std::vector<PlainField>& fields);

// Whether the packet is configuration: whether a start tag of that name is among the start tags
// that it begins with. Nothing when these are not all plain.
std::optional<bool> IsPlainConfiguration(std::string_view packet, std::string_view tagName);

#endif
