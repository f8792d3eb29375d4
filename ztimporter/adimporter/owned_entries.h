#ifndef ZTIMPORTER_ADIMPORTER_OWNED_ENTRIES_H
#define ZTIMPORTER_ADIMPORTER_OWNED_ENTRIES_H

#include <list>
#include <utility>

#include "platform/foundation/cmapstringtostring.h"

namespace adimporter {

// Owns the maps of an entry list that the record parser made, and frees them on every way out.
// Emptying the list alone would free only its nodes.
class OwnedEntries {
  public:
    using List = std::list<CMapStringToString*>;

    OwnedEntries() = default;
    explicit OwnedEntries(List&& list) : m_list(std::move(list)) {}
    OwnedEntries(OwnedEntries&& other) noexcept { m_list.swap(other.m_list); }
    OwnedEntries& operator=(OwnedEntries&& other) noexcept {
        m_list.swap(other.m_list);
        return *this;
    }
    ~OwnedEntries() {
        for (CMapStringToString* entry : m_list) {
            delete entry;
        }
    }

    bool IsEmpty() const { return m_list.empty(); }
    // For the operations that read the maps; they must leave them in place.
    List& GetList() { return m_list; }

  private:
    List m_list;
};

}  // namespace adimporter

#endif
