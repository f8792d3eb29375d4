#include "ztimporter/plainrecord.h"

#include <cstddef>

#include "platform/xmlstream/plain_reader.h"

namespace {

using Result = PlainReader::Result;

bool IsWhiteSpace(std::string_view text) {
    return text.find_first_not_of(" \t\r\n") == std::string_view::npos;
}

}  // namespace

bool ReadPlainRecord(std::string_view packet, std::vector<PlainField>& fields) {
    fields.clear();
    std::size_t at = 0;
    PlainReader::Tag tag;
    if (PlainReader::ReadTag(packet, at, tag) != Result::kRead || tag.isEnd ||
        tag.name != "record" || !tag.attribute.empty() || !IsWhiteSpace(tag.before)) {
        return false;
    }
    for (;;) {
        if (PlainReader::ReadTag(packet, at, tag) != Result::kRead || !IsWhiteSpace(tag.before)) {
            return false;
        }
        if (tag.isEnd) {
            // An empty record may hold white space that is no layout.
            return tag.name == "record" && !fields.empty();
        }
        const std::string_view element = tag.name;
        if (tag.attribute != "name") {
            return false;
        }
        fields.push_back({tag.value, {}});
        if (PlainReader::ReadTag(packet, at, tag) != Result::kRead || !tag.isEnd ||
            tag.name != element) {
            return false;
        }
        fields.back().text = tag.before;
    }
}

std::optional<bool> IsPlainConfiguration(std::string_view packet, std::string_view tagName) {
    std::size_t at = 0;
    PlainReader::Tag tag;
    for (std::size_t depth = 0; depth < PlainReader::kDeepest; ++depth) {
        if (PlainReader::ReadTag(packet, at, tag) != Result::kRead) {
            return std::nullopt;
        }
        if (!IsWhiteSpace(tag.before)) {
            return false;
        }
        if (tag.isEnd) {
            return std::nullopt;
        }
        if (tag.name == tagName) {
            return true;
        }
    }
    return std::nullopt;
}
