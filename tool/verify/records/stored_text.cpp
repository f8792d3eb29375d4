#include "tool/verify/records/stored_text.h"

#include "recorddb/value_text.h"

namespace tool {

std::string StoredText(const recorddb::schema::Field& field, std::string_view value) {
    using recorddb::schema::FieldKind;
    const bool isNumber = field.kind == FieldKind::Integer || field.kind == FieldKind::DbId;
    if (isNumber) {
        const auto number = recorddb::IntegerOf(value);
        return number ? std::to_string(*number) : std::string(value);
    }
    return field.kind == FieldKind::DateTime ? StoredTime(value) : std::string(value);
}

std::string StoredTime(std::string_view value) {
    return recorddb::DateTimeOf(value).value_or(std::string(value));
}

}  // namespace tool
