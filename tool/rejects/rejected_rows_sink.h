#ifndef TOOL_REJECTS_REJECTED_ROWS_SINK_H
#define TOOL_REJECTS_REJECTED_ROWS_SINK_H

#include <cstdint>
#include <filesystem>
#include <list>
#include <memory>
#include <set>
#include <string>
#include <utility>

#include "tool/io/replacing_file.h"
#include "tool/load/sinks/load_sink.h"
#include "tool/sources/kind/kept_rows.h"

namespace tool {

// Writes the rows of the records that a load by a map rejects, as they stood, to be mended in the
// program that they came from: CSV with its header, JSON values one on a line. Each row once.
//
// Of a map with several sources each has a file of its own, with the source's name in front of the
// ending: rows.csv becomes rows.bugs.csv. Files of one source whose headers differ have, too, with
// a number. A file appears when the load is over, in place of an earlier one. Memory grows with the
// rejected rows, by some 50 bytes for each, and not with those that are loaded.
class RejectedRowsSink final : public LoadSink {
  public:
    // A place that cannot be written shows at once. Throws std::system_error.
    RejectedRowsSink(const std::filesystem::path& path, std::shared_ptr<KeptRows> rows);

    void Rejects(const RejectedRecord& record) override;
    void Finish(const LoadTotals& totals) override;

  private:
    struct Output {
        Output(std::size_t theSource, std::string theHeader, std::filesystem::path thePath)
            : source(theSource),
              header(std::move(theHeader)),
              path(std::move(thePath)),
              file(path) {}
        std::size_t source;
        std::string header;
        std::filesystem::path path;
        ReplacingFile file;
    };

    Output& OutputFor(const KeptRows::File& file);
    bool IsTaken(const std::filesystem::path& path) const;

    std::filesystem::path m_path;
    std::shared_ptr<KeptRows> m_rows;
    std::list<Output> m_outputs;
    std::set<std::uint64_t> m_written;  // where the rows begin among the kept ones
};

// The file for the rows of a source, of which the map has `sources`.
std::filesystem::path RejectedRowsPath(const std::filesystem::path& path, const std::string& source,
                                       std::size_t sources);

}  // namespace tool

#endif
