#ifndef PLATFORM_FOUNDATION_DECIMAL_DIGIT_H
#define PLATFORM_FOUNDATION_DECIMAL_DIGIT_H

// Whether the unit is one of the digits 0 to 9; digits of other scripts are not meant.
constexpr bool IsDecimalDigit(char16_t unit) {
    return unit >= u'0' && unit <= u'9';
}

#endif
