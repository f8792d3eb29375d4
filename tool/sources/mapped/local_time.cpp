#include "tool/sources/mapped/local_time.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <unicode/basictz.h>
#include <unicode/unistr.h>

#include <array>
#include <charconv>
#include <chrono>
#include <optional>

#include "tool/packet/importer_text.h"

namespace tool {

namespace {

constexpr double kMillis = 1000;

constexpr std::array<std::string_view, 12> kMonths = {
    "January", "February", "March",     "April",   "May",      "June",
    "July",    "August",   "September", "October", "November", "December"};

char Lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool StartsWithNoCase(std::string_view text, std::string_view beginning) {
    if (text.size() < beginning.size()) {
        return false;
    }
    for (std::size_t i = 0; i < beginning.size(); ++i) {
        if (Lower(text[i]) != Lower(beginning[i])) {
            return false;
        }
    }
    return true;
}

// A date that is being read, piece by piece.
class DateParts {
  public:
    explicit DateParts(std::string_view text) : m_rest(text) {}

    bool AtEnd() const { return m_rest.empty(); }
    bool Starts(char c) const { return m_rest.starts_with(c); }

    bool Take(char c) {
        if (!m_rest.starts_with(c)) {
            return false;
        }
        m_rest.remove_prefix(1);
        return true;
    }

    // What a letter of a format stands for.
    bool TakePart(char letter) {
        switch (letter) {
            case 'Y':
                return Number(4, 4, m_year);
            case 'y':
                return ShortYear();
            case 'm':
                return Number(1, 2, m_month);
            case 'd':
                return Number(1, 2, m_day);
            case 'H':
                return Number(1, 2, m_hour);
            case 'M':
                return Number(1, 2, m_minute);
            case 'S':
                return Number(1, 2, m_second);
            case 'b':
            case 'B':
                return MonthName(letter == 'B');
            case 'z':
                return Offset();
            default:
                return Take(letter);
        }
    }

    bool Number(std::size_t least, std::size_t most, int& number) {
        std::size_t size = 0;
        number = 0;
        while (size < most && size < m_rest.size() && m_rest[size] >= '0' && m_rest[size] <= '9') {
            number = number * 10 + (m_rest[size] - '0');
            ++size;
        }
        m_rest.remove_prefix(size);
        return size >= least;
    }

    bool Fraction() {
        int ignored = 0;
        return Number(1, 9, ignored);
    }

    // Z, +HH:MM, +HHMM or +HH.
    bool Offset() {
        if (Take('Z') || Take('z')) {
            m_offset = 0;
            return true;
        }
        const bool isEast = Starts('+');
        if (!Take('+') && !Take('-')) {
            return false;
        }
        int hours = 0;
        int minutes = 0;
        if (!Number(2, 2, hours)) {
            return false;
        }
        if (Take(':') || !AtEnd()) {
            if (!Number(2, 2, minutes)) {
                return false;
            }
        }
        constexpr int minute = 60;
        m_offset = (isEast ? minute : -minute) * (hours * minute + minutes);
        return hours < 24 && minutes < 60;
    }

    bool HasOffset() const { return m_offset.has_value(); }

    // Seconds since 1970 by the clock of which the parts are; nothing when there is no such time.
    std::optional<std::int64_t> Seconds() const {
        using namespace std::chrono;
        const year_month_day date{year(m_year), month(static_cast<unsigned>(m_month)),
                                  day(static_cast<unsigned>(m_day))};
        if (!date.ok() || m_year < 1 || m_hour > 23 || m_minute > 59 || m_second > 59) {
            return std::nullopt;
        }
        const auto moment = sys_days(date) + hours(m_hour) + minutes(m_minute) + seconds(m_second);
        return duration_cast<seconds>(moment.time_since_epoch()).count();
    }
    int OffsetSeconds() const { return m_offset.value_or(0); }

  private:
    bool ShortYear() {
        if (!Number(2, 2, m_year)) {
            return false;
        }
        m_year += m_year < 69 ? 2000 : 1900;
        return true;
    }

    bool MonthName(bool whole) {
        for (std::size_t i = 0; i < kMonths.size(); ++i) {
            const std::string_view name = whole ? kMonths.at(i) : kMonths.at(i).substr(0, 3);
            if (StartsWithNoCase(m_rest, name)) {
                m_rest.remove_prefix(name.size());
                m_month = static_cast<int>(i) + 1;
                return true;
            }
        }
        return false;
    }

