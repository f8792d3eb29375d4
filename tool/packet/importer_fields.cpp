#include "tool/packet/importer_fields.h"

#include "platform/foundation/cexception.h"
#include "platform/foundation/utf.h"
#include "tool/packet/exception_text.h"
#include "tool/packet/quiet_parser.h"

namespace tool {

std::string ImporterFieldReader::ReadMap(const std::string& packet) {
    QuietParser parser;
    parser->SetInputData(packet.c_str());
    m_map.RemoveAll();
    try {
        if (parser->NextRecord() == 0) {
            return "no record is found in it";
        }
        parser->GetRecordMap(m_map);
    } catch (CException* exception) {
        return TakeText(exception);
    }
    return {};
}

std::string ImporterFieldReader::Read(const std::string& packet, ImporterFields& fields) {
    if (std::string problem = ReadMap(packet); !problem.empty()) {
        return problem;
    }
    // The texts of the last record keep their memory.
    fields.resize(static_cast<std::size_t>(m_map.GetCount()));
    auto position = m_map.GetStartPosition();
    for (ImporterField& field : fields) {
        m_map.GetNextAssoc(position, m_name, m_value);
        Utf16ToUtf8(m_name.View(), field.name);
        Utf16ToUtf8(m_value.View(), field.value);
    }
    return {};
}

}  // namespace tool
