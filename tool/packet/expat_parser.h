#ifndef TOOL_PACKET_EXPAT_PARSER_H
#define TOOL_PACKET_EXPAT_PARSER_H

#include <cstddef>
#include <exception>
#include <memory>
#include <string_view>

struct XML_ParserStruct;

namespace tool {

// An expat parser for UTF-8 that is used for many texts, since making one costs more than reading a
// record. Handlers are set on Get() and do their work in Guard.
class ExpatParser {
  public:
    // Throws std::bad_alloc when there is no memory, as does StartAnew.
    ExpatParser();

    // Forgets what was read, and the handlers.
    void StartAnew();

    XML_ParserStruct* Get() const { return m_parser.get(); }

    // Reads the next piece of the text, or the last one. Returns false when it is not well-formed.
    // Throws what a handler has thrown.
    bool Parse(std::string_view piece, bool last);

    // Where the handler that is running, or the error, stands in the text.
    std::size_t Offset() const;
    std::size_t Line() const;  // from 1

    // Does what a handler has to do. Exceptions must not pass through C code, so they are kept
    // until it returns.
    template <typename Work>
    void Guard(Work work) noexcept {
        // The end of an empty element is reported even if its start has stopped the parser.
        if (m_failure) {
            return;
        }
        try {
            work();
        } catch (...) {
            m_failure = std::current_exception();
            Stop();
        }
    }

  private:
    struct Free {
        void operator()(XML_ParserStruct* parser) const noexcept;
    };

    void Stop() noexcept;

    std::unique_ptr<XML_ParserStruct, Free> m_parser;
    std::exception_ptr m_failure;
};

}  // namespace tool

#endif
