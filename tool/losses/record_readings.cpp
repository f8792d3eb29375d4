#include "tool/losses/record_readings.h"

#include <algorithm>
#include <numeric>
#include <stdexcept>
#include <string_view>

#include "tool/packet/importer_text.h"

namespace tool {

namespace {

// An order in which names that differ in case only are next to each other.
bool IsBefore(std::string_view a, std::string_view b) {
    const int order = CompareNoCase(a, b);
    return order < 0 || (order == 0 && a < b);
}

// More than the longest escape of the packet format has.
constexpr std::size_t kLongestEscape = 16;

bool HoldsPacketEscape(std::string_view text) {
    return text.find('&') != std::string_view::npos && DecodePacketEscapes(text) != text;
}

[[noreturn]] void ThrowDisagreement() {
    throw std::logic_error("the importer reads other fields of a record than are expected of it");
}

}  // namespace

std::string RecordReadings::Read(const SourceRecord& record) {
    if (record.defect != RecordDefect::None) {
        return record.error;
    }
    m_elements.Read(record.raw);
    if (!TakePlainRecord(record.raw)) {
        if (std::string problem = m_reader.Read(record.packet, m_fields); !problem.empty()) {
            return problem;
        }
        SortNames();
    }
    MatchParts();
    GroupSpellings();
    return {};
}

// The importer's parser takes most of the time. What it reads of a record is known without it when
// the record is nothing but fields side by side, each of another name, whose texts hold nothing
// that it could decode in its own way.
bool RecordReadings::TakePlainRecord(std::string_view record) {
    if (m_elements.Stop() != RecordElements::StopCause::None || !HasOnlyPacketEscapes(record)) {
        return false;
    }
    m_fields.resize(m_elements.Count());
    for (std::size_t index = 0; index < m_elements.Count(); ++index) {
        const RecordPart& part = m_elements.Part(index);
        if (part.holdsElement || HoldsPacketEscape(part.text)) {
            return false;
        }
        m_fields[index].name = part.name;
        m_fields[index].value = part.text;
    }
    SortNames();
    return !HasRepeatedName();
}

// A carriage return cannot be passed over either: XML and the importer read it differently.
bool RecordReadings::HasOnlyPacketEscapes(std::string_view record) {
    if (record.find('\r') != std::string_view::npos) {
        return false;
    }
    for (std::size_t at = record.find('&'); at != std::string_view::npos;
         at = record.find('&', at + 1)) {
        if (!StartsWithEscape(record.substr(at))) {
            return false;
        }
    }
    return true;
}

// Only the importer's parser knows which escapes there are. It is asked once for each that occurs.
bool RecordReadings::StartsWithEscape(std::string_view text) {
    const std::string_view beginning = text.substr(0, kLongestEscape);
    const std::string_view reference = beginning.substr(0, beginning.find(';') + 1);
    if (std::find(m_escapes.begin(), m_escapes.end(), reference) != m_escapes.end()) {
        return true;
    }
    const bool isOne = DecodePacketEscapes(reference).size() == 1;
    if (isOne) {
        m_escapes.emplace_back(reference);
    }
    return isOne;
}

bool RecordReadings::HasRepeatedName() const {
    return std::adjacent_find(m_byName.begin(), m_byName.end(),
                              [this](std::size_t a, std::size_t b) {
                                  return m_fields[a].name == m_fields[b].name;
                              }) != m_byName.end();
}

void RecordReadings::SortNames() {
    m_byName.resize(m_fields.size());
    std::iota(m_byName.begin(), m_byName.end(), std::size_t{0});
    std::sort(m_byName.begin(), m_byName.end(), [this](std::size_t a, std::size_t b) {
        return IsBefore(m_fields[a].name, m_fields[b].name);
    });
}

void RecordReadings::MatchParts() {
    m_partOf.assign(m_fields.size(), RecordPart::kNone);
    m_overwritten.clear();
    std::size_t expected = 0;
    for (std::size_t index = 0; index < m_elements.Count(); ++index) {
        const RecordPart& part = m_elements.Part(index);
        if (!part.read) {
            continue;
        }
        const std::size_t field = FieldOf(part, expected);
        if (m_partOf[field] == RecordPart::kNone) {
            ++expected;
        } else {
            m_overwritten.push_back({m_partOf[field], field});
        }
        m_partOf[field] = index;
    }
    if (expected != m_fields.size()) {
        ThrowDisagreement();
    }
}

// The fields stand in the order in which their names first occur, so the one that is expected next
// is nearly always right.
std::size_t RecordReadings::FieldOf(const RecordPart& part, std::size_t expected) const {
    if (expected < m_fields.size() && m_fields[expected].name == part.name) {
        return expected;
    }
    const auto found = std::lower_bound(m_byName.begin(), m_byName.end(), part.name,
                                        [this](std::size_t field, const std::string& name) {
                                            return IsBefore(m_fields[field].name, name);
                                        });
    if (found == m_byName.end() || m_fields[*found].name != part.name) {
        ThrowDisagreement();
    }
    return *found;
}

void RecordReadings::GroupSpellings() {
    m_spellings.clear();
    for (std::size_t first = 0; first < m_byName.size();) {
        const std::string& name = m_fields[m_byName[first]].name;
        std::size_t last = first + 1;
        while (last < m_byName.size() && CompareNoCase(m_fields[m_byName[last]].name, name) == 0) {
            ++last;
        }
        if (last - first > 1) {
            auto& group =
                m_spellings.emplace_back(m_byName.begin() + static_cast<std::ptrdiff_t>(first),
                                         m_byName.begin() + static_cast<std::ptrdiff_t>(last));
            std::sort(group.begin(), group.end());
        }
        first = last;
    }
}

}  // namespace tool
