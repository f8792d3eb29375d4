#ifndef TOOL_SURVEY_SOURCE_SURVEY_H
#define TOOL_SURVEY_SOURCE_SURVEY_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "tool/io/byte_source.h"
#include "tool/sources/rows/row_file_reader.h"
#include "tool/survey/address_survey.h"
#include "tool/survey/source_guess.h"
#include "tool/survey/survey_files.h"

namespace tool {

// Two addresses of a source, by position, whose values together are others in each row.
struct KeyPair {
    std::size_t first = 0;
    std::size_t second = 0;
};

// What has been found out about the files of one kind.
struct SourceSurvey {
    // A row that cannot be used.
    struct BadRow {
        SurveyPlace place;
        std::string error;
    };
    // Plain values beside the rows of JSON documents.
    struct Outside {
        std::string address;
        std::uint64_t values = 0;
    };
    // Addresses past this many are not told apart.
    static constexpr std::size_t kMaxAddresses = 1000;
    static constexpr std::size_t kShownBadRows = 5;

    SurveyGroup group;
    SourceGuess guess;

    std::uint64_t rows = 0;  // that can be used
    std::uint64_t badRows = 0;
    std::vector<BadRow> shownBadRows;  // the first ones
    bool endsEarly = false;            // a bad row hides what is behind it
    std::uint64_t nuls = 0;            // NUL characters
    std::uint64_t repeatedMembers = 0;
    std::string repeatedName;  // of one of them

    // Each behind those of what it is a part of, otherwise in the order in which they first came.
    std::vector<AddressSurvey> addresses;
    std::uint64_t valuesBeyond = 0;  // at addresses that were too many
    std::vector<Outside> outside;
    // Looked for where no address tells the rows apart by itself; the best ones first.
    std::vector<KeyPair> keyPairs;

    bool IsCsv() const { return group.format == MapFormat::Csv; }
};

// The reader of one of the files.
std::unique_ptr<RowFileReader> OpenRows(ByteSource& bytes, const SourceSurvey& survey);

// Reads all files of a group, in constant memory. Throws SourceError when one of them cannot be
// read, std::system_error when a temporary file cannot be written.
SourceSurvey SurveySource(const SurveyGroup& group, const SurveyOptions& options,
                          ValueSpool& spool);

}  // namespace tool

#endif
