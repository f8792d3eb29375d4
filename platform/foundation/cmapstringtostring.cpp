#include "platform/foundation/cmapstringtostring.h"

#include <iterator>

namespace {

constexpr std::size_t kLargestWithoutIndex = 24;

}  // namespace

void CMapStringToString::SetAt(const Obx_String& key, const Obx_String& value) {
    if (Entry* entry = Find(key)) {
        entry->value = value;
        return;
    }
    m_entries.push_back({key, value, {}});
    Entry& entry = m_entries.back();
    entry.self = std::prev(m_entries.end());
    if (m_entries.size() > kLargestWithoutIndex) {
        if (m_index.empty()) {
            BuildIndex();
        } else {
            m_index.emplace(entry.key.View(), &entry);
        }
    }
}

bool CMapStringToString::Lookup(const Obx_String& key, Obx_String& value) const {
    const Entry* entry = Find(key);
    if (entry == nullptr) {
        return false;
    }
    value = entry->value;
    return true;
}

bool CMapStringToString::RemoveKey(const Obx_String& key) {
    Entry* entry = Find(key);
    if (entry == nullptr) {
        return false;
    }
    m_index.erase(entry->key.View());
    m_entries.erase(entry->self);
    return true;
}

void CMapStringToString::RemoveAll() {
    m_index.clear();
    m_entries.clear();
}

CMapStringToString::Position CMapStringToString::GetStartPosition() const {
    return m_entries.empty() ? nullptr : &m_entries.front();
}

void CMapStringToString::GetNextAssoc(Position& position, Obx_String& key,
                                      Obx_String& value) const {
    const auto* entry = static_cast<const Entry*>(position);
    key = entry->key;
    value = entry->value;
    const auto next = std::next(entry->self);
    position = next == m_entries.end() ? nullptr : &*next;
}

CMapStringToString::Entry* CMapStringToString::Find(const Obx_String& key) const {
    if (!m_index.empty()) {
        const auto found = m_index.find(key.View());
        return found == m_index.end() ? nullptr : found->second;
    }
    for (const Entry& entry : m_entries) {
        if (entry.key == key) {
            return const_cast<Entry*>(&entry);
        }
    }
    return nullptr;
}

void CMapStringToString::BuildIndex() {
    m_index.reserve(m_entries.size() + static_cast<std::size_t>(m_blockSize));
    for (Entry& entry : m_entries) {
        m_index.emplace(entry.key.View(), &entry);
    }
}
