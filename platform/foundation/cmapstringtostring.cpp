#include "platform/foundation/cmapstringtostring.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace {

constexpr std::size_t kLargestWithoutIndex = 24;

// Spare slots keep the memory of their texts, but not that of a huge one.
constexpr int kLongestSpareText = 4096;

void LetGoOfHugeText(Obx_String& text) {
    if (text.GetLength() > kLongestSpareText) {
        const Obx_String freed(std::move(text));
    }
}

// The library compares units one by one. Names of the same length mostly end in different ways.
bool IsSame(std::u16string_view a, std::u16string_view b) {
    return a.size() == b.size() &&
           (a.empty() || (a.back() == b.back() &&
                          std::memcmp(a.data(), b.data(), a.size() * sizeof(char16_t)) == 0));
}

}  // namespace

void CMapStringToString::SetAt(const Obx_String& key, const Obx_String& value) {
    Slot& slot = SlotFor(key);
    slot.value = value;
    Use(slot);
}

void CMapStringToString::SetAt(const Obx_String& key, Obx_String&& value) {
    Slot& slot = SlotFor(key);
    slot.value = std::move(value);
    Use(slot);
}

const Obx_String* CMapStringToString::Find(const Obx_String& key) const {
    const Slot* slot = FindSlot(key);
    return slot != nullptr ? &slot->value : nullptr;
}

bool CMapStringToString::Lookup(const Obx_String& key, Obx_String& value) const {
    const Slot* slot = FindSlot(key);
    if (slot == nullptr) {
        return false;
    }
    value = slot->value;
    return true;
}

bool CMapStringToString::RemoveKey(const Obx_String& key) {
    const Slot* slot = FindSlot(key);
    if (slot == nullptr) {
        return false;
    }
    m_index.erase(slot->key.View());
    Discard(m_slots[IndexOf(slot)]);
    --m_count;
    if (m_count == 0) {
        m_end = 0;
    }
    return true;
}

void CMapStringToString::RemoveAll() {
    m_index.clear();
    for (; m_end > 0; --m_end) {
        Discard(m_slots[m_end - 1]);
    }
    m_count = 0;
}

void CMapStringToString::GetNextAssoc(Position& position, Obx_String& key,
                                      Obx_String& value) const {
    const Entry entry = Next(position);
    key = entry.key;
    value = entry.value;
}

CMapStringToString::Entry CMapStringToString::Next(Position& position) const {
    const auto* slot = static_cast<const Slot*>(position);
    position = NextUsed(IndexOf(slot) + 1);
    return {slot->key, slot->value};
}

const CMapStringToString::Slot* CMapStringToString::NextUsed(std::size_t first) const {
    while (first < m_end && !m_slots[first].used) {
        ++first;
    }
    return first < m_end ? &m_slots[first] : nullptr;
}

const CMapStringToString::Slot* CMapStringToString::FindSlot(const Obx_String& key) const {
    if (!m_index.empty()) {
        const auto found = m_index.find(key.View());
        return found == m_index.end() ? nullptr : found->second;
    }
    for (std::size_t i = 0; i < m_end; ++i) {
        if (m_slots[i].used && IsSame(m_slots[i].key.View(), key.View())) {
            return &m_slots[i];
        }
    }
    return nullptr;
}

CMapStringToString::Slot& CMapStringToString::SlotFor(const Obx_String& key) {
    if (const Slot* slot = FindSlot(key)) {
        return m_slots[IndexOf(slot)];
    }
    if (m_end == m_slots.size()) {
        MakeRoom();
    }
    m_slots[m_end].key = key;
    return m_slots[m_end];
}

void CMapStringToString::Use(Slot& slot) {
    if (slot.used) {
        return;
    }
    slot.used = true;
    ++m_end;
    ++m_count;
    if (!m_index.empty()) {
        m_index.emplace(slot.key.View(), &slot);
    } else if (m_count > kLargestWithoutIndex) {
        BuildIndex();
    }
}

std::size_t CMapStringToString::IndexOf(const Slot* slot) const {
    return static_cast<std::size_t>(slot - m_slots.data());
}

void CMapStringToString::Discard(Slot& slot) {
    slot.used = false;
    LetGoOfHugeText(slot.key);
    LetGoOfHugeText(slot.value);
}

void CMapStringToString::MakeRoom() {
    if (m_count * 2 < m_end) {
        // Many holes: the entries close up, and the slots after them are spare.
        std::size_t end = 0;
        for (std::size_t i = 0; i < m_end; ++i) {
            if (m_slots[i].used) {
                std::swap(m_slots[end], m_slots[i]);
                ++end;
            }
        }
        m_end = end;
    } else {
        const auto first = static_cast<std::size_t>(std::max(m_blockSize, 1));
        m_slots.resize(std::max(m_slots.size() * 2, first));
    }
    if (!m_index.empty()) {
        BuildIndex();
    }
}

// Both a larger vector and closed holes move the texts to which the index refers.
void CMapStringToString::BuildIndex() {
    m_index.clear();
    m_index.reserve(m_slots.size());
    for (std::size_t i = 0; i < m_end; ++i) {
        if (m_slots[i].used) {
            m_index.emplace(m_slots[i].key.View(), &m_slots[i]);
        }
    }
}
