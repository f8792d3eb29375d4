#ifndef TESTS_ZTIMPORTER_HISTORY_FIXTURE_H
#define TESTS_ZTIMPORTER_HISTORY_FIXTURE_H

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "tests/ztimporter/importer_fixture.h"
#include "tests/ztimporter/thrown_cases.h"

// Tests of the history batch. The current record has the source id core-1, in the field source_id.
class HistoryTest : public ImporterTest {
  protected:
    // A history entry as the packet's parser delivers it: columns by their keys.
    using Entry = std::map<std::string, std::string>;

    HistoryTest() {
        m_importer->m_originalID = u"source_id";
        m_importer->m_originalID_value = u"core-1";
    }

    // Releases a batch that the test itself has filled, since nobody else does.
    void TearDown() override {
        if (m_filledByTest && m_importer) {
            m_importer->DiscardHistory();
        }
        ImporterTest::TearDown();
    }

    // An entry that lacks nothing, by the user "ann <dbid>".
    static Entry ValidEntry(const std::string& dbid);
    static Entry With(Entry entry, const std::string& key, const std::string& value);

    void Add(const std::vector<Entry>& entries, long recordDbid = 101);

    // What a text field of an entry holds.
    template <std::size_t Room>
    static std::string Text(const char16_t (&field)[Room]) {
        std::size_t length = 0;
        while (length < Room && field[length] != 0) {
            ++length;
        }
        return Obx_String(std::u16string_view(field, length)).ToUtf8();
    }

    // The messages about an entry, each wrapped in the one that names the entry.
    static Obx_String ActionTimeText(const std::string& value, int line, const std::string& dbid);
    static Obx_String ExpiryText(const std::string& value, int line, const std::string& dbid);
    static Obx_String EmptyColumnText(const std::string& key, int line, const std::string& dbid);

    // Whether the test drives the operations on the batch by themselves.
    bool m_filledByTest = false;
};

#endif
