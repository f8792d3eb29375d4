#ifndef PLATFORM_CORE_ADTEXT_H
#define PLATFORM_CORE_ADTEXT_H

#include <string_view>

#include "platform/foundation/cstringarray.h"
#include "platform/foundation/obx_string.h"

// Whether the text has no characters.
int AdIsEmpty(const Obx_String& text);

// Exact comparison, with regard to case.
int AdIsEqual(const Obx_String& a, const Obx_String& b);
int AdIsUnequal(const Obx_String& a, const Obx_String& b);

// Comparison with case folded by Unicode.
int AdIsEqualNoCase(const Obx_String& a, const Obx_String& b);

// Replaces every occurrence of `from` in the text by `to`, from left to right; what was put in is
// not looked at again. An empty `from` changes nothing.
void AdReplaceString(Obx_String& text, const Obx_String& from, const Obx_String& to);

// Replaces `parts` by the parts of the text between the occurrences of the separator. The empty
// text gives no part; neighbouring separators give empty parts.
void AdSplitString(const Obx_String& text, const Obx_String& separator, CStringArray& parts);

// Replaces `lines` by the text's lines. LF, CR LF and CR end a line; empty lines are kept; a line
// end at the end of the text adds no further line.
void AdSplitTextIntoLines(const Obx_String& text, CStringArray& lines);

// Takes the first line off the front of such a text, which is not empty, and returns it.
std::u16string_view AdTakeLine(std::u16string_view& text);

// The part of the path after its last slash or backslash.
Obx_String AdBasename(const Obx_String& path);

// The decimal number that the text begins with (after blanks, with an optional sign); 0 when it
// does not begin with one. A number outside the range of long gives the nearest one.
long AdStrToLong(const Obx_String& text);

#endif
