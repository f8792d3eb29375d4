#ifndef TOOL_SOURCES_KIND_MADE_SOURCE_H
#define TOOL_SOURCES_KIND_MADE_SOURCE_H

#include <cstdint>
#include <memory>
#include <string>

#include "tool/sources/kind/record_source.h"

namespace tool {

// A source that stands in no file of its own: a step of a map, say.
class MadeSource {
  public:
    MadeSource() = default;
    MadeSource(const MadeSource&) = delete;
    MadeSource& operator=(const MadeSource&) = delete;
    virtual ~MadeSource() = default;

    virtual const std::string& Name() const = 0;

    // What tells the packets that it gives from any others: 64 lower-case hexadecimal digits.
    virtual const std::string& Sha256() const = 0;

    // What BytesRead of a reading comes to at its end.
    virtual std::uint64_t Size() const = 0;

    // Opens it at its front. The reading must not outlive the source.
    virtual std::unique_ptr<RecordSource> Open() const = 0;
};

}  // namespace tool

#endif
