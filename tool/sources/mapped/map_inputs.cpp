#include "tool/sources/mapped/map_inputs.h"

#include <fmt/format.h>

#include <algorithm>
#include <system_error>

#include "tool/io/folder_files.h"
#include "tool/io/source_error.h"

namespace tool {

namespace fs = std::filesystem;

namespace {

std::vector<std::string> PartsOf(const std::string& path) {
    std::vector<std::string> parts;
    for (const auto& part : fs::path(path).lexically_normal()) {
        parts.push_back(part.string());
    }
    return parts;
}

// "*" stands for any characters.
bool FitsName(std::string_view name, std::string_view pattern) {
    std::size_t at = 0;
    std::size_t in = 0;
    std::size_t star = pattern.npos;
    std::size_t retry = 0;
    while (at < name.size()) {
        if (in < pattern.size() && pattern[in] == '*') {
            star = in++;
            retry = at;
        } else if (in < pattern.size() && pattern[in] == name[at]) {
            ++in;
            ++at;
        } else if (star != pattern.npos) {
            in = star + 1;
            at = ++retry;
        } else {
            return false;
        }
    }
    return pattern.find_first_not_of('*', in) == pattern.npos;
}

bool FitsParts(const std::vector<std::string>& path, std::size_t at,
               const std::vector<std::string>& pattern, std::size_t in) {
    if (in == pattern.size()) {
        return at == path.size();
    }
    if (pattern[in] == "**") {
        for (std::size_t rest = at; rest <= path.size(); ++rest) {
            if (FitsParts(path, rest, pattern, in + 1)) {
                return true;
            }
        }
        return false;
    }
    return at < path.size() && FitsName(path[at], pattern[in]) &&
           FitsParts(path, at + 1, pattern, in + 1);
}

// A file that was found.
struct Candidate {
    fs::path path;
    std::string name;
    std::string relative;  // to the SOURCE folder; of a SOURCE that is a file, its whole path
    bool isArgument = false;
};

std::vector<Candidate> FindCandidates(const std::vector<std::string>& arguments,
                                      MapInputs& inputs) {
    std::vector<Candidate> found;
    for (const std::string& argument : arguments) {
        std::error_code ignored;
        if (fs::is_directory(argument, ignored)) {
            const FolderFiles folder = FilesOfFolder(argument);
            for (const fs::path& file : folder.files) {
                found.push_back(
                    {file, file.string(), file.lexically_relative(argument).string(), false});
            }
            for (const fs::path& other : folder.others) {
                inputs.unreadable.push_back(other.string());
            }
        } else {
            found.push_back({argument, argument, argument, true});
        }
    }
    std::stable_sort(found.begin(), found.end(), [](const Candidate& a, const Candidate& b) {
        return a.relative < b.relative;
    });
    return found;
}

// A SOURCE that is a file is named by a pattern that fits its path, or the end of it.
bool Fits(const Candidate& candidate, const std::string& pattern) {
    if (!candidate.isArgument) {
        return FitsPattern(candidate.relative, pattern);
    }
    std::string_view path = candidate.relative;
    while (!FitsPattern(std::string(path), pattern)) {
        const std::size_t slash = path.find('/');
        if (slash == path.npos) {
            return false;
        }
        path.remove_prefix(slash + 1);
    }
    return true;
}

MapInputs StandardInput(const MapFile& map, const std::vector<std::string>& arguments) {
    if (arguments.size() > 1 || map.sources.size() > 1) {
        throw SourceError(
            "standard input (-) can be read for a map with a single source, as the only SOURCE; "
            "name files or folders otherwise");
    }
    MapInputs inputs;
    inputs.inputs.push_back({0, "-", "standard input"});
    return inputs;
}

}  // namespace

bool FitsPattern(const std::string& path, const std::string& pattern) {
    return FitsParts(PartsOf(path), 0, PartsOf(pattern), 0);
}

MapInputs FindMapInputs(const MapFile& map, const std::vector<std::string>& arguments) {
    if (std::find(arguments.begin(), arguments.end(), "-") != arguments.end()) {
        return StandardInput(map, arguments);
    }
    MapInputs inputs;
    const std::vector<Candidate> candidates = FindCandidates(arguments, inputs);
    std::sort(inputs.unreadable.begin(), inputs.unreadable.end());
    std::vector<std::size_t> readBy(candidates.size(), map.sources.size());
    for (std::size_t source = 0; source < map.sources.size(); ++source) {
        std::vector<bool> isRead(candidates.size());
        for (const std::string& pattern : map.sources[source].files) {
            bool isFound = false;
            for (std::size_t i = 0; i < candidates.size(); ++i) {
                const bool fits = Fits(candidates[i], pattern);
                isFound = isFound || fits;
                isRead[i] = isRead[i] || fits;
            }
            if (!isFound) {
                throw SourceError(fmt::format(
                    "{}:{}:{}: no file of the SOURCEs fits \"{}\" of source '{}'; name the folder "
                    "that such paths start from",
                    map.name, map.sources[source].place.line, map.sources[source].place.column,
                    pattern, map.sources[source].name));
            }
        }
        for (std::size_t i = 0; i < candidates.size(); ++i) {
            if (!isRead[i]) {
                continue;
            }
            if (readBy[i] < map.sources.size()) {
                throw SourceError(fmt::format(
                    "{}: the sources '{}' and '{}' of the map both name "
                    "this file, and a file is read once; let several "
                    "steps read one source",
                    candidates[i].name, map.sources[readBy[i]].name, map.sources[source].name));
            }
            readBy[i] = source;
            inputs.inputs.push_back({source, candidates[i].path, candidates[i].name});
        }
    }
    for (std::size_t i = 0; i < candidates.size(); ++i) {
        if (readBy[i] < map.sources.size()) {
            continue;
        }
        if (candidates[i].isArgument) {
            throw SourceError(fmt::format(
                "{}: no source of the map names this file; leave it out, or add a pattern",
                candidates[i].name));
        }
        inputs.unread.push_back(candidates[i].name);
    }
    return inputs;
}

}  // namespace tool
