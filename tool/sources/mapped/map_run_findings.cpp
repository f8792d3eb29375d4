#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <array>
#include <map>
#include <string_view>

#include "tool/sources/mapped/map_run.h"
#include "tool/text/number_text.h"

namespace tool {

namespace {

constexpr std::size_t kShownFiles = 5;

std::string First(const std::string& place) {
    return place.empty() ? "" : ", first in " + place;
}

// `text` as a YAML scalar on one line.
std::string AsYaml(const std::string& text) {
    std::string quoted = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\') {
            quoted += '\\';
            quoted += c;
        } else if (static_cast<unsigned char>(c) < 0x20U) {
            quoted += fmt::format("\\x{:02X}", static_cast<unsigned>(c));
        } else {
            quoted += c;
        }
    }
    return quoted + '"';
}

MapFinding UnreadFiles(const std::vector<std::string>& files, std::string_view saying) {
    MapFinding finding{FindingWeight::Note, "unread-file", "", files.size(), "", ""};
    const auto last =
        files.begin() + static_cast<std::ptrdiff_t>(std::min(files.size(), kShownFiles));
    finding.text =
        fmt::format("not read{}: {}, {}{}", saying, CountOf(files.size(), "file"),
                    fmt::join(files.begin(), last, ", "), files.size() > kShownFiles ? " ..." : "");
    return finding;
}

// How much there is to a note, and the word for it in reports that programs read.
struct NoteKind {
    MapNote note;
    FindingWeight weight;
    std::string_view word;
};

constexpr std::array kNoteKinds = {
    NoteKind{MapNote::OutsideValue, FindingWeight::Loss, "unread-address"},
    NoteKind{MapNote::IgnoredValue, FindingWeight::Count, "ignored-address"},
    NoteKind{MapNote::PassedOver, FindingWeight::Count, "passed-over"},
    NoteKind{MapNote::UnknownValue, FindingWeight::Note, "unknown-value"},
    NoteKind{MapNote::RepeatedKey, FindingWeight::Count, "repeated-key"},
    NoteKind{MapNote::DifferentRepeat, FindingWeight::Note, "different-repeat"},
    NoteKind{MapNote::LeftOut, FindingWeight::Note, "left-out"},
    NoteKind{MapNote::RepeatedMember, FindingWeight::Note, "repeated-member"},
    NoteKind{MapNote::ReplacedCharacter, FindingWeight::Loss, "replaced-character"},
    NoteKind{MapNote::CutText, FindingWeight::Loss, "cut-text"},
    NoteKind{MapNote::DoubledTime, FindingWeight::Note, "doubled-time"}};

MapFinding FindingOf(MapNote note, const MapNotes::Entry& entry, std::string text) {
    const auto* const kind =
        std::find_if(kNoteKinds.begin(), kNoteKinds.end(),
                     [note](const NoteKind& candidate) { return candidate.note == note; });
    return {kind->weight, std::string(kind->word), entry.place, entry.count, std::move(text), ""};
}

// The text of a note that is a finding by itself. Those of other kinds are put together, several in
// one finding.
std::string TextOf(MapNote note, const std::string& subject, const MapNotes::Entry& entry) {
    const std::uint64_t count = entry.count;
    const std::string first = First(entry.place);
    switch (note) {
        case MapNote::OutsideValue:
            return fmt::format("no step reads {}, which stands outside of the rows ({})", subject,
                               CountOf(count, "value"));
        case MapNote::IgnoredValue:
            return fmt::format("{} outside of the rows is left out by the map ({})", subject,
                               CountOf(count, "value"));
        case MapNote::PassedOver:
            return fmt::format("{}: {} passed over by 'when'", subject, CountOf(count, "row"));
        case MapNote::RepeatedKey:
            return fmt::format("{}: {} came again, and the first of each was taken", subject,
                               CountOf(count, "key"));
        case MapNote::LeftOut:
            return fmt::format(
                "{}: {} to what is neither in the sources nor in the database left out", subject,
                CountOf(count, "reference"));
        case MapNote::RepeatedMember:
            return fmt::format(
                "the member \"{}\" of an object is named again ({}{}); the last one counts",
                subject, CountOf(count, "time"), first);
        case MapNote::ReplacedCharacter:
            return fmt::format("{}: {} replaced by U+FFFD{}", subject,
                               CountOf(count, "control character"), first);
        case MapNote::CutText:
            return fmt::format("{}: {} cut{}", subject, CountOf(count, "text"), first);
        default:
            return fmt::format("{}: {} that the clocks showed twice taken as the first{}", subject,
                               CountOf(count, "local time"), first);
    }
}

