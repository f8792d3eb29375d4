#ifndef TOOL_PACKET_IMPORTER_FIELDS_H
#define TOOL_PACKET_IMPORTER_FIELDS_H

#include <string>
#include <vector>

#include "platform/foundation/cmapstringtostring.h"
#include "platform/foundation/obx_string.h"

namespace tool {

// A field of a record as the importer reads it, escapes decoded. Texts in UTF-8.
struct ImporterField {
    std::string name;
    std::string value;

    bool operator==(const ImporterField&) const = default;
};

// The fields of a record in the order in which their names first occur. A name stands there once,
// with its last value; names that differ in case are different ones here.
using ImporterFields = std::vector<ImporterField>;

// Reads the fields of records with the importer's own parser. For many records, since what it and
// the fields hold of one is used again for the next.
class ImporterFieldReader {
  public:
    // Replaces `fields` by those of the one record in `packet`. Returns what is wrong with the
    // packet, empty when it could be read; else `fields` is of no use.
    std::string Read(const std::string& packet, ImporterFields& fields);

  private:
    std::string ReadMap(const std::string& packet);

    CMapStringToString m_map;
    Obx_String m_name;
    Obx_String m_value;
};

}  // namespace tool

#endif
