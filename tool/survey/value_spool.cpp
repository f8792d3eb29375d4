#include "tool/survey/value_spool.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <filesystem>
#include <optional>
#include <string>
#include <tuple>

#include "tool/io/byte_source.h"

namespace tool {

namespace {

constexpr std::size_t kParts = 32;
constexpr unsigned kPartBits = 5;
constexpr std::size_t kBuffered = 1024;
// The records that are sorted at a time.
constexpr std::uint64_t kSorted = std::uint64_t{4} * 1024 * 1024;

std::size_t PartOf(ValueHash hash) {
    return hash >> (64 - kPartBits);
}

}  // namespace

ValueSpool::Part::Part() : file(OutputFile::CreateUnnamed(std::filesystem::temp_directory_path())) {
    buffer.reserve(kBuffered);
}

void ValueSpool::Add(Column column, ValueHash hash) {
    if (m_parts.empty()) {
        m_parts.reserve(kParts);
        for (std::size_t i = 0; i < kParts; ++i) {
            m_parts.emplace_back();
        }
    }
    Part& part = m_parts[PartOf(hash)];
    part.buffer.push_back({hash, column});
    ++part.count;
    if (part.buffer.size() == kBuffered) {
        Write(part);
    }
}

void ValueSpool::Write(Part& part) {
    part.file.Append(
        {reinterpret_cast<const char*>(part.buffer.data()), part.buffer.size() * sizeof(Record)});
    part.buffer.clear();
}

// Those of the records whose turn it is: all of them, when there is one round only.
std::vector<ValueSpool::Record> ValueSpool::Read(Part& part, std::uint64_t rounds,
                                                 std::uint64_t round) {
    constexpr unsigned roundBits = 20;
    std::vector<Record> records;
    // Every opening has a place of its own in the file.
    FileBytes bytes("/proc/self/fd/" + std::to_string(part.file.Descriptor()), "a temporary file");
    std::array<char, sizeof(Record) * kBuffered> piece{};
    std::size_t have = 0;
    while (const std::size_t got = bytes.Read(piece.data() + have, piece.size() - have)) {
        have += got;
        const std::size_t whole = have / sizeof(Record);
        for (std::size_t i = 0; i < whole; ++i) {
            Record record{};
            std::memcpy(&record, piece.data() + i * sizeof(Record), sizeof(Record));
            if ((record.hash >> roundBits) % rounds == round) {
                records.push_back(record);
            }
        }
        have -= whole * sizeof(Record);
        std::memmove(piece.data(), piece.data() + whole * sizeof(Record), have);
    }
    return records;
}

std::vector<std::uint64_t> ValueSpool::CountDistinct(const std::set<ValueHash>& lookedFor,
                                                     const Found& found) {
    std::vector<std::uint64_t> distinct(m_columns);
    for (Part& part : m_parts) {
        Write(part);
        const std::uint64_t rounds = 1 + part.count / kSorted;
        for (std::uint64_t round = 0; round < rounds; ++round) {
            std::vector<Record> records = Read(part, rounds, round);
            std::sort(records.begin(), records.end(), [](const Record& a, const Record& b) {
                return std::tie(a.hash, a.column) < std::tie(b.hash, b.column);
            });
            std::optional<Record> last;
            for (const Record& record : records) {
                if (last && last->hash == record.hash && last->column == record.column) {
                    continue;
                }
                last = record;
                const auto column = static_cast<Column>(record.column);
                ++distinct[column];
                if (lookedFor.contains(record.hash)) {
                    found(column, record.hash);
                }
            }
        }
    }
    return distinct;
}

}  // namespace tool
