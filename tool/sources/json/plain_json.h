#ifndef TOOL_SOURCES_JSON_PLAIN_JSON_H
#define TOOL_SOURCES_JSON_PLAIN_JSON_H

#include <cstddef>
#include <string_view>

#include "tool/sources/json/row_builder.h"

namespace tool {

// Builds the row of `text`, a whole JSON value, where that is plain: without \u, exponents of
// numbers, and deep nesting. Returns false where it is not, or is no JSON at all: then the parser
// has to read it from its beginning, into a row that is begun anew. It decides on all that is odd
// or wrong; a plain text means the same to both.
bool ReadPlainJson(std::string_view text, RowBuilder& builder);

// The same of an object or a list with which `text` begins, whatever follows it. Returns the bytes
// that it takes; 0 where it is not plain, or does not end in `text`.
std::size_t ReadPlainJsonAhead(std::string_view text, RowBuilder& builder);

}  // namespace tool

#endif
