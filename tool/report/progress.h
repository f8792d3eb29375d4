#ifndef TOOL_REPORT_PROGRESS_H
#define TOOL_REPORT_PROGRESS_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <ostream>
#include <string>
#include <string_view>

namespace tool {

enum class ProgressStyle {
    Quiet,     // nothing at all
    Terminal,  // one line that is redrawn, at most five times a second
    Plain,  // a line every ten seconds, or every ten per cent when these come slower than seconds
};

// The style for the terminal, file or pipe behind `descriptor`.
ProgressStyle ChooseProgressStyle(bool quiet, int descriptor);

// Shows how far a load has come: records, records per second, part done, time left. Rate and time
// left are those of the last ten seconds or so; the time left goes by the bytes of the sources.
class Progress {
  public:
    using TimePoint = std::chrono::steady_clock::time_point;
    using Clock = std::function<TimePoint()>;

    // Writes to `out`, which stays the caller's. `totalBytes` is the size of all sources, 0 when it
    // is not known; then neither part nor time left are shown.
    Progress(std::ostream& out, ProgressStyle style, std::uint64_t totalBytes,
             Clock clock = std::chrono::steady_clock::now);

    // Says that `records` have been dealt with and `bytes` of the sources been read, both since the
    // beginning. May be called for every record.
    void Update(std::uint64_t records, std::uint64_t bytes);

    // Writes `line` on a line of its own, whatever the style, without mixing it with the progress.
    // What could do something to a terminal is made visible (VisibleLines).
    void Print(std::string_view line);

    // Shows where things stand at the end and leaves the line. Further calls do nothing.
    void Finish();

  private:
    struct Sample {
        TimePoint time;
        std::uint64_t records;
        std::uint64_t bytes;
    };

    bool IsDue(const Sample& now) const;
    void Remember(const Sample& now);
    std::string Describe(const Sample& now) const;
    void Draw(std::string_view text);
    void Erase();

    std::ostream& m_out;
    ProgressStyle m_style;
    std::uint64_t m_totalBytes;
    Clock m_clock;
    Sample m_latest;              // of the last Update
    Sample m_shown;               // when something was shown last
    std::deque<Sample> m_recent;  // about one a second, the oldest some ten seconds ago
    std::size_t m_drawn = 0;      // width of the line on the terminal
    bool m_finished = false;
};

}  // namespace tool

#endif
