#ifndef PLATFORM_FOUNDATION_WHITE_SPACE_H
#define PLATFORM_FOUNDATION_WHITE_SPACE_H

// Whether the unit is white space by Unicode's White_Space property.
bool IsWhiteSpace(char16_t unit);

#endif
