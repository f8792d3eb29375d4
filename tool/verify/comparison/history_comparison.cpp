#include "tool/verify/comparison/history_comparison.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <map>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace tool {

namespace {

struct ClaimedEntry;

// An entry of the database as the sources would write it, and what only the database says of it.
struct StoredEntry {
    HistoryColumns columns;
    std::string expiryTime;
    const ClaimedEntry* match = nullptr;
};

struct ClaimedEntry {
    const ExpectedEntry* entry;
    const HistoryColumns& Columns() const { return entry->line.columns; }
    const StoredEntry* match = nullptr;
};

void Match(ClaimedEntry& claimed, StoredEntry& stored) {
    claimed.match = &stored;
    stored.match = &claimed;
}

// An entry in the order in which the entries of a record follow each other.
struct TimedEntry {
    const std::string* time;
    const StoredEntry* stored;  // null: the database does not have it
};

std::string Joined(const HistoryColumns& columns) {
    std::string text = fmt::format("{}", fmt::join(columns, "\t"));
    // An entry without a comment, as nearly all are, ends with its new state.
    text.resize(text.find_last_not_of('\t') + 1);
    return text;
}

class HistoryComparison {
  public:
    HistoryComparison(const ExpectedRecord& expected,
                      const std::vector<recorddb::HistoryEntry>& stored,
                      DifferenceReporter& reporter)
        : m_expected(expected), m_reporter(reporter) {
        for (const ExpectedEntry* const entry : expected.History()) {
            m_claimed.push_back({.entry = entry});
        }
        for (const recorddb::HistoryEntry& entry : stored) {
            m_stored.push_back({.columns = {entry.actionTime, entry.userName, entry.actionName,
                                            entry.oldState, entry.newState, entry.comments},
                                .expiryTime = entry.expiryTime});
        }
        if (const auto* const field = expected.Type().HistoryField()) {
            m_fieldName = field->name;
        }
    }

    std::size_t ClaimedCount() const { return m_claimed.size(); }

    void Run() {
        MatchByTime();
        for (std::size_t column = 0; column < kHistoryColumns; ++column) {
            PairButFor(column);
        }
        CompareExpiry();
        ReportRest();
    }

  private:
    using Claimed = std::span<ClaimedEntry>;
    using Stored = std::span<StoredEntry>;

    // Both are in the order of time, so one walk along them meets the entries of each time.
    void MatchByTime() {
        auto stored = m_stored.begin();
        for (auto claimed = m_claimed.begin(); claimed != m_claimed.end();) {
            const std::string& time = claimed->Columns()[kTimeColumn];
            const auto claimedEnd = std::find_if(claimed, m_claimed.end(), [&](const auto& entry) {
                return entry.Columns()[kTimeColumn] != time;
            });
            stored = std::find_if(stored, m_stored.end(), [&](const auto& entry) {
                return entry.columns[kTimeColumn] >= time;
            });
            const auto storedEnd = std::find_if(stored, m_stored.end(), [&](const auto& entry) {
                return entry.columns[kTimeColumn] != time;
            });
            MatchOfOneTime({claimed, claimedEnd}, {stored, storedEnd});
            claimed = claimedEnd;
            stored = storedEnd;
        }
    }

    void MatchOfOneTime(Claimed claimed, Stored stored) {
        if (!IsPartOf(claimed, stored)) {
            MatchInAnyOrder(claimed, stored);
            return;
        }
        auto next = stored.begin();
        for (ClaimedEntry& entry : claimed) {
            next = std::find_if(next, stored.end(), [&entry](const StoredEntry& other) {
                return other.columns == entry.Columns();
            });
            Match(entry, *next);
            ++next;
        }
    }

    // True when the database has the entries in their order, with or without others between them.
    static bool IsPartOf(Claimed claimed, Stored stored) {
        auto next = claimed.begin();
        for (const StoredEntry& entry : stored) {
            next += next != claimed.end() && next->Columns() == entry.columns ? 1 : 0;
        }
        return next == claimed.end();
    }

    void MatchInAnyOrder(Claimed claimed, Stored stored) {
        std::multimap<std::string, StoredEntry*> free;
        for (StoredEntry& entry : stored) {
            free.emplace(Joined(entry.columns), &entry);
        }
        std::vector<std::string> inSource;
        std::map<const StoredEntry*, std::string> inDatabase;
        for (ClaimedEntry& entry : claimed) {
            const std::string text = Joined(entry.Columns());
            if (const auto found = free.find(text); found != free.end()) {
                Match(entry, *found->second);
                inSource.push_back(text);
                inDatabase.emplace(found->second, text);
                free.erase(found);
            }
        }
        std::vector<std::string> asStored;
        asStored.reserve(inDatabase.size());
        for (const auto& [entry, text] : inDatabase) {
            asStored.push_back(text);
        }
        if (inSource != asStored) {
            m_reporter.Report(claimed.front().entry->place, m_fieldName,
                              fmt::format("{}", fmt::join(inSource, "\n")),
                              fmt::format("{}", fmt::join(asStored, "\n")),
                              "entries of one time in another order");
        }
    }

