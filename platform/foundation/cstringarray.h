#ifndef PLATFORM_FOUNDATION_CSTRINGARRAY_H
#define PLATFORM_FOUNDATION_CSTRINGARRAY_H

#include <vector>

#include "platform/foundation/obx_string.h"

// A growable array of strings. Indexes count from 0 and must be below GetSize().
class CStringArray {
  public:
    int GetSize() const { return static_cast<int>(m_items.size()); }
    void RemoveAll() { m_items.clear(); }
    void Add(Obx_String item) { m_items.push_back(std::move(item)); }
    void RemoveAt(int index) { m_items.erase(m_items.begin() + index); }
    const Obx_String& operator[](int index) const {
        return m_items[static_cast<std::size_t>(index)];
    }
    Obx_String& operator[](int index) { return m_items[static_cast<std::size_t>(index)]; }

    auto begin() const { return m_items.begin(); }
    auto end() const { return m_items.end(); }

  private:
    std::vector<Obx_String> m_items;
};

#endif
