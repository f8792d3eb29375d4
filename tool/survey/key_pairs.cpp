#include "tool/survey/key_pairs.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>
#include <set>
#include <vector>

#include "tool/io/source_error.h"
#include "tool/io/watched_file.h"
#include "tool/sources/mapped/row_item.h"
#include "tool/survey/key_rules.h"
#include "tool/survey/survey_words.h"
#include "tool/survey/value_spool.h"

namespace tool {

namespace {

constexpr std::size_t kMostPaired = 8;
// Most pairs repeat soon, and are dropped before anything of them goes to a file.
constexpr std::size_t kPairsInMemory = 4096;

bool CanBePaired(const SourceSurvey& source, const AddressSurvey& address) {
    return address.Values() == source.rows && address.IsScalarOnly() && !address.IsInList() &&
           address.severalLines == 0 && address.longest <= kLongestKeyText / 2 &&
           address.words == 0 && address.distinct != 1 && !address.column &&
           CanBeNamed(source, address) &&
           AddressText(source, address).find_first_of("{}") == std::string::npos;
}

std::vector<std::size_t> AddressesToPair(const SourceSurvey& source) {
    std::vector<std::size_t> parts;
    for (std::size_t i = 0; i < source.addresses.size(); ++i) {
        if (CanBePaired(source, source.addresses[i])) {
            parts.push_back(i);
        }
    }
    std::stable_sort(parts.begin(), parts.end(), [&](std::size_t a, std::size_t b) {
        return KeyRank(source.addresses[a]) < KeyRank(source.addresses[b]);
    });
    parts.resize(std::min(parts.size(), kMostPaired));
    std::sort(parts.begin(), parts.end());
    return parts;
}

// Two values with so many different ones make no more different pairs than that.
bool MakeEnough(const SourceSurvey& source, std::size_t a, std::size_t b) {
    const auto& first = source.addresses[a].distinct;
    const auto& second = source.addresses[b].distinct;
    return !first || !second || *first * *second >= source.rows;
}

// A pair, and the keys that came so far.
struct CandidatePair {
    KeyPair pair;
    std::set<ValueHash> seen;
    std::optional<ValueSpool::Column> spooled;

    // False when the key came before, as far as that is known by now.
    bool Add(ValueHash hash, ValueSpool& spool) {
        if (!seen.insert(hash).second) {
            return false;
        }
        if (!spooled && seen.size() > kPairsInMemory) {
            spooled = spool.AddColumn();
            for (const ValueHash known : seen) {
                spool.Add(*spooled, known);
            }
        } else if (spooled) {
            spool.Add(*spooled, hash);
        }
        if (seen.size() > kPairsInMemory) {
            seen.erase(hash);
        }
        return true;
    }
};

// Drops the pairs that repeat, row by row.
class PairReader final : public RowHandler {
  public:
    explicit PairReader(const SourceSurvey& source) : m_source(source) {
        const std::vector<std::size_t> parts = AddressesToPair(source);
        for (auto a = parts.begin(); a != parts.end(); ++a) {
            for (auto b = a + 1; b != parts.end(); ++b) {
                if (MakeEnough(source, *a, *b)) {
                    m_candidates.push_back({{*a, *b}, {}, {}});
                }
            }
        }
    }

    bool HasAny() const { return !m_candidates.empty(); }

    bool TakeRow(Row& row) override {
        if (!row.error.empty()) {
            return true;
        }
        ++m_rows;
        std::erase_if(m_candidates, [&](CandidatePair& candidate) {
            const std::string key = PairedKey(TextAt(row.tree, candidate.pair.first),
                                              TextAt(row.tree, candidate.pair.second));
            return !candidate.Add(tool::HashOf(key), m_spool);
        });
        return HasAny();
    }

    // The pairs that are left, after all rows, those with the best names first.
    std::vector<KeyPair> Finish() {
        if (HasAny() && m_rows != m_source.rows) {
            throw SourceError(fmt::format("{}: changed while it was looked at",
                                          m_source.group.files.front().name));
        }
        const std::vector<std::uint64_t> distinct = m_spool.CountDistinct({}, {});
        std::erase_if(m_candidates, [&](const CandidatePair& candidate) {
            return candidate.spooled && distinct[*candidate.spooled] != m_rows;
        });
        std::vector<KeyPair> pairs;
        pairs.reserve(m_candidates.size());
        for (const CandidatePair& candidate : m_candidates) {
            pairs.push_back(candidate.pair);
        }
        std::stable_sort(pairs.begin(), pairs.end(),
                         [&](KeyPair a, KeyPair b) { return RankOf(a) < RankOf(b); });
        return pairs;
    }

  private:
    std::string_view TextAt(const RowTree& tree, std::size_t address) {
        m_nodes.clear();
        FindNodes(tree, RowTree::kRoot, m_source.addresses[address].steps, m_nodes);
        return m_nodes.empty() || !tree.IsScalar(m_nodes.front()) ? std::string_view()
                                                                  : tree.Text(m_nodes.front());
    }

    std::size_t RankOf(KeyPair pair) const {
        return KeyRank(m_source.addresses[pair.first]) + KeyRank(m_source.addresses[pair.second]);
    }

    const SourceSurvey& m_source;
    std::vector<CandidatePair> m_candidates;
    std::vector<RowTree::Index> m_nodes;
    ValueSpool m_spool;
    std::uint64_t m_rows = 0;
};

}  // namespace

void FindKeyPairs(SourceSurvey& source) {
    PairReader reader(source);
    for (const SurveyFile& file : source.group.files) {
        if (!reader.HasAny()) {
            return;
        }
        WatchedFile bytes(file.path, file.name);
        OpenRows(bytes, source)->Read(reader);
    }
    source.keyPairs = reader.Finish();
}

std::string PairedKey(std::string_view first, std::string_view second) {
    return fmt::format("{}-{}", first, second);
}

}  // namespace tool
