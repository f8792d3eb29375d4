#ifndef TESTS_PLATFORM_ITEMS_H
#define TESTS_PLATFORM_ITEMS_H

#include <string>
#include <vector>

#include "platform/foundation/cstringarray.h"

// The array's items as UTF-8, to compare with a list in one statement.
inline std::vector<std::string> Items(const CStringArray& array) {
    std::vector<std::string> items;
    for (const Obx_String& item : array) {
        items.push_back(item.ToUtf8());
    }
    return items;
}

#endif
