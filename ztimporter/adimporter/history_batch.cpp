#include <algorithm>
#include <cstddef>

#include "platform/core/addatetime.h"
#include "platform/core/adtext.h"
#include "platform/messages/message_ids.h"
#include "ztimporter/adimporter.h"
#include "ztimporter/adimporter/bad_value.h"
#include "ztimporter/adimporter/caught_exceptions.h"
#include "ztimporter/adimporter/importer_trace.h"
#include "ztimporter/adimporter/messages.h"

using adimporter::CaughtException;
using adimporter::CaughtKind;
using adimporter::EndWithError;
using adimporter::MessageText;
using adimporter::Require;
using adimporter::TraceImporter;

namespace {

// A batch takes no further entry once it holds more than this. The test comes after an entry was
// stored, so that there is one entry more than the limit, and room for it.
constexpr long kBatchLimit = 500;
constexpr std::size_t kBatchRoom = kBatchLimit + 1;

constexpr const char16_t* kAddError = u"AddHistory error: %s";
constexpr const char16_t* kFlushError = u"ReallyImportHistory error: %s";
constexpr const char16_t* kFlushEndsWithError = u"ReallyImportHistory ends with error: %s";

// The keys of an entry, made once: looking one up takes a string.
struct EntryKeys {
    Obx_String dbid = u"dbid";
    Obx_String actionTime = u"action_timestamp";
    Obx_String expiryTime = u"expired_timestamp";
    Obx_String userName = u"user_name";
    Obx_String actionName = u"action_name";
    Obx_String oldState = u"old_state";
    Obx_String newState = u"new_state";
    Obx_String comments = u"comments";
};
const EntryKeys kKeys;

Obx_String ValueOf(const CMapStringToString& entry, const Obx_String& key) {
    Obx_String value;
    entry.Lookup(key, value);
    return value;
}

// Rewrites the time in the form that history entries carry; false when it is not a time.
bool Reformat(Obx_String& time) {
    AdDateTime parsed;
    if (parsed.ParseDateTime(time, 0) == 0) {
        return false;
    }
    time = parsed.Format(u"%Y-%m-%d %H:%M:%S");
    return true;
}

// Copies into a zeroed field. A text that does not fit leaves no terminator, by which the core
// sees that it is too long; nothing is cut silently.
template <std::size_t room>
void CopyText(const Obx_String& text, char16_t (&field)[room]) {
    const std::u16string_view fitting = text.View().substr(0, room);
    std::copy(fitting.begin(), fitting.end(), field);
}

Obx_String EntryText(const Obx_String& historyId, const Obx_String& cause) {
    return MessageText(message_id::kHistoryEntryInvalid,
                       {{u"_historyid_", historyId}, {u"_coreinfo_", cause}});
}

Obx_String Digits(long number) {
    Obx_String text;
    text.Format(u"%d", number);
    return text;
}

}  // namespace

void AdImporter::AddHistory(long recordDbid, EntryList& entries, Obx_String& error) {
    try {
        TraceImporter(u"AddHistory begins");
        if (m_historyBuffer == nullptr) {
            // Left uninitialised: an entry is zeroed when it is claimed, and none beyond the count
            // is ever read. Zeroing all of them for a few lines of history would cost as much as
            // the rest of the record.
            m_historyBuffer = new AdHistory[kBatchRoom];
            m_historyCount = 0;
        }
        long lineNumber = 0;
        for (const CMapStringToString* entry : entries) {
            if (m_historyCount > kBatchLimit) {
                break;
            }
            ++lineNumber;
            BatchHistoryEntry(recordDbid, *entry, lineNumber, error);
        }
        TraceImporter(u"AddHistory ends");
    } catch (...) {
        adimporter::AppendCaughtException(error);
        EndWithError(u"AddHistory ends with error: %s", error);
    }
}

