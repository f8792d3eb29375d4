#ifndef TESTS_ZTIMPORTER_MAP_PAIRS_H
#define TESTS_ZTIMPORTER_MAP_PAIRS_H

#include <string>
#include <utility>
#include <vector>

#include "platform/foundation/cmapstringtostring.h"

using Pairs = std::vector<std::pair<std::string, std::string>>;

// The entries of a map in its own order.
inline Pairs PairsOf(const CMapStringToString& map) {
    Pairs pairs;
    for (CMapStringToString::Position position = map.GetStartPosition(); position != nullptr;) {
        Obx_String key;
        Obx_String value;
        map.GetNextAssoc(position, key, value);
        pairs.emplace_back(key.ToUtf8(), value.ToUtf8());
    }
    return pairs;
}

#endif
