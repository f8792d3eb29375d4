#include "recorddb/schema.h"

#include <algorithm>
#include <utility>

#include "recorddb/model/names.h"

namespace recorddb::schema {

Schema::Schema(std::vector<RecordType> types, std::string text)
    : m_types(std::move(types)), m_text(std::move(text)) {}

const RecordType* Schema::FindType(std::string_view name) const {
    const auto found = std::find_if(m_types.begin(), m_types.end(), [name](const RecordType& type) {
        return SameName(type.name, name);
    });
    return found == m_types.end() ? nullptr : &*found;
}

const RecordType& Schema::Type(std::int64_t id) const {
    return m_types.at(static_cast<std::size_t>(id - 1));
}

}  // namespace recorddb::schema
