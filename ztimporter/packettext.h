#ifndef ZTIMPORTER_PACKETTEXT_H
#define ZTIMPORTER_PACKETTEXT_H

#include <string_view>

// The text of a packet, from the place that its parser has come to up to its end. The end is found
// once, so that no question and no record measures the text again. The text is not copied.
class PacketText {
  public:
    // Takes a parser's input, zero-terminated UTF-8 that must outlive its use; traces under the
    // parser's tag. A null pointer leaves the former text in place. The text begins 38 bytes on
    // when the usual XML declaration occurs anywhere in it. These bytes are counted from the start
    // of the text and not from the declaration, which is expected to stand there: packets that have
    // something before it lose the beginning of their first element, and callers rely on what they
    // then get.
    void SetInputData(const char16_t* tag, const char* text);

    // False as long as no text was given.
    explicit operator bool() const { return m_rest.data() != nullptr; }

    std::string_view Rest() const { return m_rest; }
    void Advance(std::size_t bytes) { m_rest.remove_prefix(bytes); }

  private:
    std::string_view m_rest;
};

#endif
