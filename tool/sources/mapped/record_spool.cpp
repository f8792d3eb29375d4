#include "tool/sources/mapped/record_spool.h"

#include <string_view>

namespace tool {

void RecordSpool::Add(const MadeRecord& record) {
    m_spool.Add([&](std::string& bytes) {
        AppendOrigin(record, bytes);
        const std::size_t content = bytes.size();
        AppendContent(record, bytes);
        m_hash.Update(std::string_view(bytes).substr(content));
    });
}

void RecordSpool::Finish() {
    m_spool.Finish();
    m_hexHash = m_hash.HexDigest();
}

bool RecordSpool::Reader::Next(MadeRecord& record) {
    std::string_view bytes;
    if (!m_reader.Next(bytes)) {
        return false;
    }
    ReadRecord(bytes, record);
    return true;
}

}  // namespace tool
