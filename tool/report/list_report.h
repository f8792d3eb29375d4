#ifndef TOOL_REPORT_LIST_REPORT_H
#define TOOL_REPORT_LIST_REPORT_H

#include <cstddef>
#include <deque>
#include <filesystem>
#include <initializer_list>
#include <string_view>

#include "tool/io/byte_source.h"
#include "tool/io/output_file.h"
#include "tool/io/replacing_file.h"

namespace tool {

// A report that ends in one or more lists of any length, and whose head is known last: a JSON
// object that begins with totals, say.
//
// The lists' items go to files without a name as they come, so memory does not grow with their
// number. The report appears at its path complete or not at all, in place of an earlier one.
// All operations throw std::system_error that names the file when something cannot be written.
class ListReport {
  public:
    // Makes files beside `path`, so that a place that cannot be written shows before the work.
    // Without Finish nothing is left of it. See ReplacingFile for links and for what is no file.
    explicit ListReport(const std::filesystem::path& path, std::size_t lists = 1);

    // Adds an item to a list, which are counted from 0, as it is to stand in the file, after a
    // comma where it is not the first.
    void AddItem(std::string_view text, std::size_t list = 0);

    // Writes the lists to the path, `head` before them, `tail` after them and the texts `between`,
    // one less than there are lists, in between. To be called once; nothing may be added
    // afterwards.
    void Finish(std::string_view head, std::string_view tail,
                std::initializer_list<std::string_view> between = {});

  private:
    // What is written to it can be read back; no folder shows it.
    struct Spool {
        explicit Spool(const std::filesystem::path& folder);
        OutputFile in;
        FileBytes out;
        bool empty = true;
    };

    void Append(Spool& list);

    ReplacingFile m_report;
    std::deque<Spool> m_lists;
};

}  // namespace tool

#endif
