#ifndef TOOL_IO_CHARSET_DECODER_H
#define TOOL_IO_CHARSET_DECODER_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "tool/io/byte_source.h"

namespace tool {

// Whether there is an encoding of that name, as IANA and ICU know it.
bool IsKnownCharset(const std::string& name);
// Whether that is UTF-8, however it is spelt.
bool IsUtf8Charset(const std::string& name);

// Reads a text in a given encoding in chunks and gives it as UTF-8. A byte order mark of UTF-8,
// UTF-16 or UTF-32 counts for more than the encoding that was given, and is not part of the text.
// What is not text becomes marks (see decoding_marks.h) and never stops the reading.
class CharsetDecoder {
  public:
    // `source` outlives the decoder. Reads the first bytes. Throws SourceError when there is no
    // such encoding, and what the source throws.
    CharsetDecoder(ByteSource& source, const std::string& charset,
                   std::size_t chunk = kDefaultChunk);
    ~CharsetDecoder();

    // Appends the text of the next chunk to `out`. Returns false at the end, when nothing follows;
    // true does not promise that `out` grew.
    bool Read(std::string& out);

    // The encoding that is read, for people.
    const std::string& Charset() const { return m_charset; }
    std::uint64_t BytesRead() const { return m_bytesRead; }
    // Whether any mark has been put into the text so far.
    bool Marked() const { return m_marked; }

  private:
    static constexpr std::size_t kDefaultChunk = std::size_t{256} * 1024;
    class Converter;

    void ReadHead();
    std::size_t Decode(std::size_t size, std::string& out);

    ByteSource& m_source;
    std::size_t m_chunk;
    std::string m_charset;
    std::unique_ptr<Converter> m_converter;  // null for UTF-8
    std::string m_buffer;                    // a chunk, behind what the last one left
    std::size_t m_carry = 0;                 // bytes at its front
    std::uint64_t m_bytesRead = 0;
    bool m_ended = false;
    bool m_marked = false;
};

}  // namespace tool

#endif
