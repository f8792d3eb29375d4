#ifndef TOOL_SURVEY_SURVEY_FILES_H
#define TOOL_SURVEY_SURVEY_FILES_H

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tool/io/spool_file.h"
#include "tool/map/map_file.h"

namespace tool {

// A file that is looked at.
struct SurveyFile {
    std::filesystem::path path;  // can be opened again and again
    std::string name;            // what people call it
};

// Files of one kind, which one source of a map would read.
struct SurveyGroup {
    std::string name;                   // made of those of its files
    std::vector<std::string> patterns;  // of its files, as a map writes them
    MapFormat format = MapFormat::Csv;
    char separator = ',';  // of CSV, as the ending has it
    std::vector<SurveyFile> files;
};

// The files that the SOURCE arguments of the command line stand for: files, those in folders and
// below, standard input. Files of a folder whose names differ in numbers only are of one kind.
class SurveyFiles {
  public:
    // `format` is that of files whose ending does not tell it; `standardInput` is the descriptor
    // that "-" reads and stays the caller's. Throws SourceError that says what to do, or
    // std::system_error when a temporary file cannot be written.
    explicit SurveyFiles(const std::vector<std::string>& arguments,
                         std::optional<MapFormat> format = std::nullopt, int standardInput = 0);

    const std::vector<SurveyGroup>& Groups() const { return m_groups; }
    // Names of files in folders of which nothing is known, and of what is no file: pipes, say.
    const std::vector<std::string>& NotRead() const { return m_notRead; }

  private:
    struct Found {
        SurveyFile file;
        std::string relative;  // as a map would name it
        MapFormat format;
        char separator;
    };

    void AddFolder(const std::string& folder);
    void AddFile(const std::string& argument);
    void AddStandardInput(int descriptor);
    void Add(const SurveyFile& file, const std::string& relative, bool isArgument);
    void MakeGroups();
    void AddGroup(const std::string& pattern, const std::vector<const Found*>& files);
    bool FitsOthers(const std::string& pattern, const std::vector<const Found*>& files) const;

    std::optional<MapFormat> m_format;
    std::vector<Found> m_found;
    std::vector<SurveyGroup> m_groups;
    std::vector<std::string> m_notRead;
    std::vector<std::unique_ptr<SpoolFile>> m_spooled;
};

}  // namespace tool

#endif
