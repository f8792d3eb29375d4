#ifndef PLATFORM_FOUNDATION_CENUMARRAY_H
#define PLATFORM_FOUNDATION_CENUMARRAY_H

#include <algorithm>
#include <cstddef>
#include <vector>

// A growable array of small values (codes, enumerators), handed over as Argument.
template <typename Value, typename Argument>
class CEnumArray {
  public:
    // An empty array with room for `initialSize` values (none when it is below 0).
    explicit CEnumArray(int initialSize = 0) {
        m_items.reserve(static_cast<std::size_t>(std::max(initialSize, 0)));
    }

    int GetSize() const { return static_cast<int>(m_items.size()); }
    void Add(Argument value) { m_items.push_back(static_cast<Value>(value)); }
    Value operator[](int index) const { return m_items[static_cast<std::size_t>(index)]; }

  private:
    std::vector<Value> m_items;
};

#endif
