#include "ztimporter/adimporter/caught_exceptions.h"
#include "ztimporter/adimporter/field_writer.h"
#include "ztimporter/adimporter/importer_trace.h"

using adimporter::EndWithError;
using adimporter::TraceImporter;

namespace {

constexpr const char16_t* kSetupFieldValuesEndsWithError = u"SetupFieldValues ends with error: %s";

}  // namespace

int AdImporter::SetupFieldValues(AdEntityPtr entity, Obx_String& error) {
    try {
        TraceImporter(u"SetupFieldValues begins");
        Steps::FieldWriter writer(*this, entity, error);
        CMapStringToString::Position position = m_recordMap.GetStartPosition();
        Obx_String value;
        while (position != nullptr) {
            const auto entry = m_recordMap.Next(position);
            value = entry.value;
            if (!writer.Write(entry.key, value)) {
                return EndWithError(kSetupFieldValuesEndsWithError, error);
            }
        }
        TraceImporter(u"SetupFieldValues ends");
        return 1;
    } catch (...) {
        adimporter::AppendCaughtException(error);
    }
    return EndWithError(kSetupFieldValuesEndsWithError, error);
}
