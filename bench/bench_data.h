#ifndef BENCH_BENCH_DATA_H
#define BENCH_BENCH_DATA_H

#include <cstdint>
#include <filesystem>

#include "generated_tracker.h"

namespace bench {

// A folder that is there as long as this, with the schema file and packets of so many records.
class BenchData {
  public:
    explicit BenchData(std::int64_t records);
    BenchData(const BenchData&) = delete;
    BenchData& operator=(const BenchData&) = delete;
    ~BenchData();

    const std::filesystem::path& Folder() const { return m_folder; }
    const TrackerPackets& Packets() const { return m_packets; }
    std::int64_t Records() const { return m_packets.create.records; }

  private:
    std::filesystem::path m_folder;
    TrackerPackets m_packets;
};

}  // namespace bench

#endif
