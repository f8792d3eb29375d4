#include "tool/survey/date_guess.h"

#include <algorithm>

#include "recorddb/value_text.h"
#include "tool/sources/mapped/local_time.h"

namespace tool {

namespace {

// A text is no date when it is longer.
constexpr std::size_t kLongestDate = 48;
// So many texts, and one in so many, may be no dates, or dates in another format.
constexpr std::uint64_t kExceptions = 2;
constexpr std::uint64_t kExceptionShare = 20;

const std::vector<std::string>& DateFormats() {
    static const std::vector<std::string> kFormats = [] {
        std::vector<std::string> formats = {""};
        for (const char* const date :
             {"%d.%m.%Y", "%m/%d/%Y", "%d/%m/%Y", "%Y/%m/%d", "%m-%d-%Y", "%d-%m-%Y", "%d.%m.%y",
              "%m/%d/%y", "%d/%m/%y", "%d %b %Y", "%d %B %Y", "%b %d, %Y", "%B %d, %Y", "%d-%b-%Y",
              "%d-%b-%y", "%d/%b/%Y", "%d/%b/%y"}) {
            for (const char* const time : {"", " %H:%M", " %H:%M:%S", " %H:%M:%S %z"}) {
                formats.push_back(std::string(date) + time);
            }
        }
        return formats;
    }();
    return kFormats;
}

// A date without a time needs no zone. A format with %z always has one, and ISO 8601 may have one.
bool LacksZoneOfTime(std::string_view text, const std::string& format) {
    if (!format.empty()) {
        return format.find("%H") != format.npos && !format.ends_with("%z");
    }
    constexpr std::size_t daySize = 10;
    return text.size() > daySize && text.find_first_of("Zz+-", daySize) == text.npos;
}

bool IsDate(std::string_view text, const std::string& format) {
    static const LocalZone kUtc("UTC");
    return format.empty() ? recorddb::DateTimeOf(text).has_value()
                          : ReadDate(text, {format}, kUtc).error.empty();
}

bool MayBeDate(std::string_view text) {
    return text.size() <= kLongestDate &&
           std::any_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; }) &&
           text.find_first_of("-/. ") != text.npos;
}

}  // namespace

struct DateGuess::Candidate {
    const std::string* format;
    std::uint64_t dates = 0;
};

DateGuess::DateGuess() = default;
DateGuess::~DateGuess() = default;
DateGuess::DateGuess(DateGuess&&) noexcept = default;
DateGuess& DateGuess::operator=(DateGuess&&) noexcept = default;

void DateGuess::Add(std::string_view text) {
    ++m_texts;
    if (m_gaveUp) {
        return;
    }
    if (m_texts == 1) {
        for (const std::string& format : DateFormats()) {
            m_candidates.push_back({&format});
        }
    }
    bool isDate = false;
    bool lacksZone = false;
    const bool mayBeDate = MayBeDate(text);
    for (Candidate& candidate : m_candidates) {
        if (mayBeDate && IsDate(text, *candidate.format)) {
            ++candidate.dates;
            isDate = true;
            lacksZone |= LacksZoneOfTime(text, *candidate.format);
        }
    }
    m_lacksZone |= lacksZone;
    if (!isDate) {
        m_exception = text.substr(0, kLongestDate);
    }
    const std::uint64_t allowed = m_texts == 1 ? 0 : kExceptions + m_texts / kExceptionShare;
    std::erase_if(m_candidates,
                  [&](const Candidate& candidate) { return m_texts - candidate.dates > allowed; });
    m_gaveUp = m_candidates.empty();
}

std::uint64_t DateGuess::Dates() const {
    std::uint64_t most = 0;
    for (const Candidate& candidate : m_candidates) {
        most = std::max(most, candidate.dates);
    }
    return most;
}

std::vector<std::string> DateGuess::Formats() const {
    const std::uint64_t most = Dates();
    std::vector<std::string> formats;
    for (const Candidate& candidate : m_candidates) {
        if (candidate.dates == most && most > 0) {
            formats.push_back(*candidate.format);
        }
    }
    return formats;
}

}  // namespace tool
