#include "tool/report/progress.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <utility>

#include "tool/text/number_text.h"
#include "tool/text/visible_text.h"

namespace tool {

namespace {

using namespace std::chrono_literals;

constexpr auto kRedrawPause = 200ms;
constexpr auto kPlainPause = 10s;
constexpr auto kPlainStepPause = 1s;
constexpr auto kSamplePause = 1s;
constexpr std::size_t kSamplesKept = 10;

double Seconds(std::chrono::steady_clock::duration span) {
    return std::chrono::duration<double>(span).count();
}

std::uint64_t Percent(std::uint64_t bytes, std::uint64_t total) {
    double part = static_cast<double>(bytes) / static_cast<double>(total);
    return std::min<std::uint64_t>(100, static_cast<std::uint64_t>(part * 100));
}

std::string ShowTime(double seconds) {
    auto whole = static_cast<std::uint64_t>(std::llround(seconds));
    std::uint64_t hours = whole / 3600;
    std::uint64_t minutes = whole / 60 % 60;
    return hours > 0 ? fmt::format("{}:{:02}:{:02}", hours, minutes, whole % 60)
                     : fmt::format("{}:{:02}", minutes, whole % 60);
}

}  // namespace

ProgressStyle ChooseProgressStyle(bool quiet, int descriptor) {
    if (quiet) {
        return ProgressStyle::Quiet;
    }
    return ::isatty(descriptor) == 1 ? ProgressStyle::Terminal : ProgressStyle::Plain;
}

Progress::Progress(std::ostream& out, ProgressStyle style, std::uint64_t totalBytes, Clock clock)
    : m_out(out),
      m_style(style),
      m_totalBytes(totalBytes),
      m_clock(std::move(clock)),
      m_latest{m_clock(), 0, 0},
      m_shown(m_latest),
      m_recent{m_latest} {}

void Progress::Update(std::uint64_t records, std::uint64_t bytes) {
    if (m_style == ProgressStyle::Quiet || m_finished) {
        return;
    }
    m_latest = {m_clock(), records, bytes};
    if (IsDue(m_latest)) {
        Draw(Describe(m_latest));
        m_shown = m_latest;
    }
    Remember(m_latest);
}

bool Progress::IsDue(const Sample& now) const {
    auto pause = now.time - m_shown.time;
    if (m_style == ProgressStyle::Terminal) {
        return pause >= kRedrawPause;
    }
    bool stepped = m_totalBytes > 0 && Percent(now.bytes, m_totalBytes) / 10 >
                                           Percent(m_shown.bytes, m_totalBytes) / 10;
    return pause >= kPlainPause || (stepped && pause >= kPlainStepPause);
}

void Progress::Remember(const Sample& now) {
    if (now.time - m_recent.back().time < kSamplePause) {
        return;
    }
    m_recent.push_back(now);
    if (m_recent.size() > kSamplesKept) {
        m_recent.pop_front();
    }
}

std::string Progress::Describe(const Sample& now) const {
    std::string text = CountOf(now.records, "record");
    const Sample& base = m_recent.front();
    double span = Seconds(now.time - base.time);
    if (span > 0) {
        double rate = static_cast<double>(now.records - base.records) / span;
        text += fmt::format(", {:.0f} records/s", rate);
    }
    if (m_totalBytes == 0) {
        return text;
    }
    text += fmt::format(", {} %", Percent(now.bytes, m_totalBytes));
    if (span > 0 && now.bytes > base.bytes && now.bytes < m_totalBytes) {
        double byteRate = static_cast<double>(now.bytes - base.bytes) / span;
        double left = static_cast<double>(m_totalBytes - now.bytes) / byteRate;
        text += fmt::format(", {} left", ShowTime(left));
    }
    return text;
}

void Progress::Draw(std::string_view text) {
    if (m_style == ProgressStyle::Plain) {
        m_out << text << '\n' << std::flush;
        return;
    }
    // Blanks wipe out the end of a longer line on any terminal.
    m_out << '\r' << fmt::format("{:<{}}", text, m_drawn) << std::flush;
    m_drawn = text.size();
}

void Progress::Erase() {
    if (m_drawn > 0) {
        m_out << '\r' << std::string(m_drawn, ' ') << '\r';
        m_drawn = 0;
    }
}

void Progress::Print(std::string_view line) {
    Erase();
    m_out << VisibleLines(line) << '\n' << std::flush;
}

void Progress::Finish() {
    if (std::exchange(m_finished, true) || m_style != ProgressStyle::Terminal || m_drawn == 0) {
        return;
    }
    Draw(Describe(m_latest));
    m_drawn = 0;
    m_out << '\n' << std::flush;
}

}  // namespace tool
