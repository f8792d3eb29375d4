#include "ztimporter/adimporter/history_line.h"

#include <algorithm>
#include <cstddef>

#include "platform/core/addatetime.h"
#include "platform/messages/message_ids.h"
#include "ztimporter/adimporter/bad_value.h"
#include "ztimporter/adimporter/importer_trace.h"
#include "ztimporter/adimporter/message_text.h"

using adimporter::MessageText;
using adimporter::TraceImporter;

namespace {

constexpr const char16_t* kAddError = u"AddHistory error: %s";

const Obx_String kExpiredTimestampLabel = u"expired_timestamp";

// A time in the form that history entries carry.
class EntryTime {
  public:
    // False when the text is not a time. It must outlive the object.
    bool Take(std::u16string_view text) {
        AdDateTime parsed;
        if (!parsed.Parse(text)) {
            return false;
        }
        m_text = text;
        if (!HasTheForm(text)) {
            m_rewritten = parsed.Format(u"%Y-%m-%d %H:%M:%S");
            m_text = m_rewritten.View();
        }
        return true;
    }

    std::u16string_view Text() const { return m_text; }

  private:
    // Of what is a time: whether it has the form already.
    static bool HasTheForm(std::u16string_view time) {
        return time.size() == 19 && time[4] == u'-' && time[10] == u' ' && time[16] == u':';
    }

    std::u16string_view m_text;
    Obx_String m_rewritten;
};

// Copies into a zeroed field. A text that does not fit leaves no terminator, by which the core
// sees that it is too long; nothing is cut silently.
template <std::size_t room>
void CopyText(std::u16string_view text, char16_t (&field)[room]) {
    const std::u16string_view fitting = text.substr(0, room);
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

AdImporter::Steps::HistoryLine::HistoryLine(AdImporter& importer, const CMapStringToString& entry,
                                            long number)
    : m_importer(importer), m_number(number) {
    const auto valueOf = [&entry](const Obx_String& label) {
        const Obx_String* const value = entry.Find(label);
        return value != nullptr ? value->View() : std::u16string_view();
    };
    std::transform(history_label.begin(), history_label.end(), m_columns.begin(), valueOf);
    m_expiryTime = valueOf(kExpiredTimestampLabel);
}

AdImporter::Steps::HistoryLine::HistoryLine(AdImporter& importer, const HistoryColumns& columns,
                                            long number)
    : m_importer(importer), m_number(number), m_columns{} {
    std::copy_n(columns.texts.begin(), columns.count, m_columns.begin());
}

void AdImporter::Steps::HistoryLine::AddToBatch(long recordDbid, Obx_String& error) {
    EntryTime actionTime;
    if (!actionTime.Take(Column(kActionTimestamp))) {
        error +=
            InvalidTimeText(message_id::kInvalidActionTimestamp, Column(kActionTimestamp)) + u"\n";
        TraceImporter(kAddError, error);
        return;
    }
    EntryTime expiryTime;
    if (!m_expiryTime.empty() && !expiryTime.Take(m_expiryTime)) {
        // Replaces what earlier lines reported, while an invalid action time adds to it.
        error = InvalidTimeText(message_id::kInvalidExpiredTimestamp, m_expiryTime);
        TraceImporter(kAddError, error);
        return;
    }
    AdHistory& entry = ClaimEntry(recordDbid);
    if (LacksColumn(error)) {
        TraceImporter(kAddError, error);
        return;
    }
    CopyText(actionTime.Text(), entry.actionTime);
    CopyText(expiryTime.Text(), entry.expiryTime);
    CopyText(Column(kUserName), entry.userName);
    CopyText(Column(kActionName), entry.actionName);
    CopyText(Column(kOldState), entry.oldState);
    CopyText(Column(kNewState), entry.newState);
    CopyText(Column(kComments), entry.comments);
    ++m_importer.m_historyCount;
}

bool AdImporter::Steps::HistoryLine::LacksColumn(Obx_String& error) const {
    constexpr std::array kNeeded = {kUserName, kActionName, kOldState, kNewState};
    return std::any_of(kNeeded.begin(), kNeeded.end(), [&](HistoryColumn column) {
        return Column(column).empty() &&
               m_importer.IsHistoryFieldEmpty(Obx_String(Column(kHistoryDbId)),
                                              history_label[column].View().data(), {}, m_number,
                                              error) != 0;
    });
}

Obx_String AdImporter::Steps::HistoryLine::InvalidTimeText(int messageId,
                                                           std::u16string_view time) const {
    return EntryText(Obx_String(Column(kHistoryDbId)),
                     MessageText(messageId, {{u"_value_", Obx_String(time)},
                                             {u"_linenum_", Digits(m_number)},
                                             {u"_id_", m_importer.m_originalID},
                                             {u"_idvalue_", m_importer.m_originalID_value}}));
}

// The next entry of the batch, which names the record that it belongs to and holds nothing else
// yet. It counts once it is complete; the next line claims an entry again that was not completed.
AdHistory& AdImporter::Steps::HistoryLine::ClaimEntry(long recordDbid) const {
    const AdEntityDef& type = adimporter::Require(m_importer.m_entityDef, u"m_entityDef != __null");
    AdHistory& entry = m_importer.m_historyBuffer[m_importer.m_historyCount];
    entry = AdHistory{};
    entry.recordId = recordDbid;
    CopyText(m_importer.m_originalID.View(), entry.sourceIdField);
    entry.recordTypeId = type.GetDbId();
    CopyText(type.GetName().View(), entry.recordTypeName);
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
