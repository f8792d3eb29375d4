#include "platform/messages/catalogue.h"

#include <algorithm>
#include <array>

#include "platform/messages/core_messages.h"
#include "platform/messages/importer_messages.h"

namespace {

constexpr auto kCatalogue = [] {
    std::array<CatalogueMessage, kImporterMessages.size() + kCoreMessages.size()> all{};
    const auto behindImporter =
        std::copy(kImporterMessages.begin(), kImporterMessages.end(), all.begin());
    std::copy(kCoreMessages.begin(), kCoreMessages.end(), behindImporter);
    return all;
}();

// The look-up is a binary search, which would not find an entry out of order.
static_assert(std::adjacent_find(kCatalogue.begin(), kCatalogue.end(),
                                 [](const CatalogueMessage& a, const CatalogueMessage& b) {
                                     return a.id >= b.id;
                                 }) == kCatalogue.end(),
              "the catalogue's ids must ascend");

bool IsNameUnit(char16_t unit) {
    return (unit >= u'a' && unit <= u'z') || unit == u'_';
}

}  // namespace

std::span<const CatalogueMessage> MessageCatalogue() {
    return kCatalogue;
}

const CatalogueMessage* FindCatalogueMessage(int id) {
    const auto found = std::lower_bound(
        kCatalogue.begin(), kCatalogue.end(), id,
        [](const CatalogueMessage& message, int wanted) { return message.id < wanted; });
    return found != kCatalogue.end() && found->id == id ? &*found : nullptr;
}

std::u16string_view NextCatalogueParameter(std::u16string_view text) {
    for (std::size_t begin = 0; begin < text.size(); ++begin) {
        if (!IsNameUnit(text[begin])) {
            continue;
        }
        std::size_t end = begin;
        while (end < text.size() && IsNameUnit(text[end])) {
            ++end;
        }
        const std::u16string_view word = text.substr(begin, end - begin);
        if (word.size() > 2 && word.front() == u'_' && word.back() == u'_') {
            return word;
        }
        begin = end;
    }
    return {};
}
