#ifndef TOOL_PACKET_RECORD_ELEMENTS_H
#define TOOL_PACKET_RECORD_ELEMENTS_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "tool/packet/expat_parser.h"

namespace tool {

// Something that stands in a record, as XML says.
struct RecordPart {
    static constexpr std::size_t kNone = static_cast<std::size_t>(-1);

    enum class Kind {
        Field,  // an element in the record, at any depth
        Text,   // text between fields, or in a field after an element
        Broken  // what is no XML, up to the record's end
    };

    Kind kind = Kind::Field;
    std::string name;            // of a field: its attribute "name", empty when it has none
    std::string text;            // of a field: its text up to the first element in it
    std::size_t offset = 0;      // of its first byte in the record
    std::size_t parent = kNone;  // the field that it stands in; kNone: in the record itself
    bool holdsElement = false;   // another element stands in it
    bool read = false;           // the importer reads it as a field
};

// A record read as any XML reader would read it, in document order, and the place where the
// importer stops reading: the importer takes a start tag, a text and an end tag by turns, and for
// it the record ends at the first thing that does not fit.
class RecordElements {
  public:
    enum class StopCause { None, Text, EndTag, Broken };

    // Reads `record`, which begins with "<record>". What it has read lasts until the next call.
    void Read(std::string_view record);

    std::size_t Count() const { return m_count; }
    const RecordPart& Part(std::size_t index) const { return m_parts[index]; }

    // Why the importer stops before the record's end, None when it does not, and where.
    StopCause Stop() const { return m_stop; }
    std::size_t StopOffset() const { return m_stopOffset; }

  private:
    struct Callbacks;

    void OpenElement(const char** attributes);
    void CloseElement();
    void AddText(std::string_view text);
    void AddLooseText(std::string_view text);
    void StopAt(std::size_t offset, StopCause cause);
    RecordPart& NewPart(RecordPart::Kind kind, std::size_t offset);

    ExpatParser m_parser;
    std::string_view m_record;
    std::vector<RecordPart> m_parts;  // the first m_count are in use; the others keep their memory
    std::size_t m_count = 0;
    std::vector<std::size_t> m_open;  // the fields that are open, the innermost last
    bool m_inRecord = false;
    bool m_inHead = false;       // the importer stands after a field's start tag
    bool m_looseGoesOn = false;  // the text before this one, up to the latest tag, was loose
    StopCause m_stop = StopCause::None;
    std::size_t m_stopOffset = 0;
};

}  // namespace tool

#endif
