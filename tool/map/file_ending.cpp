#include "tool/map/file_ending.h"

#include <array>

namespace tool {

namespace {

constexpr std::array<FileEnding, 5> kEndings = {{{".csv", MapFormat::Csv, ','},
                                                 {".tsv", MapFormat::Csv, '\t'},
                                                 {".jsonl", MapFormat::JsonLines, ','},
                                                 {".ndjson", MapFormat::JsonLines, ','},
                                                 {".json", MapFormat::Json, ','}}};

}  // namespace

const FileEnding* EndingOf(std::string_view name) {
    for (const FileEnding& ending : kEndings) {
        if (name.ends_with(ending.text)) {
            return &ending;
        }
    }
    return nullptr;
}

}  // namespace tool