// Values that tables lack, and repeats that differ, are many notes about one thing.
struct Gathered {
    std::uint64_t count = 0;
    std::string place;
    std::vector<std::string> details;
};

}  // namespace

MapFindings MapRun::Findings() const {
    MapFindings findings;
    if (!m_inputs.unread.empty()) {
        findings.all.push_back(UnreadFiles(m_inputs.unread, ""));
    }
    if (!m_inputs.unreadable.empty()) {
        findings.all.push_back(UnreadFiles(
            m_inputs.unreadable, ", being pipes, devices, or links that lead to no file"));
    }
    for (std::size_t source = 0; source < m_map.sources.size(); ++source) {
        AddTallyFindings(source, findings);
    }
    AddNoteFindings(findings);
    return findings;
}

void MapRun::AddTallyFindings(std::size_t source, MapFindings& findings) const {
    const AddressTally& tally = *m_tallies[source];
    const std::string& name = m_map.sources[source].name;
    for (const AddressTally::Unread& unread : tally.AllUnread()) {
        findings.all.push_back(
            {FindingWeight::Loss, "unread-address", unread.place, unread.values,
             fmt::format("no step reads {} of {} ({}{})", unread.address, name,
                         CountOf(unread.values, "value"), First(unread.place)),
             fmt::format("ignore: [{}]   # of source {}", AsYaml(unread.address), name)});
    }
    if (const AddressTally::Unread& beyond = tally.UnreadBeyond(); beyond.values > 0) {
        findings.all.push_back(
            {FindingWeight::Loss, "unread-address", beyond.place, beyond.values,
             fmt::format("no step reads {} at further addresses of {}, of which there are too many "
                         "to name each{}",
                         CountOf(beyond.values, "value"), name, First(beyond.place)),
             ""});
    }
    for (const AddressTally::Known& known : tally.AllKnown()) {
        if (known.isIgnored) {
            findings.ignored += known.values;
            if (known.values > 0) {
                findings.all.push_back(
                    {FindingWeight::Count, "ignored-address", "", known.values,
                     fmt::format("{} of {} is left out by the map ({})", known.address->text, name,
                                 CountOf(known.values, "value")),
                     ""});
            }
        }
        if (!known.isFound && !known.address->isOptional && tally.Rows() > 0) {
            const MapAddress& address = *known.address;
            findings.all.push_back(
                {known.isIgnored ? FindingWeight::Note : FindingWeight::Loss, "missing-address",
                 m_map.name, 0,
                 fmt::format("no row of {} has {}, which {} in line {}, column {}; {}", name,
                             address.text, known.isIgnored ? "is to be ignored" : "is read",
                             address.place.line, address.place.column,
                             known.isIgnored ? "correct it, or take it out"
                                             : "correct it, or say optional: true there"),
                 ""});
        }
    }
}

void MapRun::AddNoteFindings(MapFindings& findings) const {
    std::map<std::pair<MapNote, std::string>, Gathered> gathered;
    for (const auto& [key, entry] : m_notes.All()) {
        const auto& [note, subject] = key;
        if (note != MapNote::UnknownValue && note != MapNote::DifferentRepeat) {
            findings.all.push_back(
                FindingOf(note, entry, TextOf(note, subject.empty() ? "others" : subject, entry)));
            findings.ignored += note == MapNote::IgnoredValue ? entry.count : 0;
            continue;
        }
        const std::size_t end = subject.find('\n');
        Gathered& one = gathered[{note, subject.substr(0, end)}];
        one.place = one.count == 0 ? entry.place : one.place;
        one.count += entry.count;
        if (end != subject.npos) {
            const std::string detail = subject.substr(end + 1);
            one.details.push_back(
                note == MapNote::UnknownValue
                    ? fmt::format("{}: ?   # {}", AsYaml(detail), CountOf(entry.count, "time"))
                    : fmt::format("{}, and differs in {}", detail, entry.place));
        }
    }
    for (const auto& [key, one] : gathered) {
        const auto& [note, subject] = key;
        const MapNotes::Entry entry{one.count, one.place};
        if (note == MapNote::UnknownValue) {
            findings.all.push_back(
                FindingOf(note, entry,
                          fmt::format("the table {} lacks {}, in {}{}", subject,
                                      CountOf(one.details.size(), "value"),
                                      CountOf(one.count, "place"), First(one.place))));
            findings.all.back().paste = fmt::format("{}", fmt::join(one.details, "\n"));
        } else {
            findings.all.push_back(
                FindingOf(note, entry,
                          fmt::format("{}: {} came again and said something else: {}", subject,
                                      CountOf(one.count, "key"),
                                      one.details.empty() ? std::string() : one.details.front())));
        }
    }
}

}  // namespace tool