void AdImporter::BatchHistoryEntry(long recordDbid, const CMapStringToString& source,
                                   long lineNumber, Obx_String& error) {
    const Obx_String historyId = ValueOf(source, kKeys.dbid);
    const auto invalidTime = [&](int id, const Obx_String& time) {
        return EntryText(historyId, MessageText(id, {{u"_value_", time},
                                                     {u"_linenum_", Digits(lineNumber)},
                                                     {u"_id_", m_originalID},
                                                     {u"_idvalue_", m_originalID_value}}));
    };
    Obx_String actionTime = ValueOf(source, kKeys.actionTime);
    if (!Reformat(actionTime)) {
        error += invalidTime(message_id::kInvalidActionTimestamp, actionTime) + u"\n";
        TraceImporter(kAddError, error);
        return;
    }
    Obx_String expiryTime = ValueOf(source, kKeys.expiryTime);
    if (AdIsEmpty(expiryTime) == 0 && !Reformat(expiryTime)) {
        // Replaces what the lines before reported, where an invalid action time adds to it.
        error = invalidTime(message_id::kInvalidExpiredTimestamp, expiryTime);
        TraceImporter(kAddError, error);
        return;
    }
    AdHistory& entry = ClaimHistoryEntry(recordDbid);
    const Obx_String userName = ValueOf(source, kKeys.userName);
    const Obx_String actionName = ValueOf(source, kKeys.actionName);
    const Obx_String oldState = ValueOf(source, kKeys.oldState);
    const Obx_String newState = ValueOf(source, kKeys.newState);
    if (IsHistoryFieldEmpty(historyId, u"user_name", userName, lineNumber, error) != 0 ||
        IsHistoryFieldEmpty(historyId, u"action_name", actionName, lineNumber, error) != 0 ||
        IsHistoryFieldEmpty(historyId, u"old_state", oldState, lineNumber, error) != 0 ||
        IsHistoryFieldEmpty(historyId, u"new_state", newState, lineNumber, error) != 0) {
        TraceImporter(kAddError, error);
        return;
    }
    CopyText(actionTime, entry.actionTime);
    CopyText(expiryTime, entry.expiryTime);
    CopyText(userName, entry.userName);
    CopyText(actionName, entry.actionName);
    CopyText(oldState, entry.oldState);
    CopyText(newState, entry.newState);
    CopyText(ValueOf(source, kKeys.comments), entry.comments);
    ++m_historyCount;
}

// The next entry of the batch, holding only whose history it is. It counts once it is complete; one
// that never is gets claimed again by the next line.
AdHistory& AdImporter::ClaimHistoryEntry(long recordDbid) {
    const AdEntityDef& type = Require(m_entityDef, u"m_entityDef != __null", __LINE__);
    AdHistory& entry = m_historyBuffer[m_historyCount];
    entry = AdHistory{};
    entry.recordId = recordDbid;
    CopyText(m_originalID, entry.sourceIdField);
    entry.recordTypeId = type.GetDbId();
    CopyText(type.GetName(), entry.recordTypeName);
    return entry;
}

int AdImporter::IsHistoryFieldEmpty(Obx_String historyId, const char16_t* key, Obx_String value,
                                    long lineNumber, Obx_String& error) {
    if (!value.IsEmpty()) {
        return 0;
    }
    error += EntryText(historyId, MessageText(message_id::kHistoryFieldEmpty,
                                              {{u"_field_name_", key},
                                               {u"_linenum_", Digits(lineNumber)},
                                               {u"_id_", m_originalID},
                                               {u"_idvalue_", m_originalID_value}}));
    error += u"\n";
    return 1;
}

int AdImporter::ReallyImportHistory(Obx_String& error) {
    try {
        TraceImporter(u"ReallyImportHistory begins");
        if (m_historyBuffer == nullptr || m_historyCount < 1) {
            // A batch none of whose lines could be used ends with its record, too.
            DiscardHistory();
            TraceImporter(u"ReallyImportHistory ends with no history imported");
            return 1;
        }
        CEnumArray<int, int> problemEntries(50);
        Obx_String problems;
        ImportHistoryData(m_session, m_historyBuffer, m_historyCount, -1, problemEntries, problems,
                          nullptr, nullptr);
        // Whatever the problems: what the core could take is kept.
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
        // Messages undo the import and replace the error text; the other kinds do as in
        // GetResultSetWhere.
        if (caught.kind == CaughtKind::kMessages) {
            RevertImportHistory(m_session);
            error = caught.text;
            return EndWithError(kFlushError, error);
        }
        adimporter::ReplaceByCaughtException(caught, error);
    }
    return EndWithError(kFlushEndsWithError, error);
}

void AdImporter::DiscardHistory() {
    m_historyCount = 0;
    delete[] m_historyBuffer;
    m_historyBuffer = nullptr;
}
