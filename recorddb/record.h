#ifndef RECORDDB_RECORD_H
#define RECORDDB_RECORD_H

#include <cstdint>
#include <string>
#include <vector>

#include "recorddb/schema.h"

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

// A record that is linked to another one.
struct LinkedRecord {
    std::int64_t dbid = 0;
    std::string key;  // empty when the record is gone

    bool operator==(const LinkedRecord&) const = default;
};

// One entry of a record's history. Texts in UTF-8, times as 'YYYY-MM-DD HH:MM:SS', UTC.
struct HistoryEntry {
    std::int64_t recordType = 0;
    std::int64_t record = 0;
    std::int64_t entry = 0;  // counts from 1 in each record, in the order of arrival
    std::string actionTime;
    std::string expiryTime;  // empty: not expired
    std::string userName;
    std::string actionName;
    std::string oldState;
    std::string newState;
    std::string comments;
};

// An attachment of a record. Texts in UTF-8.
struct Attachment {
    std::int64_t dbid = 0;  // 0 until it is written
    std::string field;
    std::string fileName;  // without folders
    std::int64_t fileSize = 0;
    std::string description;
    std::string sha256;  // of its content; empty until it is written
};

}  // namespace recorddb

#endif
