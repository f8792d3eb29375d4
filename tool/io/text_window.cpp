#include "tool/io/text_window.h"

#include "tool/io/text_units.h"

namespace tool {

TextWindow::TextWindow(TextDecoder& decoder)
    : m_decoder(decoder), m_sourceOffset(decoder.TextBegin()) {}

bool TextWindow::Grow() {
    // Moving the rest only when it is the smaller part keeps the cost linear, however far ahead
    // someone has looked.
    if (m_begin >= m_text.size() - m_begin) {
        m_text.erase(0, m_begin);
        m_begin = 0;
    }
    return m_decoder.Read(m_text);
}

bool TextWindow::Ensure(std::size_t size) {
    while (m_text.size() - m_begin < size) {
        if (!Grow()) {
            return false;
        }
    }
    return true;
}

void TextWindow::Consume(std::size_t size) {
    std::string_view gone = Text().substr(0, size);
    m_line += CountLineEnds(gone);
    m_sourceOffset += m_decoder.SourceBytes(gone);
    m_consumed += gone.size();
    m_begin += gone.size();
}

}  // namespace tool
