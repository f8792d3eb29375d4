#include "recorddb/model/names.h"

#include <algorithm>
#include <array>

namespace recorddb::schema {

namespace {

constexpr char Lower(char character) {
    return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a')
                                                : character;
}

constexpr bool IsLetter(char character) {
    return Lower(character) >= 'a' && Lower(character) <= 'z';
}

constexpr bool IsDigit(char character) {
    return character >= '0' && character <= '9';
}

}  // namespace

bool SameName(std::string_view left, std::string_view right) {
    return left.size() == right.size() &&
           std::equal(left.begin(), left.end(), right.begin(),
                      [](char one, char other) { return Lower(one) == Lower(other); });
}

bool IsIdentifier(std::string_view name) {
    return !name.empty() && !IsDigit(name.front()) &&
           std::all_of(name.begin(), name.end(), [](char character) {
               return IsLetter(character) || IsDigit(character) || character == '_';
           });
}

bool HasOwnPrefix(std::string_view name) {
    return SameName(name.substr(0, 3), "zt_");
}

bool IsSystemColumn(std::string_view name) {
    constexpr std::array<std::string_view, 6> columns = {"tableoid", "xmin", "cmin",
                                                         "xmax",     "cmax", "ctid"};
    return std::any_of(columns.begin(), columns.end(),
                       [name](std::string_view column) { return SameName(name, column); });
}

std::string ListTableName(const RecordType& type, const Field& field) {
    return type.name + "__" + field.name;
}

std::size_t Utf16Length(std::string_view utf8) {
    std::size_t length = 0;
    for (const char character : utf8) {
        const auto byte = static_cast<unsigned char>(character);
        const bool continues = (byte & 0xC0U) == 0x80U;
        const bool needsSurrogates = byte >= 0xF0U;
        length += continues ? 0U : (needsSurrogates ? 2U : 1U);
    }
    return length;
}

}  // namespace recorddb::schema
