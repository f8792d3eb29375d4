#include "tool/packet/record_depth.h"

#include <algorithm>

#include "tool/packet/markup_sections.h"
#include "tool/packet/markup_text.h"

namespace tool {

namespace {

// A record with this few tags is not that deep, whatever they are: true of nearly every record.
bool HasFewTags(std::size_t limit, std::string_view record) {
    std::size_t count = 0;
    for (std::size_t at = record.find('<'); at != kNotFound; at = record.find('<', at + 1)) {
        if (++count > limit) {
            return false;
        }
    }
    return true;
}

std::string_view EndMark(SectionKind kind) {
    switch (kind) {
        case SectionKind::Comment:
            return "-->";
        case SectionKind::CData:
            return "]]>";
        default:
            return "?>";
    }
}

// The position after the section of `kind` at `at`; after its opening mark when it does not
// close.
std::size_t BehindSection(std::string_view record, SectionKind kind, std::size_t at) {
    const std::size_t from = at + OpeningLength(kind);
    const std::size_t end = record.find(EndMark(kind), from);
    return end == kNotFound ? from : end + EndMark(kind).size();
}

// The position of the ">" that ends the tag at `at`; one inside quotes does not. kNotFound when
// there is none before the next "<".
std::size_t TagEnd(std::string_view record, std::size_t at) {
    char quote = 0;
    for (++at; at < record.size() && record[at] != '<'; ++at) {
        const char c = record[at];
        if (quote != 0) {
            quote = c == quote ? '\0' : quote;
        } else if (c == '>') {
            return at;
        } else if (c == '"' || c == '\'') {
            quote = c;
        }
    }
    return kNotFound;
}

}  // namespace

bool IsNestedDeeperThan(std::size_t depth, std::string_view record) {
    if (HasFewTags(depth, record)) {
        return false;
    }
    std::size_t open = 0;
    std::size_t at = record.find('<');
    while (at != kNotFound) {
        const std::string_view rest = record.substr(at);
        if (const SectionKind kind = SectionAt(rest); kind != SectionKind::None) {
            at = record.find('<', BehindSection(record, kind, at));
            continue;
        }
        const std::size_t end = TagEnd(record, at);
        if (rest.starts_with("</")) {
            open -= std::min<std::size_t>(open, 1);
        } else if (end == kNotFound || record[end - 1] != '/') {
            ++open;
        }
        if (open > depth) {
            return true;
        }
        at = record.find('<', at + 1);
    }
    return false;
}

}  // namespace tool
