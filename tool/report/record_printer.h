#ifndef TOOL_REPORT_RECORD_PRINTER_H
#define TOOL_REPORT_RECORD_PRINTER_H

#include <ostream>
#include <string>

#include "recorddb/reader.h"

namespace tool {

// Writes a record as one line of a list: its key, its state and what its first text fields hold.
void PrintLine(const recorddb::RecordView& record, const std::string& key, std::ostream& out);

// Writes everything that the database holds of a record: fields, duplicate marks, history and
// attachments.
void PrintRecord(const recorddb::RecordView& record, recorddb::RecordReader& reader,
                 std::ostream& out);

}  // namespace tool

#endif
