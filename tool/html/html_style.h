#ifndef TOOL_HTML_HTML_STYLE_H
#define TOOL_HTML_HTML_STYLE_H

#include <string_view>

namespace tool {

// The page's style sheet. Colours carry meaning: green for done, amber for what somebody has to
// look at, red for failed; everything else is grey and the one blue of the chart and the links.
// Text has a contrast of at least 4.5 to 1 in light and dark.
std::string_view HtmlStyle();

}  // namespace tool

#endif
