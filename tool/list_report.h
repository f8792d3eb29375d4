#ifndef TOOL_LIST_REPORT_H
#define TOOL_LIST_REPORT_H

#include <cstdint>
#include <filesystem>
#include <string_view>

#include "tool/byte_source.h"
#include "tool/output_file.h"
#include "tool/replacing_file.h"

namespace tool {

// A report that ends in a list of any length, of which the head is known last: the file of a JSON
// object, say, that begins with totals.
//
// The list's items go to a file without a name as they come, so memory does not grow with their
// number. The report appears at its path complete or not at all, in place of an earlier one.
// All operations throw std::system_error that names the file when something cannot be written.
class ListReport {
  public:
    // Makes a file beside PATH, so that a place that cannot be written shows before the work.
    // Without Finish nothing is left of it.
    explicit ListReport(const std::filesystem::path& path);

    // Adds an item as it is to stand in the file, behind a comma where it is not the first.
    void AddItem(std::string_view text);

    // Writes HEAD, the items and TAIL to the path. To be called once; nothing may be added
    // afterwards.
    void Finish(std::string_view head, std::string_view tail);

  private:
    // What is written to it can be read back; the directory does not show it.
    struct Spool {
        explicit Spool(const std::filesystem::path& path);
        OutputFile in;
        FileBytes out;
    };

    Spool m_items;
    ReplacingFile m_report;
    bool m_empty = true;
};

}  // namespace tool

#endif
