#include "tool/load/waiting/waiting_record.h"

#include <cstring>
#include <string_view>

namespace tool {

namespace {

void AppendNumber(std::uint64_t number, std::string& bytes) {
    char raw[sizeof number];
    std::memcpy(raw, &number, sizeof number);
    bytes.append(raw, sizeof raw);
}

void AppendText(std::string_view text, std::string& bytes) {
    AppendNumber(text.size(), bytes);
    bytes += text;
}

class Reader {
  public:
    explicit Reader(std::span<const std::byte> bytes)
        : m_rest(reinterpret_cast<const char*>(bytes.data()), bytes.size()) {}

    std::uint64_t Number() {
        std::uint64_t number = 0;
        std::memcpy(&number, m_rest.data(), sizeof number);
        m_rest.remove_prefix(sizeof number);
        return number;
    }
    std::string_view Text() {
        const auto size = static_cast<std::size_t>(Number());
        const std::string_view text = m_rest.substr(0, size);
        m_rest.remove_prefix(size);
        return text;
    }

  private:
    std::string_view m_rest;
};

}  // namespace

// What is raw ends the packet, so that it need not be written twice.
void WaitingRecord::Append(const SourceRecord& record, std::string& bytes) {
    const bool isEnd = record.packet.ends_with(record.raw);
    AppendText(record.packet, bytes);
    AppendNumber(isEnd ? 1 : 0, bytes);
    if (isEnd) {
        AppendNumber(record.raw.size(), bytes);
    } else {
        AppendText(record.raw, bytes);
    }
    AppendText(record.source, bytes);
    AppendText(record.unit, bytes);
    for (const std::uint64_t number : {record.ordinal, record.number, record.line, record.offset}) {
        AppendNumber(number, bytes);
    }
    AppendNumber(record.openSection ? 1 : 0, bytes);
    AppendNumber(record.guarded ? 1 : 0, bytes);
    AppendNumber(record.rows == nullptr ? 0 : 1 + record.rows->size(), bytes);
    if (record.rows != nullptr) {
        for (const RowSpan& row : *record.rows) {
            AppendNumber(row.file, bytes);
            AppendNumber(row.begin, bytes);
            AppendNumber(row.size, bytes);
        }
    }
}

void WaitingRecord::Read(std::span<const std::byte> bytes) {
    Reader reader(bytes);
    m_record = SourceRecord();
    m_record.packet = reader.Text();
    if (reader.Number() != 0) {
        const std::string_view packet = m_record.packet;
        m_raw = packet.substr(packet.size() - static_cast<std::size_t>(reader.Number()));
    } else {
        m_raw = reader.Text();
    }
    m_source = reader.Text();
    m_unit = reader.Text();
    m_record.raw = m_raw;
    m_record.source = m_source;
    m_record.unit = m_unit;
    m_record.ordinal = reader.Number();
    m_record.number = reader.Number();
    m_record.line = reader.Number();
    m_record.offset = reader.Number();
    m_record.openSection = reader.Number() != 0;
    m_record.guarded = reader.Number() != 0;
    m_rows.clear();
    if (const std::uint64_t rows = reader.Number(); rows > 0) {
        for (std::uint64_t i = 1; i < rows; ++i) {
            RowSpan& row = m_rows.emplace_back();
            row.file = static_cast<std::uint32_t>(reader.Number());
            row.begin = reader.Number();
            row.size = reader.Number();
        }
        m_record.rows = &m_rows;
    }
}

}  // namespace tool
