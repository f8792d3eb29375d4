#include "tool/sources/json/json_events.h"

#include <array>
#include <charconv>

#include "tool/io/decoding_marks.h"
#include "tool/io/text_units.h"

namespace tool {

namespace {

template <typename Number>
std::string_view TextOfNumber(Number value, std::array<char, 24>& buffer) {
    const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value).ptr;
    return {buffer.data(), static_cast<std::size_t>(end - buffer.data())};
}

}  // namespace

// Whole numbers are handed over as numbers, and only they: JSON has one way to write each, so the
// text follows from the number. The exception is "-0", which comes as a signed 0, alone of all.
bool JsonEvents::number_integer(number_integer_t value) {
    std::array<char, 24> buffer{};
    return Value(RowTree::Kind::Number, value == 0 ? "-0" : TextOfNumber(value, buffer));
}

bool JsonEvents::number_unsigned(number_unsigned_t value) {
    std::array<char, 24> buffer{};
    return Value(RowTree::Kind::Number, TextOfNumber(value, buffer));
}

// The parser's message begins with its own name and with a place that counts from where it began
// to read, as if that were a file.
bool JsonEvents::parse_error(std::size_t /*position*/, const std::string& /*token*/,
                             const nlohmann::detail::exception& error) {
    std::string why = error.what();
    why.erase(0, why.find("] ") + 2);
    if (why.starts_with("parse error at ")) {
        why.erase(0, why.find(": ") + 2);
    }
    // What it quotes can end within a character.
    bool marked = false;
    MarkInvalidUtf8(why.data(), why.size(), true, marked);
    Fail(ReplaceDecodingMarks(why));
    return false;
}

}  // namespace tool
