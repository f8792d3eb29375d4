#ifndef PLATFORM_FOUNDATION_CMAPSTRINGTOSTRING_H
#define PLATFORM_FOUNDATION_CMAPSTRINGTOSTRING_H

#include <list>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "platform/foundation/obx_string.h"

// A map from string to string; keys are compared exactly. A walk visits the entries in the order in
// which their keys were first set, and removing the entry that a walk has just returned does not
// disturb the walk.
class CMapStringToString {
  public:
    // Where a walk stands: the entry that GetNextAssoc returns next, or null at the end.
    using Position = const void*;

    // `blockSize` is a hint: how many entries to make room for at a time.
    explicit CMapStringToString(int blockSize = 10) : m_blockSize(blockSize) {}
    CMapStringToString(const CMapStringToString&) = delete;
    CMapStringToString& operator=(const CMapStringToString&) = delete;

    // Inserts the pair, or replaces the value of an existing key (which keeps its place).
    void SetAt(const Obx_String& key, const Obx_String& value);

    // True and the value when the key is there; else false, and `value` is left as it was.
    bool Lookup(const Obx_String& key, Obx_String& value) const;

    // True when the key was there.
    bool RemoveKey(const Obx_String& key);
    void RemoveAll();

    int GetCount() const { return static_cast<int>(m_entries.size()); }
    bool IsEmpty() const { return m_entries.empty(); }

    // The position of the first entry, or null when the map is empty.
    Position GetStartPosition() const;

    // Copies out the entry at `position`, which must not be null, and moves on to the next.
    void GetNextAssoc(Position& position, Obx_String& key, Obx_String& value) const;

  private:
    struct Entry {
        Obx_String key;
        Obx_String value;
        std::list<Entry>::iterator self;
    };

    Entry* Find(const Obx_String& key) const;
    void BuildIndex();

    int m_blockSize;
    std::list<Entry> m_entries;
    // Records have a dozen fields, for which a walk along the list is faster than hashing; the
    // index is kept only while the map is larger than that.
    std::unordered_map<std::u16string_view, Entry*> m_index;
};

#endif
