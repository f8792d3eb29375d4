#include "tool/sources/mapped/map_notes.h"

namespace tool {

namespace {

// Data that are used as names would make any number of subjects.
constexpr std::size_t kMostSubjects = 10000;

}  // namespace

void MapNotes::Add(MapNote note, const std::string& subject, std::uint64_t count) {
    auto found = m_entries.find({note, subject});
    if (found == m_entries.end()) {
        const bool isFull = m_entries.size() >= kMostSubjects;
        found = m_entries.try_emplace({note, isFull ? "" : subject}).first;
    }
    if (found->second.count == 0) {
        found->second.place = m_place();
    }
    found->second.count += count;
}

}  // namespace tool
