#ifndef PLATFORM_CORE_ADDATETIME_H
#define PLATFORM_CORE_ADDATETIME_H

#include <string_view>

#include "platform/foundation/obx_string.h"

// A date and time of the Gregorian calendar, UTC, in whole seconds, years 1 to 9999.
class AdDateTime {
  public:
    // Takes over the date and time in `text` and returns 1; returns 0 and stays as it was when the
    // text is not one. Accepted is ISO 8601 with every number in full ("09", not "9"):
    // "YYYY-MM-DD"; then a "T" or one blank and "HH:MM" with an optional ":SS" and an optional
    // fraction of it (which is dropped); then "Z" or an offset of -12:00 to +14:00 (+HH:MM, +HHMM
    // or +HH), which is turned into UTC. A date alone means midnight. White space around it is
    // ignored. Refused are dates that do not exist, 24:00, a 60th second (the calendar here has no
    // leap seconds), and a time whose UTC form lies outside the years 1 to 9999. The flag is
    // reserved and must be 0.
    int ParseDateTime(const Obx_String& text, int reserved);
    // The same; true for 1.
    bool Parse(std::u16string_view text);

    // The value by a pattern of %Y, %m, %d, %H, %M, %S and %%; other characters stand for
    // themselves.
    Obx_String Format(const char16_t* pattern) const;

  private:
    int m_year = 1970;
    int m_month = 1;
    int m_day = 1;
    int m_hour = 0;
    int m_minute = 0;
    int m_second = 0;
};

#endif
