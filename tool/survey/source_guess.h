#ifndef TOOL_SURVEY_SOURCE_GUESS_H
#define TOOL_SURVEY_SOURCE_GUESS_H

#include <optional>
#include <string>

#include "tool/sources/csv/csv_reader.h"
#include "tool/sources/json/json_reader.h"
#include "tool/survey/survey_files.h"

namespace tool {

// How files are to be read, as far as a person has said so.
struct SurveyOptions {
    std::optional<MapFormat> format;
    std::optional<char> separator;
    std::optional<std::string> encoding;
};

// How the files of a group are read.
struct SourceGuess {
    CsvFormat csv;
    bool isSeparatorGuessed = false;
    bool isEncodingGuessed = false;        // the text is not UTF-8, and nothing tells what it is
    std::optional<JsonReader::Path> rows;  // of JSON documents that hold rows and more
};

// Finds out how the files of a group can be read: of CSV files by the beginning of the first one
// and the bytes of all, of JSON documents by the structure of the first one. Throws SourceError.
SourceGuess GuessSource(const SurveyGroup& group, const SurveyOptions& options);

}  // namespace tool

#endif
