#include "tool/packet/importer_fields.h"

#include "platform/foundation/cexception.h"
#include "platform/foundation/utf.h"
#include "platform/messages/addiagnostic.h"
#include "ztimporter/importrecordparser.h"

namespace tool {

namespace {

// Keeps a trace of the import to what the importer does: the parser is asked besides.
class TraceOff {
  public:
    TraceOff() : m_wasOn(AdDiagnostic::FlagSet(AdDiagnostic::kImportFlag)) { Set(false); }
    ~TraceOff() { Set(true); }
    TraceOff(const TraceOff&) = delete;
    TraceOff& operator=(const TraceOff&) = delete;

  private:
    void Set(bool on) const {
        if (m_wasOn) {
            AdDiagnostic::SetFlag(AdDiagnostic::kImportFlag, on);
        }
    }

    bool m_wasOn;
};

}  // namespace

bool ImporterFields::ReadMap(const std::string& packet) {
    const TraceOff traceOff;
    AdImportRecordParser parser;
    parser.SetInputData(packet.c_str());
    m_map.RemoveAll();
    try {
        if (parser.NextRecord() != 0) {
            parser.GetRecordMap(m_map);
        }
    } catch (CException* exception) {
        exception->Delete();
        return false;
    }
    return true;
}

bool ImporterFields::Read(const std::string& packet) {
    m_count = 0;
    if (!ReadMap(packet)) {
        return false;
    }
    for (auto position = m_map.GetStartPosition(); position != nullptr;) {
        m_map.GetNextAssoc(position, m_name, m_value);
        Field& field = NewField();
        Utf16ToUtf8(m_name.View(), field.name);
        Utf16ToUtf8(m_value.View(), field.value);
    }
    return true;
}

void ImporterFields::Add(const std::string& name, const std::string& value) {
    Field& field = NewField();
    field.name = name;
    field.value = value;
}

ImporterFields::Field& ImporterFields::NewField() {
    if (m_count == m_fields.size()) {
        m_fields.emplace_back();
    }
    return m_fields[m_count++];
}

}  // namespace tool
