#ifndef TOOL_VERIFY_RECORDS_STORED_TEXT_H
#define TOOL_VERIFY_RECORDS_STORED_TEXT_H

#include <string>
#include <string_view>

#include "recorddb/schema.h"

namespace tool {

// A value that a source writes for a field, as the database would store it: whole numbers and times
// in their normal form. A text that is not such a value stays as it is, and so equals nothing that
// is stored.
std::string StoredText(const recorddb::schema::Field& field, std::string_view value);

// A time as the database would store it; a text that is not a time stays as it is.
std::string StoredTime(std::string_view value);

}  // namespace tool

#endif
