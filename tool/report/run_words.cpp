#include "tool/report/run_words.h"

#include <fmt/format.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "tool/text/number_text.h"

namespace tool {

namespace {

// What is lost by losses of a kind, as the verdict counts it.
enum class Lost { Value, Record, Packet, Mapping, Whole, Place, Key, Address };

Lost LostBy(LossKind kind) {
    switch (kind) {
        case LossKind::UnseenRecord:
            return Lost::Record;
        case LossKind::EmptyPacket:
        case LossKind::NothingImported:
        case LossKind::NoConfiguration:
            return Lost::Packet;
        case LossKind::UnusedMapping:
            return Lost::Mapping;
        case LossKind::CutShort:
            return Lost::Whole;
        case LossKind::OutsideRecords:
            return Lost::Place;
        case LossKind::UnreachableKey:
            return Lost::Key;
        case LossKind::UnreadAddress:
        case LossKind::MissingAddress:
        case LossKind::ReplacedCharacter:
        case LossKind::CutText:
            return Lost::Address;
        default:
            return Lost::Value;
    }
}

std::uint64_t NumberOf(Lost lost, const LossLog& losses) {
    std::uint64_t count = 0;
    for (const LossKind kind : kLossKinds) {
        count += LostBy(kind) == lost ? losses.Count(kind) : 0;
    }
    return count;
}

// One part of the verdict: something happens to a number of things.
struct Part {
    std::uint64_t number;
    std::string_view singular;
    std::string_view plural;
    std::string_view fate;
};

std::string Joined(const std::vector<Part>& parts) {
    std::string text;
    for (std::size_t i = 0; i < parts.size(); ++i) {
        const Part& part = parts[i];
        if (i > 0) {
            text += i + 1 == parts.size() ? " and " : ", ";
        }
        text += fmt::format("{}{} {}", CountOf(part.number, part.singular, part.plural),
                            i == 0 ? " would be" : "", part.fate);
    }
    return text;
}

}  // namespace

std::string TotalsText(const LoadTotals& totals, std::string_view would) {
    return fmt::format(
        "{} read: {} {}created, {} updated, {} rejected, {} skipped\n"
        "{}, {}, {}\n"
        "{}{}"
        "{:.1f} seconds, {:.0f} records per second\n",
        CountOf(totals.read, "record"), Grouped(totals.created), would, Grouped(totals.updated),
        Grouped(totals.rejected), Grouped(totals.skipped),
        CountOf(totals.history, "history entry", "history entries"),
        CountOf(totals.attachments, "attachment"), CountOf(totals.duplicates, "duplicate mark"),
        totals.waited == 0 ? std::string()
                           : CountOf(totals.waited, "record") + " waited for others\n",
        totals.retried == 0 ? std::string()
                            : CountOf(totals.retried, "group of records was done again",
                                      "groups of records were done again") +
                                  " after failures that passed\n",
        totals.seconds, static_cast<double>(totals.read) / std::max(totals.seconds, 0.001));
}

std::string PasteText(const MapFinding& finding, std::string_view map) {
    return fmt::format("To be pasted into {} ({}):\n{}", map, finding.text, finding.paste);
}

std::string Verdict(const Rehearsed& rehearsed, const LossLog& losses) {
    std::vector<Part> parts = {
        {rehearsed.rejected, "record", "records", "rejected"},
        {rehearsed.rejectedBefore, "record of an earlier load", "records of an earlier load",
         "left rejected"},
        {NumberOf(Lost::Value, losses), "value", "values", "lost"},
        {NumberOf(Lost::Record, losses), "record", "records", "overlooked"},
        {NumberOf(Lost::Packet, losses), "packet", "packets", "of no effect"},
        {NumberOf(Lost::Mapping, losses), "mapping", "mappings", "of no effect"},
        {NumberOf(Lost::Whole, losses), "packet", "packets", "imported although cut short"},
        {NumberOf(Lost::Place, losses), "place", "places", "passed over outside of records"},
        {NumberOf(Lost::Key, losses), "key", "keys", "out of reach of references"},
        {NumberOf(Lost::Address, losses), "column or address", "columns and addresses",
         "lost in part or whole by the map"}};
    std::erase_if(parts, [](const Part& part) { return part.number == 0; });
    const std::string_view start = rehearsed.complete ? "" : "Up to here: ";
    if (parts.empty()) {
        return fmt::format("{}Nothing would be lost or rejected.", start);
    }
    return fmt::format("{}{}.", start, Joined(parts));
}

}  // namespace tool
