#ifndef TOOL_IO_BYTE_CODEC_H
#define TOOL_IO_BYTE_CODEC_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tool {

// Numbers and texts as bytes that only this program reads again, in the same order.
class ByteWriter {
  public:
    // Appends to `bytes`, which outlive the object.
    explicit ByteWriter(std::string& bytes) : m_bytes(bytes) {}

    void Number(std::uint64_t number) {
        while (number >= 0x80U) {
            m_bytes += static_cast<char>(number | 0x80U);
            number >>= 7U;
        }
        m_bytes += static_cast<char>(number);
    }
    void Text(std::string_view text) {
        Number(text.size());
        m_bytes += text;
    }

  private:
    std::string& m_bytes;
};

class ByteReader {
  public:
    explicit ByteReader(std::string_view bytes) : m_bytes(bytes) {}

    std::uint64_t Number() {
        std::uint64_t number = 0;
        unsigned shift = 0;
        unsigned char byte = 0;
        do {
            byte = static_cast<unsigned char>(m_bytes.front());
            m_bytes.remove_prefix(1);
            number |= static_cast<std::uint64_t>(byte & 0x7FU) << shift;
            shift += 7;
        } while (byte >= 0x80U);
        return number;
    }
    // Valid as long as the bytes.
    std::string_view Text() {
        const std::size_t size = Number();
        const std::string_view text = m_bytes.substr(0, size);
        m_bytes.remove_prefix(size);
        return text;
    }
    void Text(std::string& text) { text.assign(Text()); }
    template <typename Item, typename Read>
    void List(std::vector<Item>& items, Read read) {
        items.resize(Number());
        for (Item& item : items) {
            read(item);
        }
    }

  private:
    std::string_view m_bytes;
};

}  // namespace tool

#endif
