#ifndef TOOL_SOURCES_MAPPED_MAP_NOTES_H
#define TOOL_SOURCES_MAPPED_MAP_NOTES_H

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <utility>

namespace tool {

// What a map does with values, or finds out about them, that is worth telling.
enum class MapNote {
    UnreadValue,      // at an address that nothing reads
    IgnoredValue,     // outside of the rows, at an address that the map leaves out
    OutsideValue,     // outside of the rows of a JSON document
    PassedOver,       // a row or item for which a test of `when` does not hold
    UnknownValue,     // one that its table lacks
    RepeatedKey,      // a record whose key came before
    DifferentRepeat,  // one of these that says something else
    LeftOut,          // a reference to what is not there
    RepeatedMember,   // a member of a JSON object that was named again
    ReplacedCharacter,
    CutText,
    DoubledTime,  // a local time that the clocks showed twice
};

// Counts notes by what they are about, with the place of the first one of each.
class MapNotes {
  public:
    struct Entry {
        std::uint64_t count = 0;
        std::string place;
    };
    using Key = std::pair<MapNote, std::string>;

    // `place` composes the place of what is read now; it is called for the first note of a subject.
    explicit MapNotes(std::function<std::string()> place) : m_place(std::move(place)) {}

    void Add(MapNote note, const std::string& subject, std::uint64_t count = 1);

    // By note and subject. Subjects past a limit are counted together, under an empty one.
    const std::map<Key, Entry>& All() const { return m_entries; }

  private:
    std::function<std::string()> m_place;
    std::map<Key, Entry> m_entries;
};

}  // namespace tool

#endif
