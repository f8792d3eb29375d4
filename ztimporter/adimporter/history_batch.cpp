#include <cstddef>

#include "ztimporter/adimporter/caught_exceptions.h"
#include "ztimporter/adimporter/history_line.h"
#include "ztimporter/adimporter/importer_trace.h"

using adimporter::CaughtException;
using adimporter::CaughtKind;
using adimporter::EndWithError;
using adimporter::TraceImporter;

namespace {

// A batch takes no further entry once it holds more than this. The test comes after an entry was
// stored, so that there is one entry more than the limit, and room for it.
constexpr long kBatchLimit = 500;
constexpr std::size_t kBatchRoom = kBatchLimit + 1;

constexpr const char16_t* kFlushError = u"ReallyImportHistory error: %s";
constexpr const char16_t* kFlushEndsWithError = u"ReallyImportHistory ends with error: %s";

}  // namespace

// Adds so many lines; `next` gives them, in their order, by their number.
template <typename Next>
void AdImporter::Steps::FillBatch(AdImporter& importer, long recordDbid, std::size_t lines,
                                  Next next, Obx_String& error) {
    try {
        TraceImporter(u"AddHistory begins");
        if (importer.m_historyBuffer == nullptr) {
            // Left uninitialised: an entry is zeroed when it is claimed, and none beyond the count
            // is ever read. Zeroing all of them for a few lines of history would cost as much as
            // the rest of the record.
            importer.m_historyBuffer = new AdHistory[kBatchRoom];
            importer.m_historyCount = 0;
        }
        for (std::size_t i = 0; i < lines && importer.m_historyCount <= kBatchLimit; ++i) {
            next(static_cast<long>(i) + 1).AddToBatch(recordDbid, error);
        }
        TraceImporter(u"AddHistory ends");
    } catch (...) {
        adimporter::AppendCaughtException(error);
        EndWithError(u"AddHistory ends with error: %s", error);
    }
}

void AdImporter::AddHistory(long recordDbid, EntryList& entries, Obx_String& error) {
    auto entry = entries.begin();
    const auto next = [&](long number) { return Steps::HistoryLine(*this, **entry++, number); };
    Steps::FillBatch(*this, recordDbid, entries.size(), next, error);
}

void AdImporter::Steps::AddHistory(AdImporter& importer, long recordDbid,
                                   const std::vector<HistoryColumns>& lines, Obx_String& error) {
    auto line = lines.begin();
    const auto next = [&](long number) { return HistoryLine(importer, *line++, number); };
    FillBatch(importer, recordDbid, lines.size(), next, error);
}

int AdImporter::ReallyImportHistory(Obx_String& error) {
    try {
        TraceImporter(u"ReallyImportHistory begins");
        if (m_historyBuffer == nullptr || m_historyCount < 1) {
            // A batch without any usable line ends with its record, too.
            DiscardHistory();
            TraceImporter(u"ReallyImportHistory ends with no history imported");
            return 1;
        }
        CEnumArray<int, int> problemEntries(50);
        Obx_String problems;
        ImportHistoryData(m_session, m_historyBuffer, m_historyCount, -1, problemEntries, problems,
                          nullptr, nullptr);
        // What the core could take is kept, whatever the problems with the rest.
        CommitImportHistory(m_session);
        DiscardHistory();
        if (!problems.IsEmpty()) {
            error = problems;
            // What this trace throws is reported by the handlers below, in their own way.
            TraceImporter(kFlushError, error);
            return 0;
        }
        TraceImporter(u"ReallyImportHistory ends");
        return 1;
    } catch (...) {
        const CaughtException caught = adimporter::TakeCaughtException();
        DiscardHistory();
        // Messages undo the import and replace the error text; the other kinds are reported as by
        // GetResultSetWhere.
        if (caught.kind == CaughtKind::kMessages) {
            RevertImportHistory(m_session);
            error = caught.text;
            return EndWithError(kFlushError, error);
        }
        adimporter::ReplaceOrAppendCaughtException(caught, error);
    }
    return EndWithError(kFlushEndsWithError, error);
}

void AdImporter::DiscardHistory() {
    m_historyCount = 0;
    delete[] m_historyBuffer;
    m_historyBuffer = nullptr;
}
