#include "tool/commands/output_guard.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <fstream>
#include <optional>
#include <string_view>
#include <system_error>

#include "recorddb/sql.h"
#include "tool/process/usage_error.h"
#include "tool/rejects/known_rejects.h"

namespace tool {

namespace fs = std::filesystem;

namespace {

[[noreturn]] void Refuse(const std::string& output, const std::string& what) {
    throw UsageError(fmt::format("{} would be written over {}; name another file", output, what));
}

// Whether a file is an output of an earlier run, by how it begins. An empty file holds nothing that
// could be lost.
bool IsReplaceable(const fs::path& file) {
    constexpr std::size_t enough = 256;
    std::array<char, enough> begin{};
    std::ifstream in(file, std::ios::binary);
    in.read(begin.data(), begin.size());
    const std::string_view got(begin.data(), static_cast<std::size_t>(in.gcount()));
    const bool page = got.find("<meta name=\"generator\" content=\"ztimport ") != got.npos;
    return got.empty() || page || got.starts_with("{\"read\":") || got.starts_with("AdImporter: ");
}

bool IsBelow(const fs::path& file, const fs::path& folder) {
    return std::mismatch(folder.begin(), folder.end(), file.begin(), file.end()).first ==
           folder.end();
}

// Keeps what load, check and verify all read.
void KeepInputs(OutputGuard& guard, const std::string& database,
                const std::vector<std::string>& arguments, const std::vector<InputFile>& inputs) {
    guard.KeepDatabase(database);
    for (const InputFile& input : inputs) {
        guard.Keep(input.path, input.what);
    }
    // A pipe is copied before it is read, and the list of sources holds the copy.
    for (const std::string& argument : arguments) {
        guard.Keep(argument == "-" ? "/dev/stdin" : argument, "the source " + argument);
    }
}

}  // namespace

void OutputGuard::Keep(const fs::path& path, const std::string& what) {
    if (const auto identity = IdentityOf(path)) {
        m_kept.emplace(*identity, what);
    }
}

void OutputGuard::KeepDatabase(const std::string& database) {
    if (recorddb::sql::IsServerUrl(database)) {
        return;
    }
    const std::string what = "the database " + database;
    Keep(database, what);
    // The engine keeps these beside the file itself, not beside a link to it.
    for (const fs::path& file : {fs::path(database), WithoutLinks(database)}) {
        for (const std::string& sideFile : recorddb::sql::SideFiles(file.string())) {
            const std::string suffix = sideFile.substr(file.string().size());
            Keep(sideFile, fmt::format("a part of {} ({})", what, suffix));
        }
    }
}

void OutputGuard::KeepFolder(const fs::path& folder, const std::string& what) {
    std::error_code error;
    const fs::path real = fs::canonical(folder, error);
    if (!folder.empty() && !error) {
        m_folders.push_back({real, what});
    }
}

void OutputGuard::KeepRejects(const fs::path& folder) {
    m_rejects = folder.has_filename() ? folder : folder.parent_path();
    Keep(m_rejects, "the folder of rejected records");
}

void OutputGuard::CheckStandardOutputs() {
    std::vector<std::pair<FileIdentity, std::string>> streams;
    for (const auto& [descriptor, name] :
         {std::pair{STDOUT_FILENO, "standard output"}, {STDERR_FILENO, "standard error"}}) {
        const auto identity = IdentityOf(descriptor);
        if (!identity) {
            continue;
        }
        if (const auto kept = m_kept.find(*identity); kept != m_kept.end()) {
            Refuse(name, kept->second);
        }
        streams.emplace_back(*identity, std::string("what goes to ") + name);
    }
    // Kept only now: standard output and standard error may go to one and the same file.
    m_kept.insert(streams.begin(), streams.end());
}

void OutputGuard::Check(const std::string& option, const fs::path& path) {
    if (path.empty()) {
        return;
    }
    const std::string output = fmt::format("{} {}", option, path.string());
    if (const auto identity = IdentityOf(path)) {
        const auto [kept, isNew] = m_kept.emplace(*identity, output);
        if (!isNew) {
            Refuse(output, kept->second);
        }
    }
    CheckFolders(output, path);
}

void OutputGuard::CheckFolders(const std::string& output, const fs::path& path) const {
    std::error_code error;
    const fs::path file = WithoutLinks(path);
    const fs::path folder = file.has_parent_path() ? file.parent_path() : fs::path(".");
    if (RejectFileNumber(file) > 0 && fs::equivalent(folder, m_rejects, error)) {
        Refuse(output, "rejected records");
    }
    const fs::path real = fs::canonical(file, error);
    if (error || !fs::is_regular_file(real, error) || IsReplaceable(real)) {
        return;
    }
    for (const Folder& kept : m_folders) {
        if (IsBelow(real, kept.path)) {
            Refuse(output, kept.what);
        }
    }
}

void CheckOutputs(const LoadOptions& options, const std::vector<InputFile>& inputs,
                  const std::vector<fs::path>& rejectedRows) {
    OutputGuard guard;
    KeepInputs(guard, options.database, options.sources, inputs);
    guard.KeepFolder(options.attachments, "a file in the attachments folder");
    guard.KeepRejects(options.rejects);
    guard.CheckStandardOutputs();
    guard.Check("--report", options.report);
    for (const fs::path& file : rejectedRows) {
        guard.Check("--rejected-rows", file);
    }
    guard.Check("--html", options.html);
    guard.Check("--trace", options.trace);
}

void CheckOutputs(const VerifyOptions& options, const std::vector<InputFile>& inputs) {
    OutputGuard guard;
    KeepInputs(guard, options.database, options.sources, inputs);
    guard.KeepFolder(options.attachments, "a file in the attachments folder");
    guard.CheckStandardOutputs();
    guard.Check("--report", options.report);
    guard.Check("--html", options.html);
}

void CheckOutputs(const SurveyRequest& request, const SurveyFiles& files) {
    OutputGuard guard;
    for (const SurveyGroup& group : files.Groups()) {
        for (const SurveyFile& file : group.files) {
            guard.Keep(file.path, "the source " + file.name);
        }
    }
    // A pipe is copied before it is read.
    for (const std::string& argument : request.sources) {
        guard.Keep(argument == "-" ? "/dev/stdin" : argument, "the source " + argument);
    }
    guard.CheckStandardOutputs();
    guard.Check("--report", request.report);
    guard.Check("--html", request.html);
    guard.Check("--write-schema", request.writeSchema);
    guard.Check("--write-map", request.writeMap);
}

}  // namespace tool
