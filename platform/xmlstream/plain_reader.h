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
    // A tag, with the text in front of it. The views are of the text that it was read from.
    struct Tag {
        std::string_view before;
        bool isEnd = false;
        std::string_view name;
        std::string_view attribute;  // its name; empty for none
        std::string_view value;      // of the attribute
    };

    // Deeper elements are expat's, which knows how deep is too deep.
    static constexpr std::size_t kDeepest = 100;

    // In front of an input it is no part of it, and anywhere else it is.
    static constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

    enum class Result {
        kRead,
        kIncomplete,  // it may be plain, when more of the text is there
        kNotPlain
    };

    // Reads one tag with the text in front of it, which begins at `at` in `text`, into the queue,
    // and moves `at` past it. Nothing is done unless it is read. `text` is an input from its
    // beginning.
    static Result ReadTag(std::string_view text, std::size_t& at, TokenQueue& queue);

    // The same for who keeps account of open elements and white space himself: that an end tag
    // belongs to the last element that is open, of which there are not too many, is not checked.
    static Result ReadTag(std::string_view text, std::size_t& at, Tag& tag);
};

#endif
