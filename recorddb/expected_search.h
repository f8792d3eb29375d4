#ifndef RECORDDB_EXPECTED_SEARCH_H
#define RECORDDB_EXPECTED_SEARCH_H

#include <string>
#include <utility>
#include <vector>

#include "recorddb/schema.h"

namespace recorddb {

// A search that the work on coming records will make: for the records of a type that have these
// values.
struct ExpectedSearch {
    const schema::RecordType* type = nullptr;
    // Texts in UTF-8, as people write them.
    std::vector<std::pair<const schema::Field*, std::string>> values;

    // What will be read of the record that is found, beside its dbid.
    bool fields = false;    // reference lists among them
    bool listKeys = false;  // with the fields: those of the records in its reference lists, too
    bool history = false;
    bool attachments = false;
    bool original = false;  // which record it is a duplicate of, and that one's, and so on
    // All of that, to compare it: with the keys of the records that it refers to, and with all of
    // its history's entries.
    bool whole = false;
};

}  // namespace recorddb

#endif
