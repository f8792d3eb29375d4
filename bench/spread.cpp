#include "spread.h"

#include <algorithm>

namespace bench {

namespace {

double OfAllProcessors(const Run& run) {
    return run.processorSeconds + run.serverSeconds;
}

}  // namespace

Spread SpreadOf(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    const std::size_t middle = values.size() / 2;
    const double median =
        values.size() % 2 == 1 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
    return {median, values.front(), values.back()};
}

void Pairs::Add(const Run& base, const Run& run) {
    m_pairs.push_back({base, run});
}

template <typename Value>
Spread Pairs::Over(Value value) const {
    std::vector<double> values;
    for (const Pair& pair : m_pairs) {
        values.push_back(value(pair));
    }
    return SpreadOf(std::move(values));
}

Spread Pairs::OnTheClock() const {
    return Over([](const Pair& pair) { return pair.run.seconds / pair.base.seconds; });
}

Spread Pairs::OfProcessors() const {
    return Over(
        [](const Pair& pair) { return OfAllProcessors(pair.run) / OfAllProcessors(pair.base); });
}

Run Pairs::Typical() const {
    Run run;
    run.seconds = Over([](const Pair& pair) { return pair.run.seconds; }).median;
    run.processorSeconds = Over([](const Pair& pair) { return pair.run.processorSeconds; }).median;
    run.serverSeconds = Over([](const Pair& pair) { return pair.run.serverSeconds; }).median;
    for (const Pair& pair : m_pairs) {
        run.peakKilobytes = std::max(run.peakKilobytes, pair.run.peakKilobytes);
    }
    return run;
}

}  // namespace bench
