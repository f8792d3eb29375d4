#ifndef TOOL_HTML_RATE_CHART_H
#define TOOL_HTML_RATE_CHART_H

#include <string>
#include <vector>

#include "tool/html/rate_samples.h"

namespace tool {

// Records per second over the time of a run, as an HTML figure with an SVG in it, or a sentence
// when there are too few samples for a curve. `average` is in records per second.
//
// The drawing stretches with the page while its texts keep their size: places are percentages of
// its width and height.
std::string RateChart(const std::vector<RateSamples::Sample>& samples, double average);

// The marks of an axis from 0 to at least `maximum`, which is above 0: 1, 2 or 5 times a power of
// ten apart, at most seven of them.
std::vector<double> AxisMarks(double maximum);

}  // namespace tool

#endif
