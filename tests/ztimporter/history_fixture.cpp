#include "tests/ztimporter/history_fixture.h"

#include "platform/messages/message_ids.h"

namespace {

Obx_String Wide(const std::string& text) {
    return Obx_String::FromUtf8(text);
}

Obx_String Wrapped(const Obx_String& text, const std::string& dbid) {
    return Message(message_id::kHistoryEntryInvalid,
                   {{u"_historyid_", Wide(dbid)}, {u"_coreinfo_", text}});
}

Obx_String TimeText(int id, const std::string& value, int line) {
    return Message(id, {{u"_value_", Wide(value)},
                        {u"_linenum_", Wide(std::to_string(line))},
                        {u"_id_", u"source_id"},
                        {u"_idvalue_", u"core-1"}});
}

}  // namespace

HistoryTest::Entry HistoryTest::ValidEntry(const std::string& dbid) {
    return {{"dbid", dbid},
            {"action_timestamp", "2024-01-01 10:00:00"},
            {"user_name", "ann " + dbid},
            {"action_name", "modify"},
            {"old_state", "NEW"},
            {"new_state", "OPEN"}};
}

HistoryTest::Entry HistoryTest::With(Entry entry, const std::string& key,
                                     const std::string& value) {
    entry[key] = value;
    return entry;
}

void HistoryTest::Add(const std::vector<Entry>& entries, long recordDbid) {
    std::vector<std::unique_ptr<CMapStringToString>> maps;
    OpenImporter::EntryList list;
    for (const Entry& entry : entries) {
        maps.push_back(std::make_unique<CMapStringToString>());
        for (const auto& [key, value] : entry) {
            maps.back()->SetAt(Wide(key), Wide(value));
        }
        list.push_back(maps.back().get());
    }
    m_filledByTest = true;
    m_importer->AddHistory(recordDbid, list, m_error);
}

Obx_String HistoryTest::ActionTimeText(const std::string& value, int line,
                                       const std::string& dbid) {
    return Wrapped(TimeText(message_id::kInvalidActionTimestamp, value, line), dbid);
}

Obx_String HistoryTest::ExpiryText(const std::string& value, int line, const std::string& dbid) {
    return Wrapped(TimeText(message_id::kInvalidExpiredTimestamp, value, line), dbid);
}

Obx_String HistoryTest::EmptyColumnText(const std::string& key, int line, const std::string& dbid) {
    return Wrapped(
        Message(message_id::kHistoryFieldEmpty, {{u"_field_name_", Wide(key)},
                                                 {u"_linenum_", Wide(std::to_string(line))},
                                                 {u"_id_", u"source_id"},
                                                 {u"_idvalue_", u"core-1"}}),
        dbid);
}
