#ifndef TOOL_IO_SOURCE_ERROR_H
#define TOOL_IO_SOURCE_ERROR_H

#include <stdexcept>
#include <string>
#include <utility>

namespace tool {

// What is wrong with a source as a whole, as opposed to one of its records.
enum class SourceProblem {
    NotFound,             // nothing stands at the path
    NotReadable,          // it is there and cannot be opened or read
    Changed,              // it is not what it was when its reading began
    NoPackets,            // a directory without *.xml files, or no source at all
    RepeatedInput,        // standard input is named more than once
    UnsupportedEncoding,  // neither UTF-8 nor UTF-16
    Undecodable,          // bytes that are no text in a packet that is needed whole
    TooLarge,             // a packet that is needed whole and does not fit the limit
    NotAPacket,           // a configuration that is not well-formed XML
    Refused,              // a packet that the load as a whole has no use for
};

// A source that cannot be used. what() names the source and says what to do about it.
class SourceError : public std::runtime_error {
  public:
    SourceError(SourceProblem problem, std::string source, const std::string& text)
        : std::runtime_error(text), m_problem(problem), m_source(std::move(source)) {}

    SourceProblem Problem() const noexcept { return m_problem; }

    // The source's name as the person wrote it, or the path of the file inside a directory.
    const std::string& Source() const noexcept { return m_source; }

  private:
    SourceProblem m_problem;
    std::string m_source;
};

}  // namespace tool

#endif