    std::string_view m_rest;
    int m_year = 0;
    int m_month = 0;
    int m_day = 0;
    int m_hour = 0;
    int m_minute = 0;
    int m_second = 0;
    std::optional<int> m_offset;
};

bool ReadByFormat(DateParts& parts, std::string_view format) {
    for (std::size_t at = 0; at < format.size(); ++at) {
        const bool isPart = format[at] == '%';
        at += isPart ? 1 : 0;
        if (!(isPart ? parts.TakePart(format[at]) : parts.Take(format[at]))) {
            return false;
        }
    }
    return parts.AtEnd();
}

bool ReadIsoDate(DateParts& parts) {
    return parts.TakePart('Y') && parts.Take('-') && parts.TakePart('m') && parts.Take('-') &&
           parts.TakePart('d');
}

// ISO 8601 as the database takes it: a date, and mostly a time, of which the seconds, their
// fraction and the zone may be missing.
bool ReadIso(DateParts& parts) {
    if (!ReadIsoDate(parts)) {
        return false;
    }
    if (parts.AtEnd()) {
        return true;
    }
    if (!(parts.Take('T') || parts.Take(' ')) || !parts.TakePart('H') || !parts.Take(':') ||
        !parts.TakePart('M')) {
        return false;
    }
    if (parts.Take(':') && (!parts.TakePart('S') || (parts.Take('.') && !parts.Fraction()))) {
        return false;
    }
    return parts.AtEnd() || (parts.Offset() && parts.AtEnd());
}

std::string TextOfTime(std::int64_t seconds) {
    using namespace std::chrono;
    const sys_seconds moment{std::chrono::seconds(seconds)};
    const auto days = floor<std::chrono::days>(moment);
    const year_month_day date{days};
    const hh_mm_ss time{moment - days};
    return fmt::format("{:04}-{:02}-{:02} {:02}:{:02}:{:02}", static_cast<int>(date.year()),
                       static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                       time.hours().count(), time.minutes().count(), time.seconds().count());
}

MadeDate Convert(const DateParts& parts, std::string_view text, const LocalZone& zone) {
    MadeDate made;
    std::optional<std::int64_t> seconds = parts.Seconds();
    if (!seconds) {
        made.error = fmt::format("\"{}\" is no date: there is no such day or time", text);
        return made;
    }
    if (parts.HasOffset()) {
        *seconds -= parts.OffsetSeconds();
    } else {
        const LocalZone::Answer answer = zone.ToUtc(*seconds);
        made.cameTwice = answer == LocalZone::Answer::Twice;
        if (answer == LocalZone::Answer::Skipped) {
            made.error =
                fmt::format("the clocks skipped the time \"{}\" when they were put forward", text);
            return made;
        }
    }
    made.text = TextOfTime(*seconds);
    return made;
}

// Seconds or milliseconds since 1970.
MadeDate ReadEpoch(std::string_view text, bool isMillis) {
    MadeDate made;
    std::int64_t number = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    const bool hasFraction =
        stop != end && *stop == '.' &&
        std::string_view(stop + 1, end).find_first_not_of("0123456789") == std::string_view::npos;
    constexpr std::int64_t thousand = 1000;
    std::int64_t seconds = number;
    if (isMillis) {
        seconds = number / thousand - (number % thousand < 0 ? 1 : 0);
    } else if (hasFraction && text.starts_with('-')) {
        --seconds;
    }
    constexpr std::int64_t lastSecond = 253402300799;   // of the year 9999
    constexpr std::int64_t firstSecond = -62135596800;  // of the year 1
    if (error != std::errc() || (stop != end && !hasFraction) || seconds > lastSecond ||
        seconds < firstSecond) {
        made.error =
            fmt::format("\"{}\" is no time in {}seconds since 1970", text, isMillis ? "milli" : "");
        return made;
    }
    made.text = TextOfTime(seconds);
    return made;
}

}  // namespace

struct LocalZone::Zone {
    std::unique_ptr<icu::TimeZone> zone;
    bool isUtc = false;
};

LocalZone::LocalZone(const std::string& name) : m_zone(std::make_unique<Zone>()) {
    m_zone->zone.reset(icu::TimeZone::createTimeZone(icu::UnicodeString::fromUTF8(name)));
    m_zone->isUtc = name == "UTC";
}

LocalZone::~LocalZone() = default;

LocalZone::Answer LocalZone::ToUtc(std::int64_t& seconds) const {
    if (m_zone->isUtc) {
        return Answer::Once;
    }
    const auto& zone = static_cast<const icu::BasicTimeZone&>(*m_zone->zone);
    const UDate local = static_cast<double>(seconds) * kMillis;
    // Around a change of the clocks, the offsets before and after it are both asked for.
    const auto offset = [&](UTimeZoneLocalOption which) {
        std::int32_t raw = 0;
        std::int32_t saving = 0;
        UErrorCode error = U_ZERO_ERROR;
        zone.getOffsetFromLocal(local, which, which, raw, saving, error);
        return raw + saving;
    };
    const std::int32_t before = offset(UCAL_TZ_LOCAL_FORMER);
    const std::int32_t after = offset(UCAL_TZ_LOCAL_LATTER);
    if (before == after) {
        seconds -= before / static_cast<std::int32_t>(kMillis);
        return Answer::Once;
    }
    // Clocks that are put forward skip the times in between; put back, they show them twice.
    if (before < after) {
        return Answer::Skipped;
    }
    seconds -= before / static_cast<std::int32_t>(kMillis);
    return Answer::Twice;
}

MadeDate ReadDate(std::string_view text, const std::vector<std::string>& formats,
                  const LocalZone& zone) {
    const std::string_view trimmed = Trimmed(text);
    if (formats.empty()) {
        DateParts parts(trimmed);
        if (!ReadIso(parts) || parts.HasOffset() || !parts.Seconds()) {
            return {std::string(text), "", false};
        }
        return Convert(parts, trimmed, zone);
    }
    for (const std::string& format : formats) {
        if (format == "epoch" || format == "epoch_ms") {
            MadeDate made = ReadEpoch(trimmed, format == "epoch_ms");
            if (made.error.empty()) {
                return made;
            }
            continue;
        }
        DateParts parts(trimmed);
        if (ReadByFormat(parts, format)) {
            return Convert(parts, trimmed, zone);
        }
    }
    return {"", fmt::format("\"{}\" is no date of the format {}", text, fmt::join(formats, " or ")),
            false};
}

}  // namespace tool
