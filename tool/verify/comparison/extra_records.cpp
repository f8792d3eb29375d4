#include "tool/verify/comparison/extra_records.h"

#include <limits>

#include "tool/process/interrupt.h"

namespace tool {

namespace {

constexpr std::int64_t kAll = std::numeric_limits<std::int64_t>::max();

}  // namespace

void ExtraRecords::Pass(std::int64_t type, std::int64_t dbid) {
    for (; m_type < type; ++m_type, m_after = 0) {
        TellUpTo(kAll);
    }
    TellUpTo(dbid);
    m_after = dbid;
}

void ExtraRecords::PassRest() {
    const auto types = static_cast<std::int64_t>(m_schema.Types().size());
    for (; m_type <= types; ++m_type, m_after = 0) {
        TellUpTo(kAll);
    }
}

void ExtraRecords::TellUpTo(std::int64_t dbid) {
    const recorddb::schema::RecordType& type = m_schema.Type(m_type);
    auto next = m_reader.NextDbId(type, m_after);
    while (next && *next < dbid && Interrupted() == 0) {
        Difference difference;
        difference.type = type.name;
        difference.id = m_reader.Key(type, *next);
        difference.problem = "in the database only: no source speaks of it";
        ++m_tally.Of(&type).extra;
        m_sink.Differs(difference);
        m_after = *next;
        next = m_reader.NextDbId(type, m_after);
    }
}

}  // namespace tool
