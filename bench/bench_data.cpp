#include "bench_data.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <string>

namespace bench {

namespace {

// Each of them costs a few round trips, so that few are enough.
constexpr std::int64_t kMostAttachments = 500;

std::filesystem::path NewFolder() {
    std::string pattern = std::filesystem::temp_directory_path() / "load_bench_XXXXXX";
    if (mkdtemp(pattern.data()) == nullptr) {
        throw std::runtime_error("cannot make a temporary folder");
    }
    return pattern;
}

}  // namespace

BenchData::BenchData(std::int64_t records)
    : m_folder(NewFolder()),
      m_packets{
          .keywords = WriteKeywordPackets(m_folder),
          .create = WriteCreatePackets(m_folder, records),
          .bare = WriteBarePackets(m_folder, records),
          .update = WriteUpdatePackets(m_folder, records),
          .history = WriteHistoryPackets(m_folder, records),
          .attachments = WriteAttachmentPackets(m_folder, std::min(records, kMostAttachments))} {
    std::ofstream(m_folder / "schema.yaml") << SchemaText();
}

BenchData::~BenchData() {
    std::error_code ignored;
    std::filesystem::remove_all(m_folder, ignored);
}

}  // namespace bench
