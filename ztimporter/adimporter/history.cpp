#include "ztimporter/adimporter/caught_exceptions.h"
#include "ztimporter/adimporter/importer_trace.h"
#include "ztimporter/adimporter/open_record.h"
#include "ztimporter/adimporter/record_addition.h"
#include "ztimporter/importrecordparser.h"

using adimporter::EndWithError;
using adimporter::TraceImporter;

namespace {

constexpr const char16_t* kImportHistoryEndsWithError = u"ImportHistory ends with error: %s";

}  // namespace

// One record of a history packet.
class AdImporter::Steps::HistoryAddition : public RecordAddition {
  public:
    HistoryAddition(AdImporter& importer, Obx_String& error)
        : RecordAddition(importer, error, kImportHistoryEndsWithError) {}

  protected:
    bool Collect() override {
        const CMapStringToString& map = m_importer.m_recordMap;
        CMapStringToString::Position position = map.GetStartPosition();
        Obx_String name;
        while (position != nullptr) {
            map.GetNextAssoc(position, name, m_value);
            if (name.CompareNoCase(u"history") == 0) {
                m_lines = m_importer.m_recordParser->SplitHistoryData(m_value);
                break;
            }
        }
        return !m_lines.empty();
    }

    // The valid entries are imported and stay, even when others were refused and the record is
    // reverted because of these.
    void AddTo(const AdEntityPtr& entity) override {
        m_recordDbid = adimporter::DbIdOf(*entity);
        AddHistory(m_importer, m_recordDbid, m_lines, m_error);
        m_importer.ReallyImportHistory(m_error);
    }

    void BeforeValidation() override {
        UpdateImportHistoryExpiredTimestamp(m_importer.m_session, m_importer.m_entityDef,
                                            m_recordDbid);
    }

  private:
    Obx_String m_value;
    std::vector<HistoryColumns> m_lines;  // parts of the value
    long m_recordDbid = 0;
};

int AdImporter::ImportHistory(Obx_String& error) {
    try {
        TraceImporter(u"ImportHistory begins: m_originalID=%s", m_originalID);
        while (m_recordParser->NextRecord() != 0) {
            if (!Steps::HistoryAddition(*this, error).Import()) {
                return 0;
            }
        }
        TraceImporter(u"ImportHistory ends successfully");
        return 1;
    } catch (...) {
        adimporter::AppendCaughtException(error);
    }
    return EndWithError(kImportHistoryEndsWithError, error);
}
