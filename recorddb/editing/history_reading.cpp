#include "recorddb/editing/history_reading.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "platform/foundation/utf.h"
#include "platform/messages/message_ids.h"
#include "recorddb/messages/error_message.h"
#include "recorddb/model/stored_values.h"

namespace recorddb {

namespace {

// Reads the texts of one entry, up to the first that is wrong.
class TextReader {
  public:
    explicit TextReader(long number) : m_number(std::to_string(number)) {}

    // The text up to its terminator; without one it was too long.
    template <std::size_t room>
    std::u16string_view TextIn(const char16_t (&text)[room], std::string_view name) {
        const auto* const end = std::find(text, text + room, u'\0');
        if (end == text + room && m_problem.ID() == 0) {
            Refuse(message_id::kHistoryTextTooLong, name, u"_limit_", std::to_string(room - 1));
        }
        return {text, static_cast<std::size_t>(end - text)};
    }

    template <std::size_t room>
    void Read(const char16_t (&text)[room], std::string_view name, std::string& utf8) {
        if (m_problem.ID() != 0) {
            return;
        }
        const std::u16string_view given = TextIn(text, name);
        const auto position = Utf16ToUtf8(given, utf8);
        if (position && m_problem.ID() == 0) {
            Refuse(message_id::kHistoryNotText, name, u"_position_", std::to_string(*position));
        }
    }

    void CheckTime(std::string_view name, const std::string& time) {
        if (m_problem.ID() == 0 && !IsStoredDateTime(time)) {
            Refuse(message_id::kHistoryNotTime, name, u"_value_", time);
        }
    }

    PaMessage Problem() const { return m_problem; }

  private:
    void Refuse(int id, std::string_view name, const char16_t* parameter, std::string_view value) {
        m_problem =
            ErrorMessage(id, {{u"_field_", name}, {u"_linenum_", m_number}, {parameter, value}});
    }

    std::string m_number;
    PaMessage m_problem;
};

}  // namespace

PaMessage ReadHistoryEntry(const AdHistory& given, long number, HistoryEntry& entry) {
    entry.recordType = given.recordTypeId;
    entry.record = given.recordId;
    TextReader reader(number);
    reader.TextIn(given.sourceIdField, "source_id_field");
    reader.TextIn(given.recordTypeName, "record_type");
    reader.Read(given.actionTime, "action_time", entry.actionTime);
    reader.Read(given.expiryTime, "expiry_time", entry.expiryTime);
    reader.Read(given.userName, "user_name", entry.userName);
    reader.Read(given.actionName, "action_name", entry.actionName);
    reader.Read(given.oldState, "old_state", entry.oldState);
    reader.Read(given.newState, "new_state", entry.newState);
    reader.Read(given.comments, "comments", entry.comments);
    reader.CheckTime("action_time", entry.actionTime);
    if (!entry.expiryTime.empty()) {
        reader.CheckTime("expiry_time", entry.expiryTime);
    }
    return reader.Problem();
}

}  // namespace recorddb
