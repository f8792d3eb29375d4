#include <algorithm>

#include "recorddb/model/names.h"
#include "recorddb/schema.h"

namespace recorddb::schema {

const Field* RecordType::FindField(std::string_view fieldName) const {
    const auto found = std::find_if(fields.begin(), fields.end(), [fieldName](const Field& field) {
        return SameName(field.name, fieldName);
    });
    return found == fields.end() ? nullptr : &*found;
}

const Field* RecordType::HistoryField() const {
    const auto found = std::find_if(fields.begin(), fields.end(), [](const Field& field) {
        return field.kind == FieldKind::History;
    });
    return found == fields.end() ? nullptr : &*found;
}

bool RecordType::IsState(std::string_view state) const {
    return std::find(states.begin(), states.end(), state) != states.end();
}

std::string FormatDisplayId(std::string_view prefix, std::int64_t number) {
    constexpr std::size_t leastDigits = 8;
    const std::string digits = std::to_string(number);
    std::string id(prefix);
    id.append(digits.size() < leastDigits ? leastDigits - digits.size() : 0, '0');
    id += digits;
    return id;
}

}  // namespace recorddb::schema
