#include "tool/html/rate_chart.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <string_view>

#include "tool/text/number_text.h"

namespace tool {

namespace {

using Samples = std::vector<RateSamples::Sample>;

// The unit in which times are read off the axis.
struct TimeUnit {
    std::string_view name;
    double seconds;
};

TimeUnit UnitFor(double seconds) {
    if (seconds < 180) {
        return {"seconds", 1};
    }
    return seconds < 3 * 3600 ? TimeUnit{"minutes", 60} : TimeUnit{"hours", 3600};
}

std::string MarkText(double value) {
    return value >= 10 || value == std::floor(value)
               ? Grouped(static_cast<std::uint64_t>(std::llround(value)))
               : fmt::format("{:g}", value);
}

// Places in the drawing, in per cent, from the left and from the top.
class Scale {
  public:
    Scale(double seconds, double rate) : m_seconds(seconds), m_rate(rate) {}
    double X(double seconds) const { return 100 * seconds / m_seconds; }
    double Y(double rate) const { return 100 - 100 * rate / m_rate; }

  private:
    double m_seconds;
    double m_rate;
};

// A stretch is drawn as a step, since its rate holds for the whole of it.
std::string Steps(const Samples& samples, const Scale& scale) {
    std::string points;
    for (const auto& sample : samples) {
        const double y = scale.Y(sample.Rate());
        points += fmt::format("{}{:.2f},{:.2f} {:.2f},{:.2f}", points.empty() ? "" : " ",
                              scale.X(sample.from), y, scale.X(sample.to), y);
    }
    return points;
}

std::string Curve(const Samples& samples, const Scale& scale) {
    const std::string steps = Steps(samples, scale);
    return fmt::format(
        R"(<svg viewBox="0 0 100 100" preserveAspectRatio="none" aria-hidden="true">)"
        "\n"
        R"(<polygon class="area" points="0,100 {0} 100,100"/>)"
        "\n"
        R"(<polyline class="curve" points="{0}"/>)"
        "\n</svg>\n",
        steps);
}

std::string RateAxis(const std::vector<double>& marks, const Scale& scale) {
    std::string out;
    for (const double mark : marks) {
        const double y = scale.Y(mark);
        out += fmt::format(R"(<line class="{}" x1="0" x2="100%" y1="{:.2f}%" y2="{:.2f}%"/>)"
                           R"(<text x="-8" y="{:.2f}%" dy="0.35em" text-anchor="end">{}</text>)"
                           "\n",
                           mark == 0 ? "axis" : "grid", y, y, y, MarkText(mark));
    }
    return out;
}

std::string TimeAxis(double seconds, const TimeUnit& unit, const Scale& scale) {
    std::string out;
    for (const double mark : AxisMarks(seconds / unit.seconds)) {
        const double x = scale.X(mark * unit.seconds);
        if (x > 100) {
            break;
        }
        out += fmt::format(R"(<text x="{:.2f}%" y="100%" dy="1.6em" text-anchor="middle">{}</text>)"
                           "\n",
                           x, MarkText(mark));
    }
    return out;
}

std::string AverageLine(double average, const Scale& scale) {
    const double y = scale.Y(average);
    return fmt::format(R"(<line class="average" x1="0" x2="100%" y1="{:.2f}%" y2="{:.2f}%"/>)"
                       "\n",
                       y, y);
}

// What the drawing shows, in words.
std::string Description(const Samples& samples, double average) {
    const auto slower = [](const auto& a, const auto& b) { return a.Rate() < b.Rate(); };
    const auto [lowest, highest] = std::minmax_element(samples.begin(), samples.end(), slower);
    return fmt::format(
        "{} records per second on average over {}; {} in the slowest stretch of time drawn, {} in "
        "the fastest.",
        RateText(average), DurationText(samples.back().to), RateText(lowest->Rate()),
        RateText(highest->Rate()));
}

}  // namespace

std::vector<double> AxisMarks(double maximum) {
    constexpr double kMostSteps = 6;
    const double power = std::pow(10, std::floor(std::log10(maximum / kMostSteps)));
    double step = power;
    for (const double factor : {1.0, 2.0, 5.0, 10.0}) {
        step = factor * power;
        if (maximum / step <= kMostSteps) {
            break;
        }
    }
    std::vector<double> marks;
    const auto count = static_cast<int>(std::ceil(maximum / step - 1e-9));
    for (int i = 0; i <= count; ++i) {
        marks.push_back(i * step);
    }
    return marks;
}

std::string RateChart(const Samples& samples, double average) {
    double highest = average;
    for (const auto& sample : samples) {
        highest = std::max(highest, sample.Rate());
    }
    if (samples.size() < 2 || highest <= 0) {
        return fmt::format(
            "<p>The run was too short for a curve: {} records per second on average.</p>\n",
            RateText(average));
    }
    const double seconds = samples.back().to;
    const std::vector<double> marks = AxisMarks(highest);
    const Scale scale(seconds, marks.back());
    const TimeUnit unit = UnitFor(seconds);
    const std::string description = Description(samples, average);
    return fmt::format(
        "<figure class=\"chart\">\n"
        "<p class=\"axis-title\">records per second"
        "<span class=\"key\">average {}</span></p>\n"
        "<div class=\"plot\"><svg role=\"img\" aria-label=\"{}\">\n{}{}{}{}</svg></div>\n"
        "<p class=\"axis-title time\">elapsed time in {}</p>\n"
        "<figcaption>{}</figcaption>\n</figure>\n",
        RateText(average), description, RateAxis(marks, scale), Curve(samples, scale),
        AverageLine(average, scale), TimeAxis(seconds, unit, scale), unit.name, description);
}

}  // namespace tool
