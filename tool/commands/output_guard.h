#ifndef TOOL_COMMANDS_OUTPUT_GUARD_H
#define TOOL_COMMANDS_OUTPUT_GUARD_H

#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "tool/commands/command_sources.h"
#include "tool/commands/survey_command.h"
#include "tool/io/file_identity.h"
#include "tool/load/policy/load_options.h"
#include "tool/survey/survey_files.h"
#include "tool/verify/sinks/verify_options.h"

namespace tool {

// Keeps what a command writes away from what it reads, and its outputs from each other. Files are
// compared themselves, not their names: a link is the file that it leads to.
class OutputGuard {
  public:
    // Keeps the file at `path`, which messages call `what`, "the packet file" say.
    void Keep(const std::filesystem::path& path, const std::string& what);

    // Keeps the file of a database and those that the engine puts beside it, made already or not.
    void KeepDatabase(const std::string& database);

    // Keeps the files in `folder` and below it, except for earlier reports of this program: the
    // folder of attachments may be one that people work in.
    void KeepFolder(const std::filesystem::path& folder, const std::string& what);

    // Keeps a folder of rejected records, which need not be there yet, and the packets in it.
    void KeepRejects(const std::filesystem::path& folder);

    // Keeps standard output and standard error away from the files kept so far, and the outputs
    // that follow away from both.
    void CheckStandardOutputs();

    // Checks that an output is not one of the files that are kept, and keeps it as well. `option`
    // is the option that named it. An empty path means no output. Throws UsageError.
    void Check(const std::string& option, const std::filesystem::path& path);

  private:
    struct Folder {
        std::filesystem::path path;
        std::string what;
    };
    void CheckFolders(const std::string& option, const std::filesystem::path& path) const;

    std::map<FileIdentity, std::string> m_kept;
    std::vector<Folder> m_folders;
    std::filesystem::path m_rejects;
};

// Check that no output that was asked for is another file of the command. To be called before any
// output is opened. Throw UsageError.
void CheckOutputs(const LoadOptions& options, const std::vector<InputFile>& inputs,
                  const std::vector<std::filesystem::path>& rejectedRows = {});
void CheckOutputs(const VerifyOptions& options, const std::vector<InputFile>& inputs);
void CheckOutputs(const SurveyRequest& request, const SurveyFiles& files);

}  // namespace tool

#endif
