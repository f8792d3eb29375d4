#ifndef PLATFORM_XMLSTREAM_PLAIN_READER_H
#define PLATFORM_XMLSTREAM_PLAIN_READER_H

#include <cstddef>
#include <string_view>

#include "platform/xmlstream/token_queue.h"

// Reads the plain markup that nearly all records consist of: tags with at most one attribute, and
// text without CDATA sections, comments and escapes but those of single characters. What it takes
// is well-formed, and makes the tokens that expat makes of it; everything else it leaves alone.
class PlainReader {
  public:
    enum class Result {
        kRead,
        kIncomplete,  // it may be plain, when more of the text is there
        kNotPlain
    };

    // Reads one tag with the text in front of it, which begins at `at` in `text`, into the queue,
    // and moves `at` past it. Nothing is done unless it is read.
    static Result ReadTag(std::string_view text, std::size_t& at, TokenQueue& queue);
};

#endif
