#ifndef RECORDDB_READER_RECORD_VIEW_H
#define RECORDDB_READER_RECORD_VIEW_H

#include <cstdint>
#include <string>
#include <vector>

#include "recorddb/model/record_type.h"

namespace recorddb {

// One record as it stands in the database. Texts in UTF-8.
struct RecordView {
    const schema::RecordType* type = nullptr;
    std::int64_t dbid = 0;
    std::int64_t version = 0;

    // By position in the type's fields: one text for a field with a value (references by key), the
    // keys of a reference list in its order, none for a field without a value. The dbid is among
    // them; attachments and history are not.
    std::vector<std::vector<std::string>> values;

    // By position in the type's fields: the dbids behind the keys of a reference or reference list;
    // none for other fields.
    std::vector<std::vector<std::int64_t>> targets;

    // The text of a field that is not a list; empty when it has no value.
    std::string Text(const schema::Field& field) const {
        const auto& texts = values[field.index];
        return texts.empty() ? std::string() : texts.front();
    }
};

// A record that is known by its link to another one.
struct LinkedRecord {
    std::int64_t dbid = 0;
    std::string key;  // empty when the record is gone

    bool operator==(const LinkedRecord&) const = default;
};

}  // namespace recorddb

#endif
