#ifndef TOOL_REPORT_LOAD_TERMINAL_H
#define TOOL_REPORT_LOAD_TERMINAL_H

#include <cstdint>
#include <filesystem>
#include <map>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "tool/load/policy/load_options.h"
#include "tool/load/sinks/load_sink.h"
#include "tool/report/progress.h"

namespace tool {

// What a load shows on the terminal: progress, rejections and warnings, and in the end the totals.
class LoadTerminal : public LoadSink {
  public:
    // `out` gets the totals, `err` everything else; both stay the caller's. `totalBytes` is the
    // size of all sources.
    LoadTerminal(const LoadOptions& options, std::uint64_t totalBytes, std::ostream& out,
                 std::ostream& err);

    void Says(std::string_view line) override;
    void Warns(std::string_view line) override;
    void Finds(const MapFinding& finding) override;
    void Rejects(const RejectedRecord& record) override;
    void Loses(const Loss& loss) override;
    void Advances(const LoadTotals& soFar, std::uint64_t bytes) override;
    void Ends() override;
    void Finish(const LoadTotals& totals) override;

  protected:
    // The words in which a rehearsal differs.
    struct Words {
        std::string_view would;        // before what it does: "would be " or nothing
        std::string_view whereToFind;  // what lists the rejections that are not shown
    };
    LoadTerminal(const LoadOptions& options, std::uint64_t totalBytes, std::ostream& out,
                 std::ostream& err, Words words);

    // What is to be said after the totals, in whole lines.
    virtual std::string Outcome(const LoadTotals& totals) const;

  private:
    bool m_quiet;
    std::string m_map;
    std::filesystem::path m_rejectsFolder;
    std::ostream& m_out;
    Progress m_progress;
    Words m_words;
    std::uint64_t m_rejected = 0;
    std::map<LossKind, std::uint64_t> m_warned;
    std::vector<std::string> m_pastes;  // what is to be told at the end, where it is found again
};

}  // namespace tool

#endif
