#include "recorddb/integrity/cell_rules.h"

#include <fmt/format.h>

#include <algorithm>
#include <span>
#include <string_view>

#include "platform/foundation/utf.h"
#include "recorddb/model/names.h"
#include "recorddb/model/stored_values.h"

namespace recorddb {

namespace {

std::string_view NameOf(sql::Storage storage) {
    switch (storage) {
        case sql::Storage::Integer:
            return "a whole number";
        case sql::Storage::Real:
            return "a floating-point number";
        case sql::Storage::Text:
            return "a text";
        case sql::Storage::Blob:
            return "binary data";
        case sql::Storage::Null:
            break;
    }
    return "nothing";
}

std::string StorageProblem(const sql::Statement& row, int column, sql::Storage wanted) {
    const sql::Storage storage = sql::StorageOf(row, column);
    if (storage == wanted) {
        return {};
    }
    return storage == sql::Storage::Null
               ? fmt::format("nothing, where {} belongs", NameOf(wanted))
               : fmt::format("stored as {}, where {} belongs", NameOf(storage), NameOf(wanted));
}

bool IsAscii(std::string_view text) {
    return std::all_of(text.begin(), text.end(),
                       [](char unit) { return static_cast<unsigned char>(unit) < 0x80U; });
}

bool IsUtf8(std::string_view text) {
    if (IsAscii(text)) {
        return true;
    }
    std::u16string ignored;
    return !Utf8ToUtf16(text, ignored).has_value();
}

}  // namespace

std::string TextProblem(const sql::Statement& row, int column) {
    std::string problem = StorageProblem(row, column, sql::Storage::Text);
    if (problem.empty()) {
        const std::string_view text = row.Text(column);
        if (text.find('\0') != std::string_view::npos) {
            problem = "it holds a NUL character, at which a text ends for many programs";
        } else if (!IsUtf8(text)) {
            problem = "not valid UTF-8";
        }
    }
    return problem;
}

std::string FilledTextProblem(const sql::Statement& row, int column) {
    std::string problem = TextProblem(row, column);
    if (problem.empty() && row.Text(column).empty()) {
        problem = "an empty text, which is never stored here";
    }
    return problem;
}

std::string UnitsProblem(const sql::Statement& row, int column, std::size_t most) {
    std::string problem = TextProblem(row, column);
    // A text has at most as many units as bytes, so most need not be counted.
    if (problem.empty() && row.Text(column).size() > most &&
        schema::Utf16Length(row.Text(column)) > most) {
        problem = fmt::format("longer than {} characters", most);
    }
    return problem;
}

std::string IntegerProblem(const sql::Statement& row, int column, std::int64_t least) {
    std::string problem = StorageProblem(row, column, sql::Storage::Integer);
    if (problem.empty() && row.Int(column) < least) {
        problem = fmt::format("less than {}", least);
    }
    return problem;
}

std::string TimeProblem(const sql::Statement& row, int column) {
    std::string problem = StorageProblem(row, column, sql::Storage::Text);
    if (problem.empty() && !IsStoredDateTime(row.Text(column))) {
        problem = "not a date and time in the form YYYY-MM-DD HH:MM:SS";
    }
    return problem;
}

std::string HashProblem(const sql::Statement& row, int column) {
    constexpr std::size_t digits = 64;
    std::string problem = StorageProblem(row, column, sql::Storage::Text);
    if (problem.empty()) {
        const std::string_view text = row.Text(column);
        const bool isHex = std::all_of(text.begin(), text.end(), [](char digit) {
            return (digit >= '0' && digit <= '9') || (digit >= 'a' && digit <= 'f');
        });
        if (!isHex || text.size() != digits) {
            problem = "not a SHA-256 of 64 lower-case hex digits";
        }
    }
    return problem;
}

std::string BlobProblem(const sql::Statement& row, int column) {
    return StorageProblem(row, column, sql::Storage::Blob);
}

std::string CellText(const sql::Statement& row, int column) {
    if (sql::StorageOf(row, column) != sql::Storage::Blob) {
        return std::string(row.Text(column));
    }
    constexpr std::size_t most = 32;
    const std::span<const std::byte> bytes = row.Blob(column);
    std::string text = "x'";
    for (const std::byte byte : bytes.first(std::min(bytes.size(), most))) {
        text += fmt::format("{:02x}", static_cast<unsigned>(byte));
    }
    return text + (bytes.size() > most ? "...'" : "'");
}

}  // namespace recorddb
