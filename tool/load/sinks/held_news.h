#ifndef TOOL_LOAD_SINKS_HELD_NEWS_H
#define TOOL_LOAD_SINKS_HELD_NEWS_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <limits>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "tool/load/sinks/place.h"
#include "tool/load/sinks/rejected_record.h"
#include "tool/losses/loss.h"

namespace tool {

// When something is told about a record, in the order of the load: with the record that was read
// last, or so many tries of waiting records after it.
struct NewsTime {
    Place read = 0;
    std::uint64_t tries = 0;

    static NewsTime End() { return {.read = std::numeric_limits<Place>::max()}; }

    bool operator<(const NewsTime& other) const {
        return read != other.read ? read < other.read : tries < other.tries;
    }
};

// What is held back from the sinks about records, since it may have to be taken back: rejects and
// losses.
class HeldNews {
  public:
    // Holds back what Take is given from now on, as news of this time.
    void Hold(NewsTime time) {
        m_isHolding = true;
        m_time = time;
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

    // Hands news to `tell`, in the order of the times: all that is not later than `last`. What
    // comes now is not held back.
    template <typename Tell>
    void Release(Tell tell, NewsTime last = NewsTime::End()) {
        m_isHolding = false;
        const auto isLater = [last](const Item& item) { return last < item.first; };
        const auto later = std::find_if(m_news.begin(), m_news.end(), isLater);
        std::vector<Item> told(std::make_move_iterator(m_news.begin()),
                               std::make_move_iterator(later));
        m_news.erase(m_news.begin(), later);
        m_rejects = static_cast<std::uint64_t>(std::count_if(
            m_news.begin(), m_news.end(),
            [](const Item& item) { return std::holds_alternative<Reject>(item.second); }));
        for (const auto& [time, news] : told) {
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
    using Item = std::pair<NewsTime, News>;

    void Insert(News news) {
        const auto place = std::upper_bound(
            m_news.begin(), m_news.end(), m_time,
            [](const NewsTime& time, const Item& item) { return time < item.first; });
        m_news.insert(place, {m_time, std::move(news)});
    }

    bool m_isHolding = false;
    NewsTime m_time;
    std::uint64_t m_rejects = 0;
    std::vector<Item> m_news;
};

}  // namespace tool

#endif
