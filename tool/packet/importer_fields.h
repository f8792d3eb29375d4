#ifndef TOOL_PACKET_IMPORTER_FIELDS_H
#define TOOL_PACKET_IMPORTER_FIELDS_H

#include <cstddef>
#include <string>

#include "platform/foundation/cmapstringtostring.h"

namespace tool {

// The fields of a record as the importer reads them, with its own parser. Texts in UTF-8.
class ImporterFields {
  public:
    struct Field {
        std::string name;
        std::string value;
    };

    // Reads the one record of PACKET. Returns false when it is not well-formed as far as the
    // importer reads it. What was read lasts until the next call.
    bool Read(const std::string& packet);

    // Takes over a record that both readings must agree on.
    void Clear() { m_count = 0; }
    void Add(const std::string& name, const std::string& value);

    // In the order in which the names first occur.
    std::size_t Count() const { return m_count; }
    const Field& At(std::size_t index) const { return m_fields[index]; }

  private:
    bool ReadMap(const std::string& packet);
    Field& NewField();

    CMapStringToString m_map;
    std::vector<Field> m_fields;  // the first m_count are in use; the others keep their memory
    std::size_t m_count = 0;
    Obx_String m_name;
    Obx_String m_value;
};

}  // namespace tool

#endif
