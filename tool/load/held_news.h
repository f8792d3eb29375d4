#ifndef TOOL_LOAD_HELD_NEWS_H
#define TOOL_LOAD_HELD_NEWS_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "tool/load/rejected_record.h"
#include "tool/losses/loss.h"

namespace tool {

// What is held back from the sinks about records, since it may have to be taken back: rejects and
// losses.
class HeldNews {
  public:
    // From here on news is held back. It is about the record with that ordinal.
    void Hold(std::uint64_t ordinal) {
        m_isHolding = true;
        m_ordinal = ordinal;
    }

    // Takes news, with a copy of all that it refers to. False when nothing is held back.
    bool Take(const RejectedRecord& record) {
        if (m_isHolding) {
            Insert(Reject{record, std::string(record.raw)});
            ++m_rejects;
        }
        return m_isHolding;
    }
    bool Take(const Loss& loss) {
        if (m_isHolding) {
            Insert(loss);
        }
        return m_isHolding;
    }

    std::uint64_t Rejects() const { return m_rejects; }

    void DropRejects() {
        std::erase_if(m_news,
                      [](const Item& item) { return std::holds_alternative<Reject>(item.second); });
        m_rejects = 0;
    }

    // Hands all news to `tell`, in the order of the ordinals. What comes later is not held back.
    template <typename Tell>
    void Release(Tell tell) {
        m_isHolding = false;
        m_rejects = 0;
        for (const auto& [ordinal, news] : std::exchange(m_news, {})) {
            if (const auto* const loss = std::get_if<Loss>(&news)) {
                tell(*loss);
            } else {
                const auto& reject = std::get<Reject>(news);
                RejectedRecord record = reject.record;
                record.raw = reject.raw;
                tell(record);
            }
        }
    }

  private:
    struct Reject {
        RejectedRecord record;
        std::string raw;
    };
    using News = std::variant<Loss, Reject>;
    using Item = std::pair<std::uint64_t, News>;

    void Insert(News news) {
        const auto place = std::upper_bound(
            m_news.begin(), m_news.end(), m_ordinal,
            [](std::uint64_t ordinal, const Item& item) { return ordinal < item.first; });
        m_news.insert(place, {m_ordinal, std::move(news)});
    }

    bool m_isHolding = false;
    std::uint64_t m_ordinal = 0;
    std::uint64_t m_rejects = 0;
    std::vector<Item> m_news;
};

}  // namespace tool

#endif
