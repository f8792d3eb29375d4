#include "platform/core/addatetime.h"

#include <chrono>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>

#include "platform/foundation/decimal_digit.h"
#include "platform/foundation/white_space.h"

namespace {

using Seconds = std::chrono::sys_seconds;

constexpr int kMostSecondsAhead = 14 * 3600;
constexpr int kMostSecondsBehind = 12 * 3600;

// Reads a text part by part, from its front. A part that does not fit makes the reader fail, and it
// stays failed, so that it is enough to ask for the result at the end.
class Reader {
  public:
    explicit Reader(std::u16string_view text) : m_rest(text) {}

    bool Failed() const { return m_failed; }
    bool AtEnd() const { return m_rest.empty(); }
    bool NextIsDigit() const { return !m_rest.empty() && IsDecimalDigit(m_rest.front()); }

    // Takes the unit if it comes next.
    bool Skip(char16_t unit) {
        const bool next = !m_rest.empty() && m_rest.front() == unit;
        m_rest.remove_prefix(next ? 1 : 0);
        return next;
    }

    void Expect(char16_t unit) { m_failed = !Skip(unit) || m_failed; }

    // A number of exactly `digits` digits, from `least` to `most`.
    int Number(int digits, int least, int most) {
        int number = 0;
        for (int i = 0; i < digits; ++i) {
            if (!NextIsDigit()) {
                m_failed = true;
                return least;
            }
            number = number * 10 + (m_rest.front() - u'0');
            m_rest.remove_prefix(1);
        }
        m_failed = m_failed || number < least || number > most;
        return number;
    }

    void Fail() { m_failed = true; }

  private:
    std::u16string_view m_rest;
    bool m_failed = false;
};

std::chrono::sys_days ReadDate(Reader& reader) {
    const std::chrono::year year(reader.Number(4, 1, 9999));
    reader.Expect(u'-');
    const std::chrono::month month(static_cast<unsigned>(reader.Number(2, 1, 12)));
    reader.Expect(u'-');
    const std::chrono::day day(static_cast<unsigned>(reader.Number(2, 1, 31)));
    const std::chrono::year_month_day date(year, month, day);
    if (reader.Failed() || !date.ok()) {
        reader.Fail();
        return {};
    }
    return date;
}

std::chrono::seconds ReadTime(Reader& reader) {
    const int hour = reader.Number(2, 0, 23);
    reader.Expect(u':');
    const int minute = reader.Number(2, 0, 59);
    int second = 0;
    if (reader.Skip(u':')) {
        second = reader.Number(2, 0, 59);
        if (reader.Skip(u'.') || reader.Skip(u',')) {
            reader.Number(1, 0, 9);
            while (reader.NextIsDigit()) {
                reader.Number(1, 0, 9);
            }
        }
    }
    return std::chrono::seconds(hour * 3600 + minute * 60 + second);
}

// How far the local time is ahead of UTC.
std::chrono::seconds ReadZone(Reader& reader) {
    if (reader.AtEnd() || reader.Skip(u'Z')) {
        return {};
    }
    const bool behind = reader.Skip(u'-');
    if (!behind) {
        reader.Expect(u'+');
    }
    const int hours = reader.Number(2, 0, 14);
    const bool colon = reader.Skip(u':');
    const int minutes = colon || !reader.AtEnd() ? reader.Number(2, 0, 59) : 0;
    const int seconds = hours * 3600 + minutes * 60;
    if (seconds > (behind ? kMostSecondsBehind : kMostSecondsAhead)) {
        reader.Fail();
    }
    return std::chrono::seconds(behind ? -seconds : seconds);
}

std::optional<Seconds> ReadDateTime(std::u16string_view text) {
    Reader reader(text);
    Seconds time = ReadDate(reader);
    if (!reader.Failed() && !reader.AtEnd()) {
        if (!reader.Skip(u'T')) {
            reader.Expect(u' ');
        }
        time += ReadTime(reader);
        time -= ReadZone(reader);
    }
    return reader.Failed() || !reader.AtEnd() ? std::nullopt : std::optional(time);
}

std::u16string_view Trimmed(std::u16string_view text) {
    while (!text.empty() && IsWhiteSpace(text.front())) {
        text.remove_prefix(1);
    }
    while (!text.empty() && IsWhiteSpace(text.back())) {
        text.remove_suffix(1);
    }
    return text;
}

struct Field {
    char16_t name;
    int value;
    std::size_t digits;
};

// Puts what "%" and `name` stand for: the field of this name, or a "%" for "%%". Any other pair
// stands for itself. Returns the end of what was put.
char16_t* PutField(char16_t* to, std::span<const Field> fields, char16_t name) {
    for (const Field& field : fields) {
        if (field.name == name) {
            int rest = field.value;
            for (std::size_t i = field.digits; i > 0; --i, rest /= 10) {
                to[i - 1] = static_cast<char16_t>(u'0' + rest % 10);
            }
            return to + field.digits;
        }
    }
    *to++ = u'%';
    if (name != u'%') {
        *to++ = name;
    }
    return to;
}

}  // namespace

int AdDateTime::ParseDateTime(const Obx_String& text, int /*reserved*/) {
    return Parse(text.View()) ? 1 : 0;
}

bool AdDateTime::Parse(std::u16string_view text) {
    const std::optional<Seconds> time = ReadDateTime(Trimmed(text));
    if (!time) {
        return false;
    }
    const auto days = std::chrono::floor<std::chrono::days>(*time);
    const std::chrono::year_month_day date(days);
    // An offset can carry a time of the first or last day out of the calendar's years.
    if (int(date.year()) < 1 || int(date.year()) > 9999) {
        return false;
    }
    const std::chrono::hh_mm_ss clock(*time - days);
    m_year = int(date.year());
    m_month = static_cast<int>(unsigned(date.month()));
    m_day = static_cast<int>(unsigned(date.day()));
    m_hour = static_cast<int>(clock.hours().count());
    m_minute = static_cast<int>(clock.minutes().count());
    m_second = static_cast<int>(clock.seconds().count());
    return true;
}

Obx_String AdDateTime::Format(const char16_t* pattern) const {
    const Field fields[] = {{u'Y', m_year, 4}, {u'm', m_month, 2},  {u'd', m_day, 2},
                            {u'H', m_hour, 2}, {u'M', m_minute, 2}, {u'S', m_second, 2}};
    // No field has more digits than twice the two units that stand for it.
    const std::u16string_view whole = pattern;
    std::u16string out(2 * whole.size(), u'\0');
    char16_t* end = out.data();
    for (std::u16string_view rest = whole; !rest.empty(); rest.remove_prefix(1)) {
        if (rest.front() == u'%' && rest.size() > 1) {
            rest.remove_prefix(1);
            end = PutField(end, fields, rest.front());
        } else {
            *end++ = rest.front();
        }
    }
    out.resize(static_cast<std::size_t>(end - out.data()));
    return Obx_String(std::move(out));
}
