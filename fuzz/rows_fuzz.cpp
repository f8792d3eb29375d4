#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "input.h"
#include "platform/foundation/utf.h"
#include "rows_read.h"
#include "tool/io/source_error.h"
#include "tool/sources/csv/csv_reader.h"
#include "tool/sources/json/json_lines_reader.h"
#include "tool/sources/json/json_reader.h"
#include "tool/sources/rows/row_file_reader.h"

namespace {

using fuzz::Expect;

// Small, so that inputs go beyond them.
constexpr tool::RowLimits kLimits = {.size = 300, .depth = 8};

std::unique_ptr<tool::RowFileReader> ReaderOf(std::uint8_t format, tool::ByteSource& bytes,
                                              std::size_t chunk) {
    switch (format % 6) {
        case 0:
            return std::make_unique<tool::JsonLinesReader>(bytes, kLimits, chunk);
        case 1:
            return std::make_unique<tool::JsonReader>(bytes, std::nullopt, kLimits, chunk);
        case 2:
            return std::make_unique<tool::JsonReader>(bytes, std::vector<std::string>{"items", "*"},
                                                      kLimits, chunk);
        case 3:
            return std::make_unique<tool::CsvReader>(
                bytes,
                tool::CsvFormat{.separator = ';',
                                .quote = tool::CsvFormat::kNoQuote,
                                .charset = "windows-1252",
                                .header = {"a", "b"}},
                kLimits, chunk);
        default:
            return std::make_unique<tool::CsvReader>(bytes, tool::CsvFormat(), kLimits, chunk);
    }
}

bool IsText(std::string_view text) {
    return Utf16ToUtf8Lossy(Utf8ToUtf16Lossy(text)) == text;
}

struct Reading {
    std::vector<std::string> header;
    std::vector<tool::RowsRead::Entry> rows;
    std::vector<std::string> outside;
    bool isRefused = false;

    bool operator==(const Reading&) const = default;
};

Reading Read(std::string_view text, std::uint8_t format, std::size_t chunk) {
    tool::TextBytes bytes(text);
    try {
        const auto reader = ReaderOf(format, bytes, chunk);
        tool::RowsRead read(*reader);
        for (tool::RowsRead::Entry& row : read.rows) {
            Expect(IsText(row.raw), "a row is text as it stands");
            Expect(IsText(row.error), "a reason is text");
            // Of one that cannot be used, it depends on the chunks how much has been read, and
            // which of several reasons is met first.
            if (!row.error.empty()) {
                row.raw.clear();
                row.error = "refused";
            }
        }
        Expect(read.rows.empty() || !read.rows.back().isLast || !read.rows.back().error.empty(),
               "a row behind which nothing can be read has an error");
        return {read.header, read.rows, read.outside, false};
    } catch (const tool::SourceError&) {
        return {{}, {}, {}, true};
    }
}

}  // namespace

// Whatever the chunks are, the rows are the same; they come in order, and their values are text.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    const std::uint8_t format = input.TakeChoice();
    const std::size_t chunk = std::size_t{1} + input.TakeChoice();
    const std::string_view text = input.Text();
    const Reading reading = Read(text, format, text.size() + 1);
    Expect(Read(text, format, chunk) == reading, "rows do not depend on chunks");
    std::uint64_t line = 1;
    std::uint64_t number = 0;
    for (const tool::RowsRead::Entry& row : reading.rows) {
        Expect(row.number == ++number, "rows are counted");
        Expect(row.line >= line, "rows come one after the other");
        line = row.line;
        Expect(row.values.empty() != row.error.empty(), "a row has values or an error");
        Expect(IsText(row.values), "values are text");
    }
    return 0;
}
