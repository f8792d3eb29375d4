#ifndef PLATFORM_FOUNDATION_CMAPSTRINGTOSTRING_H
#define PLATFORM_FOUNDATION_CMAPSTRINGTOSTRING_H

#include <cstddef>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "platform/foundation/obx_string.h"

// A map from string to string; keys are compared exactly. A walk visits the entries in the order in
// which their keys were first set. During a walk the entry that it has just returned may be removed
// and values may be replaced without disturbing it; any other change ends the walk.
class CMapStringToString {
  public:
    // Where a walk stands: the entry that GetNextAssoc returns next, or null at the end.
    using Position = const void*;

    // `blockSize` is a hint: how many entries to make room for at first.
    explicit CMapStringToString(int blockSize = 10) : m_blockSize(blockSize) {}
    CMapStringToString(const CMapStringToString&) = delete;
    CMapStringToString& operator=(const CMapStringToString&) = delete;

    // Inserts the pair, or replaces the value of an existing key (which keeps its place).
    void SetAt(const Obx_String& key, const Obx_String& value);
    void SetAt(const Obx_String& key, Obx_String&& value);

    // The value of a key, valid until the map is changed; null when the key is not there.
    const Obx_String* Find(const Obx_String& key) const;

    // True and the value when the key is there; else false, and `value` is left as it was.
    bool Lookup(const Obx_String& key, Obx_String& value) const;

    // True when the key was there.
    bool RemoveKey(const Obx_String& key);
    void RemoveAll();

    int GetCount() const { return static_cast<int>(m_count); }
    bool IsEmpty() const { return m_count == 0; }

    // The position of the first entry, or null when the map is empty.
    Position GetStartPosition() const { return NextUsed(0); }

    // Copies out the entry at `position`, which must not be null, and moves on to the next.
    void GetNextAssoc(Position& position, Obx_String& key, Obx_String& value) const;

    // The same without copies: key and value are valid until the map is changed.
    struct Entry {
        const Obx_String& key;
        const Obx_String& value;
    };
    Entry Next(Position& position) const;

  private:
    struct Slot {
        Obx_String key;
        Obx_String value;
        bool used = false;
    };

    // The slot at or after the index that is in use, or null.
    const Slot* NextUsed(std::size_t first) const;
    const Slot* FindSlot(const Obx_String& key) const;
    // The slot of that key; if there is none, a spare one with that key, for Use.
    Slot& SlotFor(const Obx_String& key);
    void Use(Slot& slot);
    std::size_t IndexOf(const Slot* slot) const;
    void Discard(Slot& slot);
    void MakeRoom();
    void BuildIndex();

    int m_blockSize;
    // The entries in order, with holes where one was removed. The slots after m_end are spare: one
    // map is filled and emptied for each record, and texts that keep their memory save allocations.
    std::vector<Slot> m_slots;
    std::size_t m_end = 0;
    std::size_t m_count = 0;
    // Records have a dozen fields, for which a walk along the slots is faster than hashing; the
    // index is kept only while the map is larger than that.
    std::unordered_map<std::u16string_view, const Slot*> m_index;
};

#endif
