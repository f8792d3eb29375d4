#include "tool/verify/sinks/verify_tally.h"

namespace tool {

VerifyTally::VerifyTally(const recorddb::schema::Schema& schema)
    : m_types(schema.Types().size() + 1) {
    for (const auto& type : schema.Types()) {
        Of(&type).name = type.name;
    }
}

VerifiedType& VerifyTally::Of(const recorddb::schema::RecordType* type) {
    return m_types[type == nullptr ? 0 : static_cast<std::size_t>(type->id)];
}

void VerifyTally::Add(const VerifyTally& more) {
    m_read += more.m_read;
    for (std::size_t i = 0; i < m_types.size(); ++i) {
        tool::Add(m_types[i], more.m_types[i]);
    }
}

VerifySummary VerifyTally::Summary() const {
    VerifySummary summary;
    summary.read = m_read;
    for (const VerifiedType& type : m_types) {
        if (type.compared + type.missing + type.extra > 0) {
            summary.compared += type.compared;
            summary.differing += type.different;
            summary.missing += type.missing;
            summary.extra += type.extra;
            summary.types.push_back(type);
        }
    }
    return summary;
}

}  // namespace tool
