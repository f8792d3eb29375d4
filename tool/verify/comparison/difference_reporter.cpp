#include "tool/verify/comparison/difference_reporter.h"

namespace tool {

void DifferenceReporter::Report(const SourcePlace& place, std::string field,
                                std::string sourceValue, std::string databaseValue,
                                std::string problem) {
    Difference difference = m_subject;
    const RecordsPlace& records = m_placeOf(place.source);
    difference.source = records.name;
    difference.unit = records.unit;
    difference.record = place.record;
    difference.line = place.line;
    difference.field = std::move(field);
    difference.sourceValue = std::move(sourceValue);
    difference.databaseValue = std::move(databaseValue);
    difference.problem = std::move(problem);
    ++m_count;
    m_take(difference);
}

}  // namespace tool
