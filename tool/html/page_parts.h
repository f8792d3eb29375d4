#ifndef TOOL_HTML_PAGE_PARTS_H
#define TOOL_HTML_PAGE_PARTS_H

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "tool/html/example_groups.h"
#include "tool/html/page_verdict.h"
#include "tool/html/type_totals.h"

namespace tool {

// The parts that pages about runs are put together from. Texts given are plain, texts returned are
// HTML.

// What was run.
struct PageFacts {
    std::string title;     // what the page is called
    std::string command;   // "load"
    std::string database;  // empty when there is none
    std::vector<std::string> sources;
    std::chrono::system_clock::time_point start;
    double seconds = 0;
    std::string version;  // of the tool
};

// A whole document. `sections` are HTML.
std::string PageDocument(const PageFacts& facts, const PageVerdict& verdict,
                         const std::string& sections);

// A part of the page with a heading. `id` names it for links, `content` is HTML.
std::string PageSection(std::string_view id, std::string_view title, const std::string& content);

std::string FactsSection(const PageFacts& facts);

// Empty when there is nothing to do.
std::string StepsSection(const std::vector<NextStep>& steps);

// A number with its name.
struct PageFigure {
    std::string_view name;
    std::uint64_t number = 0;
    bool wantsAttention = false;  // when it is not 0
};

// A row of numbers; the `minor` ones are smaller.
std::string FigureRow(const std::vector<PageFigure>& figures, bool minor = false);

// A number in a table. A zero is drawn faintly; any other number that `wantsAttention` stands out.
std::string NumberCell(std::uint64_t number, bool wantsAttention = false);

// What was done to the records of each type, with a row for all of them.
std::string TypesTable(std::string caption, const std::vector<TypeTotals>& types,
                       const LoadTotals& all);

// `group`, which is a part of `all` things of its sort, with its examples, whose details stand
// under `detailTitle`.
std::string GroupHtml(const ExampleGroup& group, std::uint64_t all, std::string_view detailTitle);

// The title of a page about what was done with `database`: "Load into tracker.db".
std::string TitleFor(std::string_view what, const std::string& database);

}  // namespace tool

#endif
