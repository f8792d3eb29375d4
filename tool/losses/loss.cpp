#include "tool/losses/loss.h"

#include <array>
#include <cstddef>

namespace tool {

namespace {

struct KindWords {
    std::string_view name;
    std::string_view title;
};

// In the order of LossKind.
constexpr std::array<KindWords, kLossKinds.size()> kWords = {{
    {"long-history-line", "history lines of seven or more columns"},
    {"history-beyond-limit", "history entries after the 501st of a record"},
    {"incomplete-attachment", "incomplete attachments"},
    {"unseen-record", "records that are not read as such"},
    {"nameless-field", "fields without a name"},
    {"nested-field", "fields inside another field"},
    {"unread-field", "fields after the place where the importer stops reading"},
    {"changed-text", "texts that the decoding of escapes changes"},
    {"skipped-field", "fields of a type that is never written"},
    {"repeated-field", "fields named more than once in a record"},
    {"cleared-value", "values BLANK in new records"},
    {"unused-field", "fields that history and attachment packets have no use for"},
    {"empty-packet", "packets without a record"},
    {"nothing-imported", "configurations under which nothing is imported"},
    {"unused-mapping", "mappings without an effect"},
    {"no-configuration", "packets before any configuration"},
    {"cut-short", "packets that are cut short"},
    {"outside-records", "places outside of records that are no markup"},
    {"unreachable-key", "keys that no reference can name"},
    {"mistaken-reference", "references that are taken for others"},
    {"unread-address", "columns and addresses that no step of the map reads"},
    {"missing-address", "addresses of the map that no row has"},
    {"replaced-character", "places where the map replaces control characters"},
    {"cut-text", "fields where the map cuts texts"},
}};

const KindWords& WordsOf(LossKind kind) {
    return kWords[static_cast<std::size_t>(kind)];
}

}  // namespace

std::string_view LossKindName(LossKind kind) {
    return WordsOf(kind).name;
}

std::string_view LossKindTitle(LossKind kind) {
    return WordsOf(kind).title;
}

bool IsToldByEveryLoad(LossKind kind) {
    return kind == LossKind::UnseenRecord || kind == LossKind::NothingImported ||
           kind == LossKind::CutShort || kind == LossKind::OutsideRecords ||
           kind == LossKind::UnreadAddress || kind == LossKind::MissingAddress ||
           kind == LossKind::ReplacedCharacter || kind == LossKind::CutText;
}

}  // namespace tool
