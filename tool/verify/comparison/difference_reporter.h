#ifndef TOOL_VERIFY_COMPARISON_DIFFERENCE_REPORTER_H
#define TOOL_VERIFY_COMPARISON_DIFFERENCE_REPORTER_H

#include <cstdint>
#include <functional>
#include <string>
#include <utility>

#include "tool/verify/records/kept_record.h"
#include "tool/verify/sinks/difference.h"

namespace tool {

// Reports the differences of one record of the database, and counts them.
class DifferenceReporter {
  public:
    using Take = std::function<void(const Difference&)>;
    using PlaceOf = std::function<const RecordsPlace&(std::size_t)>;

    // `subject` has the type, id and source id of the record. `take` gets the differences;
    // `placeOf` gives the place with a number.
    DifferenceReporter(Difference subject, Take take, PlaceOf placeOf)
        : m_subject(std::move(subject)), m_take(std::move(take)), m_placeOf(std::move(placeOf)) {}

    void Report(const SourcePlace& place, std::string field, std::string sourceValue,
                std::string databaseValue, std::string problem = {});

    std::uint64_t Count() const { return m_count; }

  private:
    Difference m_subject;
    Take m_take;
    PlaceOf m_placeOf;
    std::uint64_t m_count = 0;
};

}  // namespace tool

#endif
