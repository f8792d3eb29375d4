#include "recorddb/store/batch/key_row.h"

#include <fmt/format.h>

#include "recorddb/sha256.h"
#include "recorddb/store/tables/column_text.h"

namespace recorddb {

std::optional<KeyRow> KeyRowOf(const schema::RecordType& type, const FieldSet& fields,
                               const std::vector<const FieldValue*>& values) {
    KeyRow row;
    for (std::size_t i = 0; i < fields.size(); ++i) {
        if (!HasValue(*values[i])) {
            return std::nullopt;
        }
        const std::string text = ColumnText(*values[i]);
        row.field += (i == 0 ? "" : ",") + type.fields[fields[i]].name;
        row.value += fields.size() == 1 ? text : fmt::format("{}:{}", text.size(), text);
    }
    Sha256 hash;
    hash.Update(row.value);
    row.hash = hash.HexDigest();
    return row;
}

}  // namespace recorddb
