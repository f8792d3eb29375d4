#ifndef TOOL_IO_FRAME_SPOOL_H
#define TOOL_IO_FRAME_SPOOL_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#include "tool/io/byte_source.h"
#include "tool/io/output_file.h"

namespace tool {

// Any number of pieces of bytes in a temporary file that no folder shows. They are written, and
// then read from the front any number of times.
class FrameSpool {
  public:
    // Throws std::system_error when the file cannot be made or written.
    FrameSpool();

    // Adds what `fill` appends to the text that it gets.
    template <typename Fill>
    void Add(Fill fill) {
        const std::size_t begin = m_buffer.size();
        m_buffer.append(sizeof(Length), '\0');
        fill(m_buffer);
        const Length length = m_buffer.size() - begin - sizeof(Length);
        std::memcpy(m_buffer.data() + begin, &length, sizeof length);
        if (m_buffer.size() >= kPieceSize) {
            Finish();
        }
    }
    // Writes what is buffered; to be called after the last Add, before it is read.
    void Finish();

    // In bytes.
    std::uint64_t Size() const { return m_file.Size() + m_buffer.size(); }

    // A reading, which must not outlive the spool.
    class Reader {
      public:
        // From `offset` on, which is what Size was before an Add.
        explicit Reader(const FrameSpool& spool, std::uint64_t offset = 0)
            : m_spool(spool), m_offset(offset) {}

        // False after the last piece; `bytes` are valid until the next one is read. Throws
        // std::system_error.
        bool Next(std::string_view& bytes);
        std::uint64_t BytesRead() const { return m_offset - (m_buffer.size() - m_at); }

      private:
        bool Fill(std::size_t size);

        const FrameSpool& m_spool;
        std::string m_buffer;
        std::size_t m_at = 0;
        std::uint64_t m_offset;  // of what follows the buffer in the file
    };

  private:
    using Length = std::uint64_t;

    OutputFile m_file;
    std::string m_buffer;
};

}  // namespace tool

#endif
