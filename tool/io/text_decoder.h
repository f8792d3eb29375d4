#ifndef TOOL_IO_TEXT_DECODER_H
#define TOOL_IO_TEXT_DECODER_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "tool/io/byte_source.h"

namespace tool {

enum class Encoding { Utf8, Utf16LittleEndian, Utf16BigEndian };

// Reads a packet file in chunks and gives its text as UTF-8 whatever its encoding.
//
// The encoding is recognised by the byte order mark or, without one, by the first bytes. An XML
// declaration that names UTF-8, UTF-16 or US-ASCII changes nothing about that (files often keep the
// name after they were converted); one that names another encoding is refused. A byte order mark is
// not part of the text. What is not text becomes marks (see decoding_marks.h) and never stops the
// reading.
class TextDecoder {
  public:
    static constexpr std::size_t kDefaultChunk = std::size_t{256} * 1024;

    // `source` stays the caller's and must outlive the decoder. `chunk` is the number of bytes read
    // and decoded at a time. Reads the first bytes; throws SourceError when it is in another
    // encoding, and what the source throws.
    explicit TextDecoder(ByteSource& source, std::size_t chunk = kDefaultChunk);

    // Appends the text of the next chunk to `out`. Returns false at the end, when nothing follows;
    // true does not promise that `out` grew.
    bool Read(std::string& out);

    Encoding SourceEncoding() const { return m_encoding; }

    // Length of the byte order mark: the place in the source at which the text begins.
    std::size_t TextBegin() const { return m_textBegin; }

    // The number of source bytes that a piece of text from Read stands for.
    std::uint64_t SourceBytes(std::string_view text) const;

    // Bytes read from the source so far.
    std::uint64_t BytesRead() const { return m_bytesRead; }

    // Whether any mark has been put into the text so far.
    bool Marked() const { return m_marked; }

  private:
    void ReadHead();
    void CheckDeclaration() const;
    std::size_t NextBytes(char* buffer, std::size_t size);
    std::size_t Decode(std::size_t size, bool last, std::string& out);

    ByteSource& m_source;
    std::size_t m_chunk;
    Encoding m_encoding = Encoding::Utf8;
    std::size_t m_textBegin = 0;
    std::uint64_t m_bytesRead = 0;
    bool m_ended = false;
    bool m_marked = false;
    std::string m_head;                // bytes read to recognise the encoding
    std::size_t m_headAt = 0;          // how many of them are decoded
    std::unique_ptr<char[]> m_buffer;  // one chunk, after what the last one left
    std::size_t m_carry = 0;  // bytes at its front: a character that was cut by the chunk's end
};

}  // namespace tool

#endif
