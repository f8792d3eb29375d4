#ifndef TOOL_IO_BYTE_SET_H
#define TOOL_IO_BYTE_SET_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace tool {

// Bytes that are looked for in texts, most of which hold none of them.
class ByteSet {
  public:
    // The bytes for which `isIn`, called with each as a char, is true.
    template <typename IsIn>
    explicit constexpr ByteSet(IsIn isIn) {
        for (std::size_t byte = 0; byte < m_isIn.size(); ++byte) {
            m_isIn[byte] = isIn(static_cast<char>(static_cast<unsigned char>(byte))) ? 1 : 0;
        }
    }

    constexpr bool Has(char c) const { return Flag(c) != 0; }

    // The place of the first of them in `text` from `at` on, or the end of the text.
    std::size_t Find(std::string_view text, std::size_t at = 0) const {
        constexpr std::size_t step = 4;
        const char* const bytes = text.data();
        while (text.size() - at >= step && (Flag(bytes[at]) | Flag(bytes[at + 1]) |
                                            Flag(bytes[at + 2]) | Flag(bytes[at + 3])) == 0) {
            at += step;
        }
        while (at < text.size() && !Has(bytes[at])) {
            ++at;
        }
        return at;
    }

    bool IsIn(std::string_view text) const { return Find(text) < text.size(); }

  private:
    constexpr std::uint8_t Flag(char c) const { return m_isIn[static_cast<unsigned char>(c)]; }

    std::array<std::uint8_t, 256> m_isIn{};  // 1 for those that are
};

}  // namespace tool

#endif