    // Pairs the entries left over that differ in `column` only, and reports that column.
    void PairButFor(std::size_t column) {
        const auto rest = [column](HistoryColumns columns) {
            columns[column].clear();
            return Joined(columns);
        };
        std::multimap<std::string, StoredEntry*> free;
        for (StoredEntry& stored : m_stored) {
            if (stored.match == nullptr) {
                free.emplace(rest(stored.columns), &stored);
            }
        }
        for (ClaimedEntry& claimed : m_claimed) {
            const auto found =
                claimed.match != nullptr ? free.end() : free.find(rest(claimed.Columns()));
            if (found != free.end()) {
                Match(claimed, *found->second);
                Report(*claimed.entry, HistoryColumnName(column), claimed.Columns()[column],
                       found->second->columns[column]);
                free.erase(found);
            }
        }
    }

    // The entries in the order in which they follow each other by their true times: those of the
    // sources where they know the entry. An entry that should not be there changes nothing.
    std::vector<TimedEntry> InTime() const {
        std::vector<TimedEntry> entries;
        if (!m_expected.IsWhole()) {
            for (const StoredEntry& stored : m_stored) {
                const HistoryColumns& columns =
                    stored.match != nullptr ? stored.match->Columns() : stored.columns;
                entries.push_back({&columns[kTimeColumn], &stored});
            }
        }
        for (const ClaimedEntry& claimed : m_claimed) {
            if (m_expected.IsWhole() || claimed.match == nullptr) {
                entries.push_back({&claimed.Columns()[kTimeColumn], claimed.match});
            }
        }
        std::stable_sort(entries.begin(), entries.end(),
                         [](const auto& a, const auto& b) { return *a.time < *b.time; });
        return entries;
    }

    std::string NextStored(const StoredEntry& entry) const {
        const auto next = static_cast<std::size_t>(&entry - m_stored.data()) + 1;
        return next < m_stored.size() ? m_stored[next].columns[kTimeColumn] : "";
    }

    // Packets give no expiry times: each entry expires when the next one begins. Entries that are
    // missing or surplus are reported as such; whether they were there when the times were worked
    // out is not known.
    void CompareExpiry() {
        const std::string none;
        const std::string* next = &none;      // of all entries
        const std::string* nextHeld = &none;  // of those that the database has
        std::vector<TimedEntry> entries = InTime();
        std::vector<std::pair<const StoredEntry*, const std::string*>> wrong;
        for (auto entry = entries.rbegin(); entry != entries.rend(); ++entry) {
            const StoredEntry* const stored = entry->stored;
            if (stored != nullptr && stored->match != nullptr && stored->expiryTime != *next &&
                stored->expiryTime != *nextHeld && stored->expiryTime != NextStored(*stored)) {
                wrong.emplace_back(stored, nextHeld);
            }
            next = entry->time;
            nextHeld = stored != nullptr ? entry->time : nextHeld;
        }
        for (auto found = wrong.rbegin(); found != wrong.rend(); ++found) {
            Report(*found->first->match->entry, "expired_timestamp", *found->second,
                   found->first->expiryTime);
        }
    }

    void Report(const ExpectedEntry& entry, std::string_view column, std::string sourceValue,
                std::string databaseValue) {
        m_reporter.Report(entry.place,
                          fmt::format("{}, {}, {}", m_fieldName, NameOf(entry), column),
                          std::move(sourceValue), std::move(databaseValue));
    }

    void ReportRest() {
        for (const ClaimedEntry& claimed : m_claimed) {
            if (claimed.match == nullptr) {
                m_reporter.Report(claimed.entry->place,
                                  fmt::format("{}, {}", m_fieldName, NameOf(*claimed.entry)),
                                  Joined(claimed.Columns()), "");
            }
        }
        for (const StoredEntry& stored : m_stored) {
            if (stored.match == nullptr && m_expected.IsWhole()) {
                m_reporter.Report(m_expected.FirstPlace(), m_fieldName, "", Joined(stored.columns));
            }
        }
    }

    static std::string NameOf(const ExpectedEntry& entry) {
        return entry.line.id.empty() ? "an entry" : "entry " + entry.line.id;
    }

    const ExpectedRecord& m_expected;
    DifferenceReporter& m_reporter;
    std::string m_fieldName = "history";
    std::vector<ClaimedEntry> m_claimed;
    std::vector<StoredEntry> m_stored;
};

}  // namespace

void CompareHistory(const ExpectedRecord& expected,
                    const std::vector<recorddb::HistoryEntry>& stored, DifferenceReporter& reporter,
                    VerifiedType& tally) {
    HistoryComparison comparison(expected, stored, reporter);
    tally.history += comparison.ClaimedCount();
    comparison.Run();
}

}  // namespace tool
