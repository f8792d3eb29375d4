#include "tool/losses/record_readings.h"

#include <algorithm>
#include <numeric>
#include <stdexcept>
#include <string_view>

#include "tool/packet/record_fields.h"

namespace tool {

namespace {

char Lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

int CompareNoCase(std::string_view a, std::string_view b) {
    const std::size_t common = std::min(a.size(), b.size());
    for (std::size_t i = 0; i < common; ++i) {
        const char x = Lower(a[i]);
        const char y = Lower(b[i]);
        if (x != y) {
            return x < y ? -1 : 1;
        }
    }
    return a.size() == b.size() ? 0 : (a.size() < b.size() ? -1 : 1);
}

// Names that differ in case only are neighbours.
bool IsBefore(std::string_view a, std::string_view b) {
    const int order = CompareNoCase(a, b);
    return order < 0 || (order == 0 && a < b);
}

bool HoldsPacketEscape(std::string_view text) {
    return text.find('&') != std::string_view::npos && DecodePacketEscapes(text) != text;
}

// A carriage return is one of the things that XML and the importer read differently.
bool HasOnlyPacketEscapes(std::string_view record) {
    if (record.find('\r') != std::string_view::npos) {
        return false;
    }
    for (std::size_t at = record.find('&'); at != std::string_view::npos;
         at = record.find('&', at + 1)) {
        if (!StartsWithPacketEscape(record.substr(at))) {
            return false;
        }
    }
    return true;
}

[[noreturn]] void ThrowDisagreement() {
    throw std::logic_error("the importer reads other fields of a record than are expected of it");
}

}  // namespace

bool RecordReadings::Read(const SourceRecord& record) {
    if (record.defect != RecordDefect::None) {
        return false;
    }
    m_elements.Read(record.raw);
    if (!TakePlainRecord(record.raw)) {
        if (!m_fields.Read(record.packet)) {
            return false;
        }
        SortNames();
    }
    MatchParts();
    GroupSpellings();
    return true;
}

// The importer's parser takes most of the time. What it reads of a record is known without it when
// the record is nothing but fields side by side, each of another name, whose texts hold nothing
// that it could decode in its own way.
bool RecordReadings::TakePlainRecord(std::string_view record) {
    if (m_elements.Stop() != RecordElements::StopCause::None || !HasOnlyPacketEscapes(record)) {
        return false;
    }
    m_fields.Clear();
    for (std::size_t index = 0; index < m_elements.Count(); ++index) {
        const RecordPart& part = m_elements.Part(index);
        if (part.holdsElement || HoldsPacketEscape(part.text)) {
            return false;
        }
        m_fields.Add(part.name, part.text);
    }
    SortNames();
    return !HasRepeatedName();
}

bool RecordReadings::HasRepeatedName() const {
    return std::adjacent_find(m_byName.begin(), m_byName.end(),
                              [this](std::size_t a, std::size_t b) {
                                  return m_fields.At(a).name == m_fields.At(b).name;
                              }) != m_byName.end();
}

void RecordReadings::SortNames() {
    m_byName.resize(m_fields.Count());
    std::iota(m_byName.begin(), m_byName.end(), std::size_t{0});
    std::sort(m_byName.begin(), m_byName.end(), [this](std::size_t a, std::size_t b) {
        return IsBefore(m_fields.At(a).name, m_fields.At(b).name);
    });
}

void RecordReadings::MatchParts() {
    m_partOf.assign(m_fields.Count(), RecordPart::none);
    m_overwritten.clear();
    std::size_t expected = 0;
    for (std::size_t index = 0; index < m_elements.Count(); ++index) {
        const RecordPart& part = m_elements.Part(index);
        if (!part.read) {
            continue;
        }
        const std::size_t field = FieldOf(part, expected);
        if (m_partOf[field] == RecordPart::none) {
            ++expected;
        } else {
            m_overwritten.push_back({m_partOf[field], field});
        }
        m_partOf[field] = index;
    }
    if (expected != m_fields.Count()) {
        ThrowDisagreement();
    }
}

// The fields stand in the order in which their names first occur, so the next one that is new is
// nearly always the one.
std::size_t RecordReadings::FieldOf(const RecordPart& part, std::size_t expected) const {
    if (expected < m_fields.Count() && m_fields.At(expected).name == part.name) {
        return expected;
    }
    const auto found = std::lower_bound(m_byName.begin(), m_byName.end(), part.name,
                                        [this](std::size_t field, const std::string& name) {
                                            return IsBefore(m_fields.At(field).name, name);
                                        });
    if (found == m_byName.end() || m_fields.At(*found).name != part.name) {
        ThrowDisagreement();
    }
    return *found;
}

void RecordReadings::GroupSpellings() {
    m_spellings.clear();
    for (std::size_t first = 0; first < m_byName.size();) {
        const std::string& name = m_fields.At(m_byName[first]).name;
        std::size_t last = first + 1;
        while (last < m_byName.size() &&
               CompareNoCase(m_fields.At(m_byName[last]).name, name) == 0) {
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
