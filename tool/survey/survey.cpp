#include "tool/survey/survey.h"

#include <algorithm>
#include <map>
#include <set>
#include <utility>

#include "tool/survey/key_pairs.h"
#include "tool/survey/key_rules.h"

namespace tool {

namespace {

// Numbers are looked for elsewhere when there are at least so many different ones: one or two stand
// in many places by chance. One text does not.
constexpr std::size_t kLeastNumbers = 2;
// Told when at most one different value in so many is not found at the other address.
constexpr std::size_t kWorthTelling = 5;

// Finds out how many different values there are where memory had no room for them, and which
// values are found at other addresses.
class ValueComparison {
  public:
    ValueComparison(Survey& survey, ValueSpool& spool) : m_survey(survey) {
        std::set<ValueHash> lookedFor;
        ForEach([&](AddressRef, AddressSurvey& address) {
            if (MayRefer(address)) {
                for (const auto& [hash, entry] : address.values.Entries()) {
                    lookedFor.insert(hash);
                }
            }
        });
        const auto distinct = spool.CountDistinct(
            lookedFor,
            [&](ValueSpool::Column column, ValueHash hash) { m_found[column].insert(hash); });
        ForEach([&](AddressRef, AddressSurvey& address) {
            if (!address.values.HasMore()) {
                address.distinct = address.values.Distinct();
            } else if (address.spooled && !address.isNoKey) {
                address.distinct = distinct[*address.spooled];
            }
        });
    }

    void Run() {
        ForEach([&](AddressRef in, AddressSurvey& keys) {
            if (!keys.IsUnique() || keys.IsInList() || !keys.IsScalarOnly()) {
                return;
            }
            ForEach([&](AddressRef from, AddressSurvey& address) {
                if (!(from == in) && MayRefer(address)) {
                    Compare(from, address, in, keys);
                }
            });
        });
    }

  private:
    template <typename Visit>
    void ForEach(Visit visit) {
        for (std::size_t source = 0; source < m_survey.sources.size(); ++source) {
            auto& addresses = m_survey.sources[source].addresses;
            for (std::size_t address = 0; address < addresses.size(); ++address) {
                visit(AddressRef{source, address}, addresses[address]);
            }
        }
    }

    static bool MayRefer(const AddressSurvey& address) {
        return address.IsScalarOnly() && address.Values() > 0 &&
               (address.integers == 0 || address.values.Distinct() >= kLeastNumbers) &&
               address.severalLines == 0 && address.words == 0 && !address.dates.AreDates();
    }

    bool Has(const AddressSurvey& keys, ValueHash hash) const {
        if (!keys.values.HasMore()) {
            return keys.values.Entries().contains(hash);
        }
        const auto found = m_found.find(*keys.spooled);
        return found != m_found.end() && found->second.contains(hash);
    }

    void Compare(AddressRef from, const AddressSurvey& address, AddressRef in,
                 const AddressSurvey& keys) {
        std::size_t found = 0;
        for (const auto& [hash, entry] : address.values.Entries()) {
            found += Has(keys, hash) ? 1 : 0;
        }
        const std::size_t lookedFor = address.values.Distinct();
        if (found > 0 && found + lookedFor / kWorthTelling >= lookedFor) {
            m_survey.elsewhere.push_back({from, in, found, lookedFor});
        }
    }

    Survey& m_survey;
    std::map<ValueSpool::Column, std::set<ValueHash>> m_found;
};

bool HasKey(const SourceSurvey& source) {
    return source.rows < 2 || std::any_of(source.addresses.begin(), source.addresses.end(),
                                          [&](const AddressSurvey& address) {
                                              return IsKey(source, address) && CanBeKey(address);
                                          });
}

}  // namespace

Survey SurveyAll(const SurveyFiles& files, const SurveyOptions& options) {
    Survey survey;
    survey.notRead = files.NotRead();
    ValueSpool spool;
    for (const SurveyGroup& group : files.Groups()) {
        survey.sources.push_back(SurveySource(group, options, spool));
    }
    ValueComparison(survey, spool).Run();
    for (SourceSurvey& source : survey.sources) {
        if (!HasKey(source)) {
            FindKeyPairs(source);
        }
    }
    return survey;
}

}  // namespace tool
