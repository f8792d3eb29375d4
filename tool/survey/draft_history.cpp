#include "tool/survey/draft_history.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "tool/map/map_check.h"
#include "tool/survey/draft_names.h"
#include "tool/survey/key_rules.h"
#include "tool/survey/survey_words.h"

namespace tool {

namespace {

// In characters, of each text of an entry.
constexpr std::size_t kLongestEntryText = 30;

constexpr auto kIds = std::to_array<std::string_view>({"id", "key", "number", "nr"});
constexpr auto kTimes =
    std::to_array<std::string_view>({"when", "time", "date", "at", "timestamp", "created", "on"});
constexpr auto kPersons = std::to_array<std::string_view>(
    {"who", "user", "author", "by", "login", "actor", "name", "owner", "person", "email"});
constexpr auto kActions =
    std::to_array<std::string_view>({"action", "event", "operation", "what", "type", "kind"});
constexpr auto kStatesBefore =
    std::to_array<std::string_view>({"from", "before", "old", "old_state", "old_value"});
constexpr auto kStatesAfter =
    std::to_array<std::string_view>({"to", "after", "new", "new_state", "new_value"});
constexpr auto kFileNames =
    std::to_array<std::string_view>({"file", "filename", "file_name", "path", "url"});

class HistorySearch {
  public:
    HistorySearch(const SourceSurvey& source, std::size_t element, std::size_t end)
        : m_source(source), m_element(element), m_end(end) {}

    std::optional<HistoryParts> Run() const {
        const auto when = FindTime();
        const auto who = Find(kPersons);
        const bool areFiles = Find(kFileNames).has_value();
        if (!when || !who || areFiles) {
            return std::nullopt;
        }
        return HistoryParts{*when,
                            *who,
                            FindId(),
                            FindPart(kActions),
                            FindPart(kStatesBefore),
                            FindPart(kStatesAfter)};
    }

  private:
    const AddressSurvey& At(std::size_t address) const { return m_source.addresses[address]; }

    // An element has no more than one value there.
    bool IsSingle(const AddressSurvey& address) const {
        const auto depth = static_cast<std::ptrdiff_t>(At(m_element).steps.size());
        return address.Values() > 0 && address.IsScalarOnly() && CanBeNamed(m_source, address) &&
               std::find(address.isElement.begin() + depth, address.isElement.end(), true) ==
                   address.isElement.end();
    }

    // The address with the name that stands first among `names`, and that `fits`.
    template <typename Fits>
    std::optional<std::size_t> FindThat(std::span<const std::string_view> names, Fits fits) const {
        for (const std::string_view name : names) {
            for (std::size_t i = m_element + 1; i < m_end; ++i) {
                if (LowerLastName(At(i)) == name && IsSingle(At(i)) && fits(At(i))) {
                    return i;
                }
            }
        }
        return std::nullopt;
    }

    std::optional<std::size_t> Find(std::span<const std::string_view> names) const {
        return FindThat(names, [](const AddressSurvey& address) {
            return address.severalLines == 0 && !address.dates.AreDates();
        });
    }

    // What stands deeper is the id of something else, such as of whoever acted.
    std::optional<std::size_t> FindId() const {
        return FindThat(kIds, [&](const AddressSurvey& address) {
            return address.steps.size() == At(m_element).steps.size() + 1 &&
                   address.severalLines == 0 && !address.dates.AreDates();
        });
    }

    std::optional<std::size_t> FindPart(std::span<const std::string_view> names) const {
        return FindThat(names, [](const AddressSurvey& address) {
            return address.severalLines == 0 && address.longest <= kLongestEntryText;
        });
    }

    std::optional<std::size_t> FindTime() const {
        const auto isTime = [&](const AddressSurvey& address) {
            return address.dates.AreDates() && address.dates.Formats().size() == 1 &&
                   address.texts == address.Values() && address.Values() == At(m_element).objects;
        };
        if (const auto named = FindThat(kTimes, isTime)) {
            return named;
        }
        for (std::size_t i = m_element + 1; i < m_end; ++i) {
            if (IsSingle(At(i)) && isTime(At(i))) {
                return i;
            }
        }
        return std::nullopt;
    }

    const SourceSurvey& m_source;
    std::size_t m_element;
    std::size_t m_end;
};

}  // namespace

bool HistoryParts::Has(std::size_t address) const {
    return address == when || address == who || address == id || address == action ||
           address == before || address == after;
}

std::optional<HistoryParts> FindHistory(const SourceSurvey& source, std::size_t element,
                                        std::size_t end) {
    return HistorySearch(source, element, end).Run();
}

std::vector<std::size_t> UnreadByHistory(const SourceSurvey& source, std::size_t element,
                                         std::size_t end, const HistoryParts& parts) {
    std::vector<std::size_t> unread;
    for (std::size_t i = element + 1; i < end; ++i) {
        if (source.addresses[i].Values() > 0 && !parts.Has(i)) {
            unread.push_back(i);
        }
    }
    return unread;
}

bool CanFindHistory(std::string_view key) {
    return std::find(kHistoryFields.begin(), kHistoryFields.end(), key) == kHistoryFields.end();
}

void AddHistoryValues(const SourceSurvey& source, std::size_t element, const HistoryParts& parts,
                      bool areRecordsToo, DraftStep& step) {
    const AddressSurvey& item = source.addresses[element];
    const auto yaml = [&](std::size_t at) {
        AddressSurvey below;
        below.steps.assign(
            source.addresses[at].steps.begin() + static_cast<std::ptrdiff_t>(item.steps.size()),
            source.addresses[at].steps.end());
        return YamlText(AddressText(source, below));
    };
    // A part that not all have, or that may be too long, needs more than its address.
    const auto value = [&](std::size_t at, std::string_view otherwise) {
        const AddressSurvey& address = source.addresses[at];
        std::string more;
        if (address.Values() < item.objects) {
            more += fmt::format(", default: {}", otherwise);
        }
        if (address.longest > kLongestEntryText) {
            more += fmt::format(", cut: {}", kLongestEntryText);
        }
        return more.empty() ? yaml(at) : fmt::format("{{from: {}{}}}", yaml(at), more);
    };
    const auto constant = [](std::string_view text) {
        return fmt::format("{{value: {}}}", YamlText(text));
    };
    if (parts.id) {
        step.values.emplace_back("id", yaml(*parts.id));
        if (!areRecordsToo) {
            step.notes.push_back(
                {fmt::format("{} names entries in messages and is not kept, since history has no "
                             "ids. Where it is needed, records of their own can have it",
                             AddressText(source, source.addresses[*parts.id])),
                 true});
        }
    }
    const std::string format = source.addresses[parts.when].dates.Formats().front();
    step.values.emplace_back(
        "when", format.empty()
                    ? yaml(parts.when)
                    : fmt::format("{{from: {}, date: {}}}", yaml(parts.when), YamlText(format)));
    step.values.emplace_back("who", value(parts.who, "unknown"));
    step.values.emplace_back("action",
                             parts.action ? value(*parts.action, "change")
                                          : constant(Beginning(LastName(item), kLongestEntryText)));
    step.values.emplace_back("before", parts.before ? value(*parts.before, "none") : constant("-"));
    step.values.emplace_back("after", parts.after ? value(*parts.after, "none") : constant("-"));
}

}  // namespace tool
