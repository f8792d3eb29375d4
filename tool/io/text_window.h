#ifndef TOOL_IO_TEXT_WINDOW_H
#define TOOL_IO_TEXT_WINDOW_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "tool/io/text_decoder.h"

namespace tool {

// The part of a decoded source that is being looked at: grows at its end as far as someone needs to
// see, and is consumed at its front. Knows the line and the place in the source of its front.
// Positions are counted from the front and stay valid while the window grows; views do not.
class TextWindow {
  public:
    // `decoder` stays the caller's and must outlive the window.
    explicit TextWindow(TextDecoder& decoder);

    // What is read and not consumed. Valid until Grow, Ensure or Consume.
    std::string_view Text() const { return std::string_view(m_text).substr(m_begin); }

    // Reads one more chunk. Returns false at the end of the source.
    bool Grow();

    // Grows until `size` bytes stand in the window. Returns false when the source ends before.
    bool Ensure(std::size_t size);

    // Drops `size` bytes, all of them read, from the front.
    void Consume(std::size_t size);

    // Line of the front, counted from 1; a line ends with LF.
    std::uint64_t Line() const { return m_line; }

    // Place of the front in the source, in bytes of the source.
    std::uint64_t SourceOffset() const { return m_sourceOffset; }

    // Number of bytes of text consumed so far.
    std::uint64_t Consumed() const { return m_consumed; }

  private:
    TextDecoder& m_decoder;
    std::string m_text;
    std::size_t m_begin = 0;
    std::uint64_t m_line = 1;
    std::uint64_t m_sourceOffset;
    std::uint64_t m_consumed = 0;
};

}  // namespace tool

#endif
