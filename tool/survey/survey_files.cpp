#include "tool/survey/survey_files.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <system_error>
#include <tuple>
#include <utility>

#include "tool/io/byte_source.h"
#include "tool/io/folder_files.h"
#include "tool/io/source_error.h"
#include "tool/map/file_ending.h"

namespace tool {

namespace fs = std::filesystem;

namespace {

// What is kept of each kind of files takes memory.
constexpr std::size_t kMaxGroups = 100;

// The path of a file with "*" for each number in its name.
std::string WithoutNumbers(const std::string& relative) {
    const std::size_t name = relative.rfind('/') + 1;
    std::string pattern = relative.substr(0, name);
    bool inNumber = false;
    for (const char c : relative.substr(name)) {
        const bool isDigit = c >= '0' && c <= '9';
        if (!isDigit) {
            pattern += c;
        } else if (!inNumber) {
            pattern += '*';
        }
        inNumber = isDigit;
    }
    return pattern;
}

std::string NameOf(const std::string& pattern) {
    std::string name = fs::path(pattern).stem().string();
    std::erase(name, '*');
    const std::size_t begin = name.find_first_not_of(" _-.");
    if (begin == name.npos) {
        const std::string folder = fs::path(pattern).parent_path().filename().string();
        return folder.empty() ? "data" : folder;
    }
    return name.substr(begin, name.find_last_not_of(" _-.") + 1 - begin);
}

std::string_view EndingOfFormat(MapFormat format) {
    return format == MapFormat::Csv ? ".csv" : format == MapFormat::Json ? ".json" : ".jsonl";
}

}  // namespace

SurveyFiles::SurveyFiles(const std::vector<std::string>& arguments, std::optional<MapFormat> format,
                         int standardInput)
    : m_format(format) {
    for (const std::string& argument : arguments) {
        std::error_code ignored;
        if (argument == "-") {
            AddStandardInput(standardInput);
        } else if (fs::is_directory(argument, ignored)) {
            AddFolder(argument);
        } else {
            AddFile(argument);
        }
    }
    MakeGroups();
}

void SurveyFiles::AddFolder(const std::string& folder) {
    FolderFiles listed = FilesOfFolder(folder);
    std::vector<fs::path>& files = listed.files;
    std::sort(files.begin(), files.end(),
              [](const fs::path& a, const fs::path& b) { return a.native() < b.native(); });
    std::sort(listed.others.begin(), listed.others.end());
    for (const fs::path& other : listed.others) {
        m_notRead.push_back(other.string());
    }
    const std::size_t before = m_found.size();
    for (const fs::path& file : files) {
        Add({file, file.string()}, file.lexically_relative(folder).string(), false);
    }
    if (m_found.size() == before) {
        throw SourceError(fmt::format(
            "{}: there is no *.csv, *.tsv, *.jsonl, *.ndjson or *.json file in this directory; "
            "name the files themselves, and say with --format what they are",
            folder));
    }
}

void SurveyFiles::AddFile(const std::string& argument) {
    FileBytes bytes(argument, argument);
    std::error_code ignored;
    SurveyFile file{argument, argument};
    if (!fs::is_regular_file(argument, ignored)) {
        m_spooled.push_back(std::make_unique<SpoolFile>(bytes));
        file.path = m_spooled.back()->Path();
    }
    Add(file, fs::path(argument).filename().string(), true);
}

void SurveyFiles::AddStandardInput(int descriptor) {
    if (!m_format) {
        throw SourceError(
            "standard input has no name that tells its format; say it with --format: csv, jsonl "
            "or json");
    }
    FileBytes bytes(descriptor, "standard input");
    m_spooled.push_back(std::make_unique<SpoolFile>(bytes));
    Add({m_spooled.back()->Path(), bytes.Name()}, fmt::format("data{}", EndingOfFormat(*m_format)),
        true);
}

void SurveyFiles::Add(const SurveyFile& file, const std::string& relative, bool isArgument) {
    const FileEnding* const ending = EndingOf(relative);
    if (ending == nullptr && (!isArgument || !m_format)) {
        if (isArgument) {
            throw SourceError(fmt::format(
                "{}: the ending of this name does not tell the format of the file; say it with "
                "--format: csv, jsonl or json",
                file.name));
        }
        m_notRead.push_back(file.name);
        return;
    }
    const bool isKnown = ending != nullptr && !(isArgument && m_format);
    m_found.push_back(
        {file, relative, isKnown ? ending->format : *m_format, isKnown ? ending->separator : ','});
}

void SurveyFiles::MakeGroups() {
    using Key = std::pair<std::string, MapFormat>;
    std::vector<Key> order;
    std::map<Key, std::vector<const Found*>> groups;
    for (const Found& found : m_found) {
        const Key key{WithoutNumbers(found.relative), found.format};
        std::vector<const Found*>& files = groups[key];
        if (files.empty()) {
            order.push_back(key);
        }
        files.push_back(&found);
    }
    for (const Key& key : order) {
        const std::vector<const Found*>& files = groups[key];
        if (files.size() > 1 && !FitsOthers(key.first, files)) {
            AddGroup(key.first, files);
            continue;
        }
        for (const Found* const file : files) {
            AddGroup(file->relative, {file});
        }
    }
}

void SurveyFiles::AddGroup(const std::string& pattern, const std::vector<const Found*>& files) {
    if (m_groups.size() == kMaxGroups) {
        throw SourceError(
            fmt::format("there are more than {} kinds of files; look at them folder "
                        "by folder",
                        kMaxGroups));
    }
    SurveyGroup group;
    group.name = NameOf(pattern);
    group.patterns = {pattern};
    group.format = files.front()->format;
    group.separator = files.front()->separator;
    for (const Found* const file : files) {
        group.files.push_back(file->file);
    }
    m_groups.push_back(std::move(group));
}

// Whether `pattern` would also take a file that is not among `files`.
bool SurveyFiles::FitsOthers(const std::string& pattern,
                             const std::vector<const Found*>& files) const {
    const std::string begin = pattern.substr(0, pattern.find('*'));
    const std::string end = pattern.substr(pattern.rfind('*') + 1);
    return std::any_of(m_found.begin(), m_found.end(), [&](const Found& other) {
        const bool isOther = std::find(files.begin(), files.end(), &other) == files.end();
        return isOther && other.relative.starts_with(begin) && other.relative.ends_with(end) &&
               other.relative.find('/', begin.size()) == other.relative.npos;
    });
}

}  // namespace tool
